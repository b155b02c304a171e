// The record is read by programs, so it is written in large pieces; the messages are read by people
// while the run goes on, so each is written when it is said. Between the two there is no other
// order than this: a message never waits, so whatever part of the record comes behind it is written
// behind it.
//
// Either may be a pipe that somebody has set not to block. A full one is waited for; to give up
// there would lose a message, or end a run that is all right.

#include "converter/Output.h"

#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <utility>

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
    if (bytes.size() >= buffer_.size() / 4) {  // not worth a copy
        flush();
        writeRecord(bytes);
        return;
    }
    if (bytes.size() > buffer_.size() - used_) {
        flush();
    }
    std::copy(bytes.begin(), bytes.end(), buffer_.data() + used_);
    used_ += bytes.size();
}

void Output::flush() {
    // Emptied first: what could not be written once is not tried again.
    writeRecord({buffer_.data(), std::exchange(used_, 0)});
}

void Output::writeRecord(std::string_view bytes) const {
    if (const int error = writeAll(record_, bytes); error != 0) {
        throw vek::StdError("cannot write the record", error);
    }
}

void Output::say(std::string_view message) {
    static_cast<void>(writeAll(messages_, message));
}
