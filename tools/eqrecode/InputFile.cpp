// A pipe can't be asked for its size, and a file may grow while it is read: whatever comes is
// taken, up to what a document can hold.

#include "tools/eqrecode/InputFile.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <climits>
#include <system_error>

namespace eqrecode {

namespace {

[[noreturn]] void fail(int error, const std::string& name) {
    throw std::system_error(error, std::generic_category(), name);
}

/// An open file, closed at the end.
struct OpenFile {
    explicit OpenFile(const std::string& path)
        : descriptor(::open(path.c_str(), O_RDONLY | O_CLOEXEC)) {}
    OpenFile(const OpenFile&) = delete;
    OpenFile& operator=(const OpenFile&) = delete;
    ~OpenFile() { ::close(descriptor); }

    int descriptor;
};

}  // namespace

std::string readFile(const std::string& path) {
    if (path == "-") {
        return readToEnd(STDIN_FILENO, path);
    }
    const OpenFile file(path);
    if (file.descriptor < 0) {
        fail(errno, path);
    }
    return readToEnd(file.descriptor, path);
}

std::string readToEnd(int descriptor, const std::string& name) {
    std::string content;
    std::array<char, std::size_t{1} << 16> buffer;
    while (true) {
        const ssize_t got = ::read(descriptor, buffer.data(), buffer.size());
        if (got > 0) {
            content.append(buffer.data(), static_cast<std::size_t>(got));
        } else if (got == 0) {
            return content;
        } else if (errno != EINTR) {
            fail(errno, name);
        }
        if (content.size() > INT_MAX) {
            fail(EFBIG, name);
        }
    }
}

}  // namespace eqrecode
