// The streams: scripts of single calls, and every driver against a plain model of its kind, on
// files, chains and pipes.

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <gtest/gtest.h>
#include <map>
#include <memory>
#include <optional>
#include <random>
#include <sstream>

#include "base/Exception.h"
#include "base/InputBStream.h"
#include "base/InputBasicFile.h"
#include "base/InputServer.h"
#include "base/InputStreamStl.h"
#include "tests/Script.h"
#include "tests/base/EmptyFolder.h"
#include "tests/base/StreamComparison.h"

namespace {

using vek::InputServer, vek::InputStream;
using A = script::Arguments;
constexpr auto native = InputStream::BYTE_ORDER_NATIVE;

// Arguments: a missing one, or "(null)", is a null text or 0.
const char* text(const A& a, std::size_t i) {
    return i >= a.size() || a[i] == "(null)" ? nullptr : a[i].c_str();
}
template <class T = long>
T number(const A& a, std::size_t i) {
    return static_cast<T>(text(a, i) == nullptr ? 0 : std::stol(a[i]));
}
std::string repeated(const A& a) {
    std::string all = a[1];
    for (long i = number(a, 2); i > 1; --i, all += a[1]) {
    }
    return all;
}

/// A driver that tells its mark and options, and refuses "no".
template <char mark>
InputStream* tell(const char* name, InputStream::ByteOrder order, const char* options) {
    const std::string all = mark + std::string(options == nullptr ? "(null)" : options);
    return all == "1no" ? nullptr : new vek::InputSStream(name, order, all);
}

/// An empty folder as the current one, pipes that other processes feed, and a stream.
class World {
  public:
    ~World() {
        stream.reset();
        InputServer::getInstance()->setDriverDefault("buffer");
        dup2(stdin_, 0);
        close(stdin_);
        for (const pid_t feeder : feeders_) {
            kill(feeder, SIGKILL);
            waitpid(feeder, nullptr, 0);
        }
    }
    static bool put(const std::string& name, const std::string& data) {
        std::filesystem::create_directories(std::filesystem::absolute(name).parent_path());
        return bool(std::ofstream(name, std::ios::binary) << data);
    }
    /// A pipe, "-" as standard input, filled slowly and in odd pieces.
    bool pipe(const std::string& name, const std::string& data) {
        const bool isMade = mkfifo(name.c_str(), 0600) == 0;
        feeders_.push_back(fork());
        if (feeders_.back() == 0) {
            const int out = open(name.c_str(), O_WRONLY);
            for (std::size_t at = 0, size = 1; at < data.size(); size = (size * 7 + 3) % 997) {
                usleep(500);
                const std::string piece = data.substr(at, size);
                at += write(out, piece.data(), piece.size()) < 0 ? data.size() : piece.size();
            }
            _exit(0);
        }
        if (name == "-") {
            close(0);
            EXPECT_EQ(open(name.c_str(), O_RDONLY), 0);
        }
        return isMade;
    }
    std::string run(const std::string& operation, const A& arguments);

    std::unique_ptr<InputStream> stream;

  private:
    /// A result with the state of the stream.
    std::string show(const std::string& result) const {
        return result + " @" + std::to_string(stream->offset()) + (stream->eof() ? " eof" : "") +
               (stream->fail() ? " fail" : "") + (stream->isFifo() ? " fifo" : "");
    }
    std::string show(long result) const { return show(std::to_string(result)); }
    template <class Stream, class... As>
    Stream& set(const As&... arguments) {
        stream = std::make_unique<Stream>(arguments...);
        return static_cast<Stream&>(*stream);
    }
    /// What a call leaves in a field of dots, and what it returns.
    template <class Call>
    std::string filled(std::size_t size, Call call, char fill = '.') {
        std::string field(size, fill);
        const unsigned long result = call(field.data());
        return show(field + " " + std::to_string(result));
    }
    EmptyFolder folder_;
    int stdin_ = dup(0);
    std::vector<pid_t> feeders_;
    std::istringstream adapted_{"adapted"};
};

std::string World::run(const std::string& operation, const A& arguments) try {
    // clang-format off
    using W = World;
    static InputServer& server = *InputServer::getInstance();
    static const std::map<std::string, std::function<std::string(W&, const A&)>> operations{
        {"put", [](W& w, const A& a) { return script::answer(w.put(a[0], repeated(a))); }},
        {"pipe", [](W& w, const A& a) { return script::answer(w.pipe(a[0], repeated(a))); }},
        {"open", [](W& w, const A& a) { w.stream.reset(server.getFile(text(a, 0), text(a, 3) ? InputStream::BYTE_ORDER_BIG : native, text(a, 1), text(a, 2))); return w.stream ? w.show(w.stream->name().c_str()) : "null"; }},
        {"basic", [](W& w, const A& a) { return w.show(w.set<vek::InputBasicFile>(text(a, 0), native).name().c_str()); }},
        {"fstream", [](W& w, const A& a) { return w.show(w.set<vek::InputFStream>(text(a, 0), native).name().c_str()); }},
        {"text", [](W& w, const A& a) { return w.show(w.set<vek::InputSStream>("text", native, a[0]).name().c_str()); }},
        {"adapter", [](W& w, const A&) { return w.show(w.set<vek::InputStreamStl>(&w.adapted_, nullptr, native).name().c_str()); }},
        {"held", [](W& w, const A& a) { return w.show(std::to_string(w.set<vek::InputBStream>("held", native).initBuf(text(a, 0), number<unsigned long>(a, 1)))); }},
        {"window", [](W& w, const A& a) { auto& b = w.set<vek::InputBStream>(text(a, 0), native); text(a, 2) ? void() : b.initFile(7, true); b.initFile(number<unsigned long>(a, 1), false); return w.show(std::to_string(b.capacity()) + " " + std::to_string(b.keepBack())); }},
        {"read", [](W& w, const A& a) { return w.filled(number<std::size_t>(a, 0), [&](char* field) { return w.stream->bufread(field, number<unsigned long>(a, 0), 100); }); }},
        {"line", [](W& w, const A& a) { return w.filled(20, [&](char* field) { w.stream->getline(field, number<unsigned long>(a, 0)); std::fill(field + std::min(std::find(field, field + 20, '\0') - field + 1, 20L), field + 20, '.'); return 0UL; }); }},
        {"swap", [](W& w, const A& a) { return w.filled(8, [&](char* field) { w.stream->read_swap(field, number<unsigned short>(a, 0), number<unsigned short>(a, 1), number(a, 2) != 0); return 0UL; }, '\xEE'); }},
        {"peek", [](W& w, const A&) { return w.show(w.stream->peek()); }},
        {"seek", [](W& w, const A& a) { w.stream->seek(number(a, 0), number<std::ios::seekdir>(a, 1)); return w.show("to"); }},
        {"name", [](W& w, const A& a) { return w.show(w.stream->name(number(a, 0)).c_str()); }},
        {"size", [](W& w, const A& a) { return w.show(a.empty() ? w.stream->size() : w.stream->size(number(a, 0))); }},
        {"driver", [](W&, const A& a) { server.addDriver(text(a, 0), number(a, 2) == 0 ? nullptr : number(a, 2) == 1 ? tell<'1'> : tell<'2'>, text(a, 1)); return ""; }},
        {"default", [](W&, const A& a) { server.setDriverDefault(text(a, 0)); return server.getDriverDefault(); }},
        {"option", [](W&, const A& a) { server.setDriverOption(text(a, 0), text(a, 1)); return ""; }},
        {"mapped", [](W& w, const A& a) { const auto pages = [] { long count = 0; std::ifstream("/proc/self/statm") >> count; return count; }; w.stream.reset(); const long before = pages(); w.run("open", a); return std::to_string((pages() - before) * sysconf(_SC_PAGESIZE) >> 20); }},
        {"leaked", [](W& w, const A& a) { const auto open = [] { return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {}); }; w.stream.reset(); const auto before = open(); for (int i = 0; i < 1000; ++i) w.run("open", a); return std::to_string(open() - before); }},
    };
    // clang-format on
    errno = 0;
    return operations.at(operation)(*this, arguments);
} catch (const vek::StdError& error) {
    const bool leftErrno = errno != 0;
    const std::string message = error.msg().c_str();
    // By its name: the system's text for it is long, and only has to be the one.
    const bool hasText = std::strcmp(error.title(), std::strerror(error.code())) == 0;
    return strerrorname_np(error.code()) + std::string(hasText ? "" : error.title()) + ": " +
           message + (leftErrno && message.ends_with("open failed") ? " errno" : "");
}

void runScript(const char* name) {
    std::optional<World> world(std::in_place);
    const int checks = script::run(
        name, [&](const std::string& operation, const A& a) { return world->run(operation, a); },
        [&] { world.emplace(); },
        [&](const std::string& place, const std::string& result, const std::string& wanted) {
            EXPECT_EQ(result, wanted) << place;
        });
    EXPECT_GT(checks, 0);
}

TEST(InputStreamScript, GivesWhatItSays) {
    runScript("streams.txt");
}

TEST(InputStreamScript, RegistersDriversInAProcessOfItsOwn) {
    EXPECT_EXIT(
        {
            runScript("drivers.txt");
            std::exit(HasFailure());
        },
        testing::ExitedWithCode(0), "");
}

using enum StreamComparison::Kind;

struct Source {
    StreamComparison::Kind kind;
    long back;
    const char* name;
    const char* driver;
};
// clang-format off
constexpr Source sources[] = {
    {basic, -1, "one", "basic"}, {stl, -1, "one", "fstream"}, {memory, -1, "text", nullptr},
    {window, -1, "one", nullptr}, {window, -1, "one", "memory"}, {window, -1, "one::buffer:-3", nullptr},
    {window, -1, "one::buffer:0", nullptr}, {window, -1, "one::buffer:1", nullptr}, {window, -1, "one::buffer:5", nullptr},
    {window, -1, "one", "bmulti"}, {window, -1, "d/*", "bmulti"}, {window, -1, "d/[!e]*::bmulti:1", nullptr},
    {chain, -1, "one::multi:basic", nullptr}, {chain, -1, "d/*", "multi"}, {chain, -1, "d/*::multi:basic", nullptr},
    {chain, -1, "d/*::multi:fstream", nullptr}, {chain, -1, "d/*", "memory"}, {chain, -1, "d/[!e]*::buffer:1", nullptr},
    {basic, 0, "p", "basic"}, {stl, 0, "p", "fstream"}, {chain, 0, "p::multi:basic", nullptr},
    {chain, 500, "p", "multi"}, {window, 500, "p", nullptr}, {window, 500, "p", "memory"},
    {window, 500, "p", "bmulti"}, {window, 15000, "p::buffer:16", nullptr},
    {basic, 0, nullptr, "basic"}, {window, 500, nullptr, nullptr}, {window, 500, nullptr, "memory"}};
// clang-format on

std::string randomBytes(std::size_t size) {
    std::string bytes(size, '\xFF');
    std::mt19937 random(static_cast<unsigned>(size));
    std::generate(bytes.begin(), bytes.end(),
                  [&] { return static_cast<char>(random() % 3 == 0 ? 0xFF : random()); });
    return bytes;
}

/// Interrupts the process all the time; 0 ends that.
void interruptEvery(long microseconds) {
    struct sigaction action {};
    action.sa_handler = [](int) {};
    sigaction(SIGALRM, &action, nullptr);
    const itimerval timer{{0, microseconds}, {0, microseconds}};
    setitimer(ITIMER_REAL, &timer, nullptr);
}

class InputStreamOfSize : public testing::TestWithParam<std::size_t> {};

TEST_P(InputStreamOfSize, GivesTheBytesWhateverTheDriver) {
    const std::string data = randomBytes(GetParam());
    const std::string first = data.substr(0, data.size() / 2), last = data.substr(data.size() / 2);
    const std::map<std::string, std::string> files{{"one", data},
                                                   {"d/a", first},
                                                   {"d/b", ""},
                                                   {"d/c@", "stands for its name"},
                                                   {"d/d", last},
                                                   {"d/e", ""},
                                                   {"d/.hidden", "not read"}};
    unsigned seed = 1;
    for (const auto& [kind, back, name, driver] : sources) {
        SCOPED_TRACE(std::string(name == nullptr ? "-" : name) + " " +
                     (driver == nullptr ? "" : driver));
        World world;
        for (const auto& [file, text] : files) {
            World::put(file, text);
        }
        ASSERT_TRUE(back < 0 || world.pipe(name == nullptr ? "-" : "p", data));
        const auto order = static_cast<InputStream::ByteOrder>(static_cast<int>(++seed % 3) - 1);
        world.stream.reset(kind == memory
                               ? new vek::InputSStream(name, order, data)
                               : InputServer::getInstance()->getFile(name, order, driver));
        const std::vector<std::string> members{first, "", "02c@", last, ""};
        const bool isFolder = name != nullptr && *name == 'd';
        std::mt19937 random(seed);
        const auto choose = [&](long low, long high) {
            return std::uniform_int_distribution(low, high)(random);
        };
        const auto check = [](bool holds, const char* what) { EXPECT_TRUE(holds) << what; };
        StreamComparison comparison(*world.stream, kind, back,
                                    isFolder ? members : std::vector{data}, choose, check);
        interruptEvery(100);
        for (int i = 0; (i < 1000 || !comparison.isOver()) && !HasFailure(); ++i) {
            comparison.step(i);
        }
        interruptEvery(0);
    }
}

INSTANTIATE_TEST_SUITE_P(Around, InputStreamOfSize,
                         testing::Values(0, 1, 2, 1023, 1024, 1025, 2047, 2048, 2049, 4095, 4096,
                                         4097, 100000));

}  // namespace
