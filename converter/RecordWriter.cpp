#include "converter/RecordWriter.h"

#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <string>

#include "base/Exception.h"

namespace {

constexpr const char* failureTitle = "cannot write the record";

}  // namespace

void RecordWriter::number(std::size_t number) {
    const std::string digits = std::to_string(number);
    if (digits.size() < 2) {
        raw(fill_);
    }
    text(digits);
}

void RecordWriter::bytes(const void* data, std::size_t size) {
    if (size == 0) {
        return;
    }
    const char* bytes = static_cast<const char*>(data);
    if (size >= directSize) {
        flush();
        write(bytes, size);
        return;
    }
    const std::size_t room = bufferSize - used_;
    if (size > room) {
        // Filled to its end: what is written when must not depend on how the bytes come.
        std::memcpy(buffer_.data() + used_, bytes, room);
        used_ = bufferSize;
        flush();
        bytes += room;
        size -= room;
    }
    std::memcpy(buffer_.data() + used_, bytes, size);
    used_ += size;
}

void RecordWriter::flush() {
    const std::size_t size = used_;
    // Emptied first: what could not be written once is not tried again.
    used_ = 0;
    write(buffer_.data(), size);
}

void RecordWriter::write(const char* data, std::size_t size) const {
    while (size > 0) {
        const ssize_t written = ::write(descriptor_, data, size);
        if (written > 0) {
            data += written;
            size -= static_cast<std::size_t>(written);
        } else if (written == 0 || errno != EINTR) {
            throw vek::StdError(failureTitle, written == 0 ? EIO : errno);
        }
    }
}
