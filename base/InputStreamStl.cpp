// A standard stream that has met its end refuses to seek and to tell its place. Both clear its
// state around the call; asking for the place then puts it back, seeking leaves it cleared.

#include "base/InputStreamStl.h"

#include <algorithm>
#include <cerrno>
#include <limits>
#include <string>

#include "base/Exception.h"

namespace vek {

namespace {

/// A count as standard streams take it: signed, hence limited.
std::streamsize streamSize(unsigned long count) {
    constexpr auto most = std::numeric_limits<std::streamsize>::max();
    return static_cast<std::streamsize>(std::min(count, static_cast<unsigned long>(most)));
}

}  // namespace

InputStreamStl::InputStreamStl(std::istream* stream, const char* name, ByteOrder order)
    : InputStream(name, order), stream_(stream) {}

InputStream& InputStreamStl::seek(long offset, std::ios::seekdir dir) {
    if (isDirection(dir)) {
        stream_->clear();
        stream_->seekg(offset, dir);
        stream_->clear();
    }
    return *this;
}

long InputStreamStl::offset() {
    const std::ios::iostate state = stream_->rdstate();
    stream_->clear();
    const auto position = static_cast<long>(stream_->tellg());
    stream_->clear(state);
    return position < 0 ? consumed_ : position;
}

InputStream& InputStreamStl::getline(char* buffer, unsigned long size, char delimiter) {
    stream_->getline(buffer, streamSize(size), delimiter);
    consumed_ += stream_->gcount();
    return *this;
}

bool InputStreamStl::eof() {
    return stream_->eof();
}

bool InputStreamStl::fail() {
    return stream_->fail();
}

int InputStreamStl::peek() {
    return stream_->peek();
}

long InputStreamStl::size() {
    throw StdError("", ENOSYS);
}

unsigned long InputStreamStl::bufread(char* buffer, unsigned long count, unsigned long) {
    stream_->read(buffer, streamSize(count));
    consumed_ += stream_->gcount();
    readFailed_ = readFailed_ || stream_->bad();
    return count;
}

InputFStream::InputFStream(const char* name, ByteOrder order)
    : InputStreamStl(&file_, name, order) {
    errno = 0;
    file_.open(name_.c_str(), std::ios::in | std::ios::binary);
    if (!file_.is_open()) {
        throwOpenFailed(name_, errno);
    }
    isFifo_ = isForwardOnly(name_);
}

long InputFStream::size() {
    return isFifo_ ? 0 : fileSizeOf(name_.c_str());
}

InputSStream::InputSStream(const char* name, ByteOrder order, std::string_view text)
    : InputStreamStl(&text_, name, order),
      text_(std::string(text)),
      length_(static_cast<std::int64_t>(text.size())) {}

long InputSStream::size() {
    return length_;
}

}  // namespace vek
