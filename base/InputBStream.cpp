// The window is the piece of the source that is in memory, from stream offset start_ to end().
// seek() only moves the position; the next read settles where that has led:
//
// - inside the window: the bytes are copied from it;
// - at its end or behind: the window slides. Up to keep-back bytes before the position are moved to
//   its front, the rest is filled up from the source in one read;
// - before it: the source is sought, which a pipe refuses, and the window filled anew.
//
// A window that holds something but is not full has met the end of the source, which is not asked
// for more again.

#include "base/InputBStream.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <limits>
#include <new>

#include "base/Exception.h"
#include "base/FileUtils.h"
#include "base/InputBasicFile.h"
#include "base/InputMultiFile.h"
#include "base/SaturatingAdd.h"

namespace vek {

namespace {

constexpr unsigned long most = std::numeric_limits<long>::max();
/// What larger windows keep back. On a pipe, where nothing else leads back, they keep all but so
/// much, the least that is left to read into.
constexpr unsigned long usualKeepBack = 1024;
/// Windows of this size and below keep half of themselves back; where the size of a whole file is
/// not known its window has this one.
constexpr unsigned long smallCapacity = 2048;
/// How far getline reads ahead at once; it has to go back behind the delimiter.
constexpr long linePiece = 512;

/// Takes storage. `place` goes into the message; that one names a class that has no such member is
/// required.
std::unique_ptr<char[]> allocate(unsigned long size, const char* place) {
    std::unique_ptr<char[]> block(size > most ? nullptr : new (std::nothrow) char[size]);
    if (!block) {
        const String message = String("cannot allocate read buffer in ") + place;
        throw StdError(message.c_str(), ENOMEM);
    }
    return block;
}

}  // namespace

InputBStream::InputBStream(const char* name, ByteOrder order) : InputStream(name, order) {
    // Of a null name the base makes an empty one; here it means standard input.
    if (name == nullptr) {
        name_.setNull();
    }
}

InputBStream::~InputBStream() = default;

unsigned long InputBStream::initBuf(const char* text, unsigned long length) {
    const unsigned long size = text != nullptr ? std::strlen(text) : length;
    // One byte more, which stays free: a window that is not full has no more to come.
    auto block = allocate(size >= most ? most + 1 : size + 1, "InputStream::initBuf");
    if (text != nullptr) {
        std::memcpy(block.get(), text, size);
    } else {
        std::memset(block.get(), 0, size);
    }
    source_.reset();
    storage_ = std::move(block);
    windowOffset_ = start_ = position_ = keepBack_ = 0;
    valid_ = static_cast<long>(size);
    storageSize_ = capacity_ = valid_ + 1;
    eof_ = fail_ = isFifo_ = false;
    return size + 1;
}

void InputBStream::initFile(unsigned long bufferSize, bool) {
    // Without a source the stream is empty and at its end, which is what a failure leaves.
    source_.reset();
    windowOffset_ = start_ = position_ = valid_ = 0;
    eof_ = fail_ = false;
    auto source = openSource();
    isFifo_ = source->isFifo();
    chooseWindow(bufferSize);
    source_ = std::move(source);
}

std::unique_ptr<InputStream> InputBStream::openSource() {
    if (name_.isNull() || FileUtils::checkFile(name_.c_str())) {
        auto file =
            std::make_unique<InputBasicFile>(name_.isNull() ? nullptr : name_.c_str(), order_);
        if (name_.isNull()) {
            name_ = file->name();
        }
        return file;
    }
    auto chain = std::make_unique<InputMultiFile>(name_.c_str(), order_);
    if (!chain->open("basic", nullptr)) {  // the driver was replaced by one that refuses
        throwOpenFailed(name_, ENOENT);
    }
    return chain;
}

/// Takes storage for a window of that size and settles how much of it stays behind the position.
void InputBStream::chooseWindow(unsigned long bufferSize) {
    unsigned long capacity = bufferSize;
    if (capacity == 0 && !isFifo_) {
        capacity = static_cast<unsigned long>(std::max(fileSizeOf(name_.c_str()), 0L));
    }
    if (capacity == 0) {
        capacity = smallCapacity;
    }
    unsigned long keepBack = capacity / 2;
    if (capacity > smallCapacity) {
        keepBack = isFifo_ ? capacity - usualKeepBack : usualKeepBack;
    }
    // A slide that moves more than it reads would make long pipes slow: in storage of twice the
    // size only one in many moves anything. Elsewhere the window is all the storage.
    const unsigned long slack = keepBack > capacity / 2 ? keepBack : 0;
    const unsigned long wanted = capacity > most ? capacity : capacity + slack;
    storage_.reset();
    storage_ = allocate(wanted, "InputBStream::initFile");
    storageSize_ = static_cast<long>(wanted);
    capacity_ = static_cast<long>(capacity);
    keepBack_ = static_cast<long>(keepBack);
}

const String& InputBStream::name(long offset) {
    return source_ ? source_->name(offset) : name_;
}

InputStream& InputBStream::seek(long offset, std::ios::seekdir dir) {
    long target = -1;
    if (dir == std::ios::beg) {
        target = offset;
    } else if (dir == std::ios::cur) {
        target = saturatingAdd(position_, offset);
    }
    if (target >= 0) {
        position_ = target;
    }
    return *this;
}

long InputBStream::offset() {
    return position_;
}

bool InputBStream::eof() {
    return eof_;
}

bool InputBStream::fail() {
    return fail_ || eof();
}

long InputBStream::size() {
    return source_ ? source_->size() : valid_;
}

long InputBStream::size(long offset) {
    return source_ ? source_->size(offset) : valid_;
}

int InputBStream::peek() {
    char byte = 0;
    if (bufread(&byte, 1, 0) == 0) {
        // To look past the end counts as no attempt to read.
        eof_ = fail_ = false;
        return -1;
    }
    --position_;
    return static_cast<unsigned char>(byte);
}

/// Reads in pieces no larger than the way back, so that the position can return to just behind the
/// delimiter even on a pipe.
InputStream& InputBStream::getline(char* buffer, unsigned long size, char delimiter) {
    if (size == 0) {
        return *this;
    }
    const long piece = source_ ? std::clamp(keepBack_, 1L, linePiece) : linePiece;
    unsigned long length = 0;
    while (length + 1 < size) {
        const unsigned long wanted = std::min(size - 1 - length, static_cast<unsigned long>(piece));
        const unsigned long got = bufread(buffer + length, wanted, 0);
        const void* const found = std::memchr(buffer + length, delimiter, got);
        if (found != nullptr) {
            const unsigned long line =
                static_cast<unsigned long>(static_cast<const char*>(found) - buffer);
            position_ -= static_cast<long>(length + got - line - 1);
            length = line;
            eof_ = false;
            break;
        }
        length += got;
        if (got < wanted) {
            break;
        }
    }
    buffer[length] = '\0';
    return *this;
}

unsigned long InputBStream::bufread(char* buffer, unsigned long count, unsigned long reserved) {
    eof_ = fail_ = false;
    unsigned long delivered = 0;
    while (true) {
        if (position_ < start_ && !rewindSource()) {
            fail_ = true;
            break;
        }
        if (position_ >= end()) {
            const bool isExhausted = !source_ || (valid_ != 0 && valid_ < capacity_);
            if (isExhausted || !slide()) {
                eof_ = true;
                break;
            }
        }
        const auto available = static_cast<unsigned long>(end() - position_);
        const unsigned long copied = std::min(count - delivered, available);
        std::copy_n(window() + (position_ - start_), copied, buffer + delivered);
        delivered += copied;
        position_ += static_cast<long>(copied);
        if (delivered == count) {
            break;
        }
        if (valid_ < capacity_) {
            eof_ = true;
            break;
        }
    }
    return reserved + delivered;
}

/// Goes back before the window; false when the source has no data there.
bool InputBStream::rewindSource() {
    try {
        source_->seek(position_, std::ios::beg);
    } catch (const StdError& error) {
        if (error.code() != ESPIPE) {
            throw;
        }
        String message = error.msg();
        message += ", try increasing the read buffer to minimum ";
        const long reach = end() - position_;
        message << reach / 1024 + (reach % 1024 != 0 ? 1 : 0);
        message += " KBytes";
        throw StdError(message.c_str(), ESPIPE);
    }
    if (source_->peek() < 0) {
        return false;
    }
    start_ = valid_ = 0;
    return true;
}

/// Moves the window so that it begins `keep-back` bytes before the position, which lies at or
/// behind its end, and fills it up. Bytes that it already holds are kept. False when the source
/// ends before the position.
bool InputBStream::slide() {
    const long keep = std::min(keepBack_, position_);
    // What the window has of those bytes is moved, and the source goes on behind it.
    const long moved =
        valid_ == 0 || position_ - end() >= keepBack_ ? 0 : end() + keepBack_ - position_;
    seekSource(position_ - keep + moved);
    windowOffset_ = moved == 0 ? 0 : windowOffset_ + valid_ - moved;
    if (windowOffset_ + capacity_ > storageSize_) {
        std::memmove(storage_.get(), window(), static_cast<std::size_t>(moved));
        windowOffset_ = 0;
    }
    start_ = position_ - keep;
    valid_ = 0;  // should the source throw: nothing of the window is known any more
    fill(moved);
    return position_ <= end();
}

/// Moves the source to `from`. One that is there already is not sought: it may have to read anew
/// what it has at hand.
void InputBStream::seekSource(long from) {
    if (source_->offset() != from || source_->eof()) {
        source_->seek(from, std::ios::beg);
    }
}

/// Fills the window up behind its first `moved` bytes from the source, which stands there or, when
/// it could not be brought there, has no such bytes.
void InputBStream::fill(long moved) {
    const long before = source_->offset();
    long got = 0;
    if (before == start_ + moved) {
        source_->bufread(window() + moved, static_cast<unsigned long>(capacity_ - moved), 0);
        got = std::max(source_->offset() - before, 0L);
        readFailed_ = readFailed_ || source_->readFailed();
    }
    valid_ = moved + got;
}

}  // namespace vek
