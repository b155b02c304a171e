#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <fstream>
#include <future>
#include <gtest/gtest.h>
#include <memory>
#include <regex>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "converter/Messages.h"
#include "converter/Output.h"
#include "tests/Interruptions.h"

namespace {

/// A pipe that holds little, read slowly to its end by a thread that takes no signals.
class SlowPipe {
  public:
    explicit SlowPipe(int flags) {
        sigset_t all, before;
        sigfillset(&all);
        EXPECT_TRUE(pipe2(ends_.data(), 0) == 0 && fcntl(ends_[1], F_SETFL, flags) == 0 &&
                    fcntl(ends_[1], F_SETPIPE_SZ, 4096) == 4096);
        pthread_sigmask(SIG_BLOCK, &all, &before);
        text_ = std::async(std::launch::async, readAll, ends_[0]);
        pthread_sigmask(SIG_SETMASK, &before, nullptr);
    }
    SlowPipe(const SlowPipe&) = delete;
    SlowPipe& operator=(const SlowPipe&) = delete;
    ~SlowPipe() { close(ends_[1]); }  // ends the reader, whatever befell the test
    int end() const { return ends_[1]; }
    /// All that came, once the pipe is closed.
    std::string text() {
        close(std::exchange(ends_[1], -1));
        return text_.get();
    }

  private:
    static std::string readAll(int end) {
        std::string text;
        std::array<char, 1000> piece;
        for (ssize_t got; (got = read(end, piece.data(), piece.size())) > 0;) {
            text.append(piece.data(), static_cast<std::size_t>(got));
            std::this_thread::yield();
        }
        close(end);
        return text;
    }

    std::array<int, 2> ends_{};
    std::future<std::string> text_;
};

// Record and messages in one pipe: what comes behind a message in the record also comes behind it
// there. A signal ends a write to a full pipe, with what had room before or with nothing; one that
// doesn't block is full again and again.
TEST(Output, GivesMessagesAndRecordWholeAndInOrder) {
    for (const int flags : {0, O_NONBLOCK}) {
        SlowPipe pipe(flags);
        const auto output = std::make_unique<Output>(pipe.end(), pipe.end());
        std::string record, messages, gotRecord, gotMessages;
        std::vector<std::size_t> before;  // how much of the record is, of each message
        interruptEvery(50);
        interruptions = 0;
        for (std::size_t i = 0; interruptions < 200 || messages.size() < 500'000; ++i) {
            const std::string piece(i * 7919 % 70'001, static_cast<char>('a' + i % 26));
            const std::string message(i * 997 % 20'000, static_cast<char>('A' + i % 26));
            output->write(piece);
            output->say(message + "\n");
            before.push_back((record += piece).size());
            messages += message + "\n";
        }
        output->flush();
        interruptEvery(0);
        std::size_t line = 0;
        for (const char c : pipe.text()) {
            (std::islower(c) != 0 ? gotRecord : gotMessages) += c;
            EXPECT_TRUE(c != '\n' || gotRecord.size() <= before[line++]) << line;
        }
        EXPECT_TRUE(gotRecord == record && gotMessages == messages) << flags;
    }
}

/// The messages of the README's table, as one expression: a code span is the message's own text,
/// what stands between stars is put in.
std::regex documentedMessages() {
    std::ifstream readme(README);
    std::string line, all;
    while (line != "### Messages" && std::getline(readme, line)) {
    }
    while (std::getline(readme, line) && !line.starts_with("| `terminate")) {
        if (line.starts_with("| `") || line.starts_with("| *")) {
            line = line.substr(2, line.find(" | ") - 2);
            line = std::regex_replace(line, std::regex(R"([()])"), "\\$&");
            line = std::regex_replace(line, std::regex(R"(\*\w+\*)"), "-?\\w+");
            all += std::regex_replace(line, std::regex("`"), "") + "\n?";
        }
    }
    return std::regex(all);
}

TEST(Messages, AreThoseOfTheReadmeInItsOrder) {
    SlowPipe pipe(0);
    const auto output = std::make_unique<Output>(-1, pipe.end());
    Messages messages(*output, 0);
    messages.setFile("PATH");
    messages.configurations(200);
    messages.vector(255, 12, -7, "COEFF_A1");
    messages.fileTypeMismatch("NAME");
    messages.creationTimeInvalid("TEXT");
    messages.startTimeInvalid("TEXT");
    messages.stopTimeInvalid("TEXT");
    messages.nucTableMismatch(-32768);
    messages.vectorLength(9'000'000'000, "COEFF_D", 3, 1);
    messages.detectorOutside(13);
    messages.pixelsOutside(40'000, -2147483647 - 1);
    messages.cannotWrite("REASON");
    messages.outOfMemory();
    const std::string said = pipe.text();
    EXPECT_TRUE(std::regex_match(said, documentedMessages())) << said;
}

}  // namespace
