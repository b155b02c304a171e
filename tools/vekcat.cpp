// Writes named streams to standard output, one after another:
//
//     vekcat NAME[::DRIVER[:OPTIONS]]...
//
// "-" is standard input. Shows how the stream library is called: the input server opens a name, and
// the change of the offset tells how much a read has brought.

#include <poll.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <memory>
#include <new>
#include <string>

#include "base/Exception.h"
#include "base/InputServer.h"

namespace {

using vek::InputServer;
using vek::InputStream;

/// Opens what an argument names; null when its driver is unknown or refuses the options.
std::unique_ptr<InputStream> open(const std::string& argument) {
    const InputServer& server = *InputServer::getInstance();
    constexpr auto order = InputStream::BYTE_ORDER_NATIVE;
    if (argument != "-" && !argument.starts_with("-::")) {
        return std::unique_ptr<InputStream>(server.getFile(argument.c_str(), order));
    }
    // The server splits names; standard input has none.
    const std::string spec = argument.substr(argument == "-" ? 1 : 3);
    const std::size_t colon = spec.find(':');
    const std::string driver = spec.substr(0, colon);
    const std::string options = colon == std::string::npos ? "" : spec.substr(colon + 1);
    return std::unique_ptr<InputStream>(
        server.getFile(nullptr, order, driver.c_str(), options.c_str()));
}

/// Writes all of it; false, with errno set, when it can't be written.
bool write(const char* data, std::size_t size) {
    while (size > 0) {
        const ssize_t written = ::write(STDOUT_FILENO, data, size);
        if (written < 0 && errno == EAGAIN) {  // full for now, and not to be waited for by itself
            pollfd waited{STDOUT_FILENO, POLLOUT, 0};
            ::poll(&waited, 1, -1);
        } else if (written < 0 && errno != EINTR) {
            return false;
        } else if (written > 0) {
            data += written;
            size -= static_cast<std::size_t>(written);
        }
    }
    return true;
}

/// Copies a stream to its end; false when a read failed.
bool copy(InputStream& stream) {
    static std::array<char, 1 << 16> buffer;
    while (true) {
        const long before = stream.offset();
        stream.bufread(buffer.data(), buffer.size());
        const long got = stream.offset() - before;
        if (got <= 0) {
            return !stream.readFailed();
        }
        if (!write(buffer.data(), static_cast<std::size_t>(got))) {
            throw vek::StdError("cannot write to standard output", errno);
        }
    }
}

bool complain(const char* argument, const char* text) {
    std::fprintf(stderr, "vekcat: %s: %s\n", argument, text);
    return false;
}

/// Leaves the text out where there is no memory for a copy of it.
bool complain(const vek::Exception& error) {
    vek::String text;
    try {
        text = error.msg();
    } catch (const std::bad_alloc&) {
    }
    std::fprintf(stderr, "vekcat: %s: %s: %s\n", error.family(), error.title(), text.c_str());
    return false;
}

/// Writes the stream that an argument names; false, with a message, when it fails.
bool writeStream(const char* argument) {
    try {
        const auto stream = open(argument);
        if (!stream) {
            return complain(argument, "no such driver, or it refuses the options");
        }
        return copy(*stream) || complain(argument, "read error");
    } catch (const vek::Exception& error) {
        return complain(error);
    } catch (const std::bad_alloc&) {
        return complain(argument, "out of memory");
    }
}

}  // namespace

int main(int argc, char** argv) {
    // A closed pipe and a file that grows too large are to be reported as failed writes.
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
    bool isComplete = true;
    for (int i = 1; i < argc; ++i) {
        isComplete = writeStream(argv[i]) && isComplete;
    }
    return isComplete ? 0 : 1;
}
