// gnuplot reads the script from a file in memory, whole before it starts: there is no moment at
// which both processes wait for each other, and none at which a gnuplot that has ended gets
// something written. What it writes is taken from both of its pipes as it comes.
//
// It runs with an environment of its own: the user's could turn other files into a part of the
// script, choose other fonts, or write numbers otherwise. A folder of PATH that isn't absolute is
// passed over, so that what happens to lie in the current folder is never run.

#include "tools/eqrecord/Gnuplot.h"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <stdexcept>
#include <string_view>
#include <system_error>
#include <utility>

#include "lint/Printable.h"
#include "tools/companion/OutputFile.h"
#include "tools/companion/Program.h"
#include "tools/eqrecord/Arguments.h"

namespace eqrecord {

namespace {

/// More than any picture has.
constexpr std::size_t mostOutput = std::size_t{1} << 30;
/// Of what gnuplot tells; the rest is passed over.
constexpr std::size_t mostMessages = std::size_t{1} << 16;

[[noreturn]] void fail(const std::string& what, int error = errno) {
    throw std::system_error(error, std::generic_category(), what);
}

/// Closes what it holds.
class Descriptor {
  public:
    explicit Descriptor(int number = -1) : number_(number) {}
    Descriptor(Descriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
    Descriptor& operator=(Descriptor&& other) noexcept {
        std::swap(number_, other.number_);
        return *this;
    }
    Descriptor(const Descriptor&) = delete;
    ~Descriptor() { close(); }

    int number() const { return number_; }
    void close() {
        if (number_ >= 0) {
            ::close(std::exchange(number_, -1));
        }
    }

  private:
    int number_;
};

struct Pipe {
    Descriptor reader;
    Descriptor writer;

    Pipe() {
        std::array<int, 2> ends{};
        if (::pipe2(ends.data(), O_CLOEXEC) != 0) {
            fail("cannot make a pipe");
        }
        reader = Descriptor(ends[0]);
        writer = Descriptor(ends[1]);
    }
};

/// A process that has been started. One that isn't waited for is ended with its object.
class Process {
  public:
    Process(const std::string& program, char* const* arguments, char* const* environment,
            const std::array<int, 3>& streams);
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;
    ~Process() {
        if (id_ > 0) {
            ::kill(id_, SIGKILL);
            wait();
        }
    }

    /// Waits for its end, and returns the status that waitpid gives.
    int wait() {
        int status = 0;
        while (::waitpid(id_, &status, 0) < 0 && errno == EINTR) {
        }
        id_ = -1;
        return status;
    }

  private:
    pid_t id_ = -1;
};

Process::Process(const std::string& program, char* const* arguments, char* const* environment,
                 const std::array<int, 3>& streams) {
    posix_spawn_file_actions_t actions;
    int error = ::posix_spawn_file_actions_init(&actions);
    for (int i = 0; i < 3 && error == 0; ++i) {
        error =
            ::posix_spawn_file_actions_adddup2(&actions, streams[static_cast<std::size_t>(i)], i);
    }
    if (error == 0) {
        error = ::posix_spawn(&id_, program.c_str(), &actions, nullptr, arguments, environment);
    }
    ::posix_spawn_file_actions_destroy(&actions);
    if (error != 0) {
        id_ = -1;
        fail("cannot run " + lint::printable(program), error);
    }
}

/// Where gnuplot is.
std::string findGnuplot() {
    const char* const path = std::getenv("PATH");
    std::string_view folders = path != nullptr ? path : "/usr/local/bin:/usr/bin:/bin";
    while (!folders.empty()) {
        const std::string_view folder = folders.substr(0, folders.find(':'));
        folders.remove_prefix(std::min(folders.size(), folder.size() + 1));
        std::string program = std::string(folder) + "/gnuplot";
        if (folder.starts_with('/') && ::access(program.c_str(), X_OK) == 0) {
            return program;
        }
    }
    throw std::runtime_error("plots need gnuplot (package gnuplot-nox)");
}

/// A file without a name that holds what `write` writes, to be read from its beginning.
Descriptor fileInMemory(const std::function<void(std::ostream&)>& write) {
    Descriptor file(::memfd_create("script", MFD_CLOEXEC));
    if (file.number() < 0) {
        fail("cannot keep the script");
    }
    companion::DescriptorBuffer buffer(file.number(), "cannot keep the script");
    std::ostream stream(&buffer);
    stream.exceptions(std::ios::badbit);
    write(stream);
    stream.flush();
    if (::lseek(file.number(), 0, SEEK_SET) != 0) {
        fail("cannot keep the script");
    }
    return file;
}

/// Takes what is there to read; false at the end.
bool readSome(int descriptor, std::string& text) {
    std::array<char, std::size_t{1} << 16> piece;
    const ssize_t count = ::read(descriptor, piece.data(), piece.size());
    if (count < 0 && errno != EINTR) {
        fail("cannot read what gnuplot writes");
    }
    text.append(piece.data(), static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
    return count != 0;
}

/// Reads two pipes to their ends.
void readBoth(int output, std::string& picture, int error, std::string& messages) {
    std::array<pollfd, 2> pipes{{{output, POLLIN, 0}, {error, POLLIN, 0}}};
    while (pipes[0].fd >= 0 || pipes[1].fd >= 0) {
        if (::poll(pipes.data(), pipes.size(), -1) < 0) {
            if (errno == EINTR) {
                continue;
            }
            fail("cannot wait for gnuplot");
        }
        // At its end a pipe is no longer waited for: poll passes over negative numbers.
        if (pipes[0].revents != 0 && !readSome(output, picture)) {
            pipes[0].fd = -1;
        }
        if (pipes[1].revents != 0 && !readSome(error, messages)) {
            pipes[1].fd = -1;
        }
        messages.resize(std::min(messages.size(), mostMessages));
        if (picture.size() > mostOutput) {
            throw std::runtime_error("gnuplot writes without end");
        }
    }
}

/// The last line that says anything: before it gnuplot shows where in the script it is.
std::string lastLineOf(std::string_view text) {
    const auto end = text.find_last_not_of(" \n");
    if (end == std::string_view::npos) {
        return "";
    }
    text = text.substr(0, end + 1);
    return ": " + lint::printable(text.substr(text.rfind('\n') + 1));
}

/// Decides whether the picture may be trusted. A picture that came with a complaint, for one about
/// fonts, is one all the same, but nobody should learn of it by chance.
void judge(int status, const std::string& picture, const std::string& messages) {
    if (WIFSIGNALED(status)) {
        throw std::runtime_error("gnuplot was ended by signal " + std::to_string(WTERMSIG(status)));
    }
    if (WEXITSTATUS(status) != 0) {
        throw std::runtime_error("gnuplot failed" + lastLineOf(messages));
    }
    if (picture.empty()) {
        throw std::runtime_error("gnuplot has drawn nothing" + lastLineOf(messages));
    }
    if (!messages.empty()) {
        companion::say(programName, "gnuplot tells", lastLineOf(messages));
    }
}

}  // namespace

std::string runGnuplot(const std::function<void(std::ostream&)>& writeScript) {
    std::string program = findGnuplot();
    const Descriptor script = fileInMemory(writeScript);
    Pipe output;
    Pipe error;
    std::string defaults = "-d";  // reads no settings but its own
    std::string input = "-";
    // UTF-8, or the text would be converted; of C.UTF-8 nothing else differs from C.
    std::string locale = "LC_ALL=C.UTF-8";
    const std::array<char*, 4> arguments{program.data(), defaults.data(), input.data(), nullptr};
    const std::array<char*, 2> environment{locale.data(), nullptr};
    std::signal(SIGCHLD, SIG_DFL);  // or its status could be lost
    Process process(program, arguments.data(), environment.data(),
                    {script.number(), output.writer.number(), error.writer.number()});
    // Or there would never be an end to read.
    output.writer.close();
    error.writer.close();
    std::string picture;
    std::string messages;
    readBoth(output.reader.number(), picture, error.reader.number(), messages);
    judge(process.wait(), picture, messages);
    return picture;
}

}  // namespace eqrecord
