// The offset is counted here and not asked of stdio, which knows none on a pipe. After a seek on a
// file stdio's is taken over: it may not be the one that was asked for.

#include "base/InputBasicFile.h"

#include <algorithm>
#include <array>
#include <cerrno>

#include "base/Exception.h"
#include "base/FileUtils.h"
#include "base/SaturatingAdd.h"

namespace vek {

InputBasicFile::InputBasicFile(const char* name, ByteOrder order) : InputStream(name, order) {
    if (name == nullptr) {
        name_.setNull();
    } else {
        name_ = FileUtils::pathNameCheck(name, nullptr);
    }
    open();
}

void InputBasicFile::open() {
    const bool isStdin = name_.isNull();
    file_.reset();
    offset_ = 0;
    errno = 0;
    if (isStdin) {
        name_ = stdinName;
        file_.reset(::fdopen(0, "rb"));
    } else {
        file_.reset(std::fopen(name_.c_str(), "rb"));
    }
    if (!file_) {
        throwOpenFailed(name_, errno);
    }
    isFifo_ = isForwardOnly(name_);
}

InputStream& InputBasicFile::seek(long offset, std::ios::seekdir dir) {
    if (!file_ || !isDirection(dir)) {
        return *this;
    }
    if (isFifo_) {
        seekFifo(offset, dir);
        return *this;
    }
    const int whence = dir == std::ios::beg ? SEEK_SET : dir == std::ios::cur ? SEEK_CUR : SEEK_END;
    ::fseeko(file_.get(), offset, whence);
    offset_ = ::ftello(file_.get());
    return *this;
}

void InputBasicFile::seekFifo(long offset, std::ios::seekdir dir) {
    long target = offset;  // from the end too: a pipe has no known end
    if (dir == std::ios::beg) {
        target = std::max(offset, 0L);
    } else if (dir == std::ios::cur) {
        target = saturatingAdd(offset_, offset);
    }
    if (target < offset_) {
        const String quoted = String(name_).quote('"');
        const String message = String("seek backwards not allowed on FIFO stream ") + quoted;
        throw StdError(message.c_str(), ESPIPE);
    }
    std::array<char, 1024> dropped;
    auto rest = static_cast<std::size_t>(target - offset_);
    while (rest > 0) {
        const std::size_t wanted = std::min(rest, dropped.size());
        const std::size_t got = read(dropped.data(), wanted);
        rest -= got;
        if (got < wanted) {
            break;
        }
    }
    offset_ = target - static_cast<std::int64_t>(rest);
}

/// Reads through interruptions by signals.
std::size_t InputBasicFile::read(char* buffer, std::size_t count) {
    if (!file_) {  // opening it again failed
        return 0;
    }
    std::size_t got = std::fread(buffer, 1, count, file_.get());
    while (got < count && std::ferror(file_.get()) != 0 && errno == EINTR) {
        std::clearerr(file_.get());
        got += std::fread(buffer + got, 1, count - got, file_.get());
    }
    readFailed_ = readFailed_ || std::ferror(file_.get()) != 0;
    return got;
}

long InputBasicFile::offset() {
    return offset_;
}

InputStream& InputBasicFile::getline(char*, unsigned long, char) {
    return *this;
}

bool InputBasicFile::eof() {
    return !file_ || std::feof(file_.get()) != 0;
}

bool InputBasicFile::fail() {
    return !file_ || std::ferror(file_.get()) != 0;
}

int InputBasicFile::peek() {
    char byte;
    if (read(&byte, 1) == 0) {
        return -1;
    }
    // Pushed back and not sought back to: a pipe would lose the byte.
    return std::ungetc(static_cast<unsigned char>(byte), file_.get());
}

long InputBasicFile::size() {
    return isFifo_ ? 0 : fileSizeOf(name_.c_str());
}

unsigned long InputBasicFile::bufread(char* buffer, unsigned long count, unsigned long) {
    offset_ += static_cast<std::int64_t>(read(buffer, count));
    return static_cast<unsigned long>(offset_);
}

}  // namespace vek
