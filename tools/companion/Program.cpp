#include "tools/companion/Program.h"

#include <fcntl.h>
#include <sys/uio.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <new>
#include <string_view>
#include <system_error>

#include "lint/Printable.h"
#include "tools/companion/OutputFile.h"

namespace companion {

namespace {

/// Makes sure that no file that is opened becomes a standard stream, to which somebody writes. One
/// that was closed still can't be written to, or read: an empty input would not be a failed one.
void keepStandardStreams() {
    int descriptor = 0;
    while (descriptor >= 0 && descriptor <= STDERR_FILENO) {
        descriptor = ::open("/dev/null", O_PATH | O_CLOEXEC);
    }
    ::close(descriptor);
}

/// Tells what was thrown, or that there is no memory to make that printable.
void tell(const char* name, const char* text, bool isUsage = false) {
    try {
        const std::string advice = std::string("\nTry '") + name + " --help'.";
        say(name, lint::printable(text), isUsage ? advice : "");
    } catch (const std::bad_alloc&) {
        say(name, "out of memory");
    }
}

}  // namespace

void say(std::string_view name, std::string_view text, std::string_view more) {
    const auto part = [](std::string_view view) {
        return iovec{const_cast<char*>(view.data()), view.size()};
    };
    const std::array parts{part(name), part(": "), part(text), part(more), part("\n")};
    // There is nobody left to tell that this could not be written.
    [[maybe_unused]] const auto written =
        ::writev(STDERR_FILENO, parts.data(), static_cast<int>(parts.size()));
}

int print(std::string_view text) {
    OutputFile output("-", false);
    output.stream() << text;
    output.commit();
    return nothingFound;
}

int runProgram(const char* name, const std::function<int()>& program) {
    std::signal(SIGXFSZ, SIG_IGN);  // a file that grows too large is a failed write
    keepStandardStreams();
    try {
        return program();
    } catch (const UsageError& error) {
        tell(name, error.what(), true);
    } catch (const std::system_error& error) {
        if (error.code() != std::errc::broken_pipe) {
            tell(name, error.what());
        }
    } catch (const std::bad_alloc&) {
        say(name, "out of memory");
    } catch (const std::exception& error) {
        tell(name, error.what());
    }
    return trouble;
}

}  // namespace companion
