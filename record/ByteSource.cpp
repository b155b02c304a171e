// Files are read with pread and not mapped: a file that somebody shortens in the meantime is then
// an error that can be told, and no signal. The headers of a record lie far apart, so a small
// window is kept of the place that was looked at last. Bytes in memory are a window that is all
// there is.

#include "record/ByteSource.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <optional>
#include <stdexcept>
#include <system_error>
#include <utility>

namespace record {

namespace {

constexpr std::size_t spoolPiece = std::size_t{1} << 16;
/// Shorter ones mostly lie side by side, and are not worth a call of the system each.
constexpr std::size_t shortPiece = 1024;

/// Reads what comes next; 0 at the end, -1 and errno when that fails.
ssize_t readSome(int descriptor, std::vector<char>& buffer) {
    ssize_t count = 0;
    do {
        count = ::read(descriptor, buffer.data(), buffer.size());
    } while (count < 0 && errno == EINTR);
    return count;
}

}  // namespace

ByteSource::ByteSource(std::string path) : path_(std::move(path)), window_(windowSize) {
    try {
        open();
    } catch (...) {
        if (descriptor_ > STDERR_FILENO) {
            ::close(descriptor_);
        }
        throw;
    }
}

ByteSource::ByteSource(std::string path, std::string_view bytes)
    : path_(std::move(path)),
      size_(bytes.size()),
      window_(bytes.begin(), bytes.end()),
      windowLength_(bytes.size()) {}

ByteSource::ByteSource(NamelessFile& file) : window_(windowSize) {
    take(file);
}

ByteSource::~ByteSource() {
    if (descriptor_ > STDERR_FILENO) {
        ::close(descriptor_);
    }
}

void ByteSource::fail() const {
    throw std::system_error(errno, std::generic_category(), path_);
}

void ByteSource::open() {
    const bool isInput = path_ == "-";
    descriptor_ = isInput ? STDIN_FILENO : ::open(path_.c_str(), O_RDONLY | O_CLOEXEC);
    struct stat status {};
    if (descriptor_ < 0 || ::fstat(descriptor_, &status) != 0) {
        fail();
    }
    // Files that the system makes as they are read say that they are empty.
    if (!S_ISREG(status.st_mode) || status.st_size == 0) {
        spool();
        return;
    }
    // Standard input may be a file of which somebody has read the beginning.
    const off_t start = isInput ? ::lseek(descriptor_, 0, SEEK_CUR) : 0;
    start_ = static_cast<std::uint64_t>(std::clamp<off_t>(start, 0, status.st_size));
    size_ = static_cast<std::uint64_t>(status.st_size) - start_;
}

void ByteSource::spool() {
    std::vector<char> buffer(spoolPiece);
    std::optional<NamelessFile> file;
    ssize_t count = readSome(descriptor_, buffer);
    for (; count > 0; count = readSome(descriptor_, buffer)) {
        // Made with the first bytes: an empty input, or a folder, needs none.
        if (!file) {
            file.emplace();
        }
        file->append({buffer.data(), static_cast<std::size_t>(count)});
    }
    if (count < 0) {
        fail();
    }
    if (file) {
        take(*file);
    }
}

void ByteSource::take(NamelessFile& file) {
    size_ = file.size();
    const int given = std::exchange(descriptor_, file.release());
    if (given > STDERR_FILENO) {
        ::close(given);
    }
}

/// pread may give fewer bytes than there are, when a signal comes or a piece is very long.
std::size_t ByteSource::readAt(std::uint64_t offset, char* target, std::size_t length) const {
    std::size_t done = 0;
    while (done < length) {
        const auto place = static_cast<off_t>(start_ + offset + done);
        const ssize_t count = ::pread(descriptor_, target + done, length - done, place);
        if (count == 0) {
            break;
        }
        if (count > 0) {
            done += static_cast<std::size_t>(count);
        } else if (errno != EINTR) {
            fail();
        }
    }
    return done;
}

std::string_view ByteSource::view(std::uint64_t offset, std::size_t length) {
    if (offset >= size_) {
        return {};
    }
    length = static_cast<std::size_t>(std::min<std::uint64_t>(length, size_ - offset));
    if (offset < windowOffset_ || offset - windowOffset_ > windowLength_ ||
        windowLength_ - (offset - windowOffset_) < length) {
        const std::uint64_t wanted = std::min<std::uint64_t>(window_.size(), size_ - offset);
        windowLength_ = 0;  // reading may throw half way
        windowLength_ = readAt(offset, window_.data(), static_cast<std::size_t>(wanted));
        windowOffset_ = offset;
        if (windowLength_ < length) {
            throw std::runtime_error(path_ + ": has become shorter while it was read");
        }
    }
    return {window_.data() + (offset - windowOffset_), length};
}

void ByteSource::read(std::uint64_t offset, char* target, std::size_t length) {
    if (length > size_ || offset > size_ - length) {
        throw std::runtime_error(path_ + ": has no such bytes");
    }
    if (descriptor_ < 0 || length < shortPiece) {
        std::ranges::copy(view(offset, length), target);
    } else if (readAt(offset, target, length) < length) {
        throw std::runtime_error(path_ + ": has become shorter while it was read");
    }
}

}  // namespace record
