#include <fcntl.h>
#include <sys/time.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <fstream>
#include <gtest/gtest.h>
#include <memory>
#include <regex>
#include <string>
#include <thread>
#include <vector>

#include "converter/Messages.h"
#include "converter/Output.h"

namespace {

/// A pipe that holds little, with a thread that reads it slowly to its end, without signals.
class SlowPipe {
  public:
    explicit SlowPipe(int flags) {
        EXPECT_EQ(pipe2(ends_.data(), 0), 0);
        EXPECT_EQ(fcntl(ends_[1], F_SETFL, flags), 0);
        EXPECT_EQ(fcntl(ends_[1], F_SETPIPE_SZ, 4096), 4096);
        sigset_t all;
        sigset_t before;
        sigfillset(&all);
        pthread_sigmask(SIG_BLOCK, &all, &before);
        reader_ = std::thread([this] { read(); });
        pthread_sigmask(SIG_SETMASK, &before, nullptr);
    }
    int end() const { return ends_[1]; }
    /// All that came, once the pipe is closed.
    std::string text() {
        close(ends_[1]);
        reader_.join();
        close(ends_[0]);
        return text_;
    }

  private:
    void read() {
        std::array<char, 1000> buffer;
        for (ssize_t got = 1; got > 0;) {
            got = ::read(ends_[0], buffer.data(), buffer.size());
            text_.append(buffer.data(), static_cast<std::size_t>(got));
            std::this_thread::yield();
        }
    }

    std::array<int, 2> ends_{};
    std::string text_;
    std::thread reader_;
};

// A signal ends a write to a full pipe, with what had room before or with nothing; one that doesn't
// block is full again and again.
TEST(Output, WritesMessagesWholeHoweverTheyAreTaken) {
    static volatile std::sig_atomic_t signals;
    struct sigaction action {};
    action.sa_handler = [](int) { signals = signals + 1; };
    sigaction(SIGALRM, &action, nullptr);
    for (const int flags : {0, O_NONBLOCK}) {
        SlowPipe pipe(flags);
        const auto output = std::make_unique<Output>(-1, pipe.end());
        const itimerval often{{0, 50}, {0, 50}};
        setitimer(ITIMER_REAL, &often, nullptr);
        signals = 0;
        std::string wanted;
        for (std::size_t size = 0; signals < 100 || wanted.size() < 500'000;
             size = (size + 997) % 20'000) {
            const std::string message(size, static_cast<char>('a' + size % 26));
            output->say(message);
            wanted += message;
        }
        const itimerval never{};
        setitimer(ITIMER_REAL, &never, nullptr);
        EXPECT_TRUE(pipe.text() == wanted) << flags;
    }
}

// Both in one pipe: what comes behind a message in the record also comes behind it there.
TEST(Output, WritesAMessageBeforeTheRecordGoesOn) {
    SlowPipe pipe(O_NONBLOCK);
    const auto output = std::make_unique<Output>(pipe.end(), pipe.end());
    std::vector<std::size_t> sizes{0, 1, 65'535, 65'536, 65'537, 200'000, 3};
    for (std::size_t i = 0; i < sizes.size(); ++i) {
        output->write(std::string(sizes[i], static_cast<char>('a' + i)));
        output->say(std::to_string(i));
    }
    output->flush();
    const std::string all = pipe.text();
    std::string record;
    for (std::size_t i = 0; i < sizes.size(); ++i) {
        const std::size_t message = all.find(std::to_string(i));
        EXPECT_LT(message, all.find_first_of("abcdefg"[i + 1], 0)) << i;
        record += std::string(sizes[i], static_cast<char>('a' + i));
    }
    EXPECT_TRUE(std::regex_replace(all, std::regex("[0-9]"), "") == record);
}

TEST(Messages, AreThoseOfTheReadmeInItsOrder) {
    std::FILE* const file = std::tmpfile();
    const auto output = std::make_unique<Output>(-1, fileno(file));
    Messages messages(*output, 0);
    std::vector<std::string> said;
    const auto tell = [&] {
        std::string text(1000, '\0');
        text.resize(static_cast<std::size_t>(
            std::max<ssize_t>(pread(fileno(file), text.data(), text.size(), 0), 0)));
        said.push_back(text.ends_with('\n') ? text.substr(0, text.size() - 1) : text);
        EXPECT_EQ(ftruncate(fileno(file), 0), 0);
        std::rewind(file);
    };
    messages.setFile("PATH");
    messages.configurations(200), tell();
    messages.vector(255, 12, -7, "COEFF_A1"), tell();
    messages.fileTypeMismatch("NAME"), tell();
    messages.creationTimeInvalid("TEXT"), tell();
    messages.startTimeInvalid("TEXT"), tell();
    messages.stopTimeInvalid("TEXT"), tell();
    messages.nucTableMismatch(-32768), tell();
    messages.vectorLength(9'000'000'000, "COEFF_D", 3, 1), tell();
    messages.detectorOutside(13), tell();
    messages.pixelsOutside(40'000, -2147483647 - 1), tell();
    messages.cannotWrite("REASON"), tell();
    messages.outOfMemory(), tell();
    std::fclose(file);

    std::ifstream readme(README);
    std::string line;
    while (std::getline(readme, line) && line != "### Messages") {
    }
    std::vector<std::string> rows;
    while (std::getline(readme, line) && !line.starts_with("| `terminate")) {
        if (line.starts_with("| `") || line.starts_with("| *")) {
            // A code span is the message's own text, what stands between stars is put in.
            std::string row = line.substr(2, line.find(" | ") - 2);
            row = std::regex_replace(row, std::regex(R"([()])"), "\\$&");
            row = std::regex_replace(row, std::regex(R"(\*\w+\*)"), "-?\\w+");
            rows.push_back(std::regex_replace(row, std::regex("`"), ""));
        }
    }
    ASSERT_EQ(rows.size(), said.size());
    for (std::size_t i = 0; i < rows.size(); ++i) {
        EXPECT_TRUE(std::regex_match(said[i], std::regex(rows[i]))) << said[i] << ": " << rows[i];
    }
}

}  // namespace
