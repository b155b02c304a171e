#include "converter/Output.h"

#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

#include "base/Exception.h"

namespace {

/// Waits until a descriptor that doesn't block takes something again; false when that can't be
/// waited for.
bool awaitRoom(int descriptor) {
    pollfd waited{descriptor, POLLOUT, 0};
    return ::poll(&waited, 1, -1) >= 0 || errno == EINTR;
}

/// Writes all bytes, going on where a signal has interrupted it. Returns 0, or the number of the
/// error that ended it.
int writeAll(int descriptor, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t written = ::write(descriptor, bytes.data(), bytes.size());
        if (written > 0) {
            bytes.remove_prefix(static_cast<std::size_t>(written));
        } else if (written == 0) {
            return EIO;
        } else if (errno == EAGAIN ? !awaitRoom(descriptor) : errno != EINTR) {
            return errno;
        }
    }
    return 0;
}

}  // namespace

void Output::write(std::string_view bytes) {
    while (!bytes.empty()) {
        if (used_ == buffer_.size()) {
            flush();
        }
        const std::size_t count = std::min(bytes.size(), buffer_.size() - used_);
        std::copy_n(bytes.data(), count, buffer_.data() + used_);
        used_ += count;
        bytes.remove_prefix(count);
    }
}

void Output::flush() {
    const std::string_view buffered(buffer_.data(), used_);
    // Emptied first: what could not be written once is not tried again.
    used_ = 0;
    if (const int error = writeAll(record_, buffered); error != 0) {
        throw vek::StdError("cannot write the record", error);
    }
}

void Output::say(std::string_view message) {
    static_cast<void>(writeAll(messages_, message));
}
