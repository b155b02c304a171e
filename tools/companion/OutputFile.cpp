#include "tools/companion/OutputFile.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <memory>
#include <new>
#include <stdexcept>
#include <system_error>
#include <utility>

#include "tools/companion/Temporary.h"

namespace companion {

namespace {

[[noreturn]] void fail(std::string_view what) {
    throw std::system_error(errno, std::generic_category(), std::string(what));
}

bool awaitRoom(int descriptor) {
    pollfd waited{descriptor, POLLOUT, 0};
    return ::poll(&waited, 1, -1) >= 0 || errno == EINTR;
}

/// The file that a path leads to. There may be none though the path can be opened: a link of the
/// system's to a file that has been deleted.
std::string resolved(const std::string& path) {
    const std::unique_ptr<char, decltype(&std::free)> real(::realpath(path.c_str(), nullptr),
                                                           &std::free);
    if (!real && errno == ENOMEM) {
        throw std::bad_alloc();
    }
    return real ? real.get() : (fail(path), "");
}

/// Gives a new file the owner, the group and the permissions of the one that it will replace. What
/// the system does not let us give, as only root gives files away, stays ours.
void takeOver(int descriptor, const struct stat& old) {
    constexpr auto asItIs = static_cast<uid_t>(-1);
    [[maybe_unused]] const std::array results{::fchown(descriptor, asItIs, old.st_gid),
                                              ::fchown(descriptor, old.st_uid, asItIs),
                                              ::fchmod(descriptor, old.st_mode & 0777)};
}

}  // namespace

DescriptorBuffer::DescriptorBuffer(int descriptor, std::string_view failure)
    : descriptor_(descriptor), failure_(failure) {
    setp(buffer_.data(), buffer_.data() + buffer_.size());
}

DescriptorBuffer::int_type DescriptorBuffer::overflow(int_type c) {
    sync();
    return traits_type::eq_int_type(c, traits_type::eof()) ? traits_type::not_eof(c)
                                                           : sputc(traits_type::to_char_type(c));
}

int DescriptorBuffer::sync() {
    const char* next = pbase();
    const char* const end = pptr();
    // Emptied first: what could not be written once is not tried again.
    setp(buffer_.data(), buffer_.data() + buffer_.size());
    while (next != end) {
        const ssize_t written = ::write(descriptor_, next, static_cast<std::size_t>(end - next));
        if (written > 0) {
            next += written;
        } else if (written == 0 || (errno == EAGAIN ? !awaitRoom(descriptor_) : errno != EINTR)) {
            fail(failure_);
        }
    }
    return 0;
}

OutputFile::OutputFile(std::string path, bool overwrites)
    : path_(std::move(path)),
      failure_(path_ == "-" ? "cannot write the output" : path_),
      overwrites_(overwrites),
      descriptor_(open()),
      buffer_(descriptor_, failure_),
      stream_(&buffer_) {
    stream_.exceptions(std::ios::badbit);  // lets the buffer's exceptions through
}

OutputFile::~OutputFile() {
    if (descriptor_ > STDERR_FILENO) {
        ::close(descriptor_);
    }
    if (!temporary_.empty()) {
        ::unlink(temporary_.c_str());
    }
}

int OutputFile::open() {
    if (path_ == "-") {
        return STDOUT_FILENO;
    }
    struct stat status {};
    if (::lstat(path_.c_str(), &status) != 0) {
        return openTemporary();
    }
    const bool leadsSomewhere = ::stat(path_.c_str(), &status) == 0;
    if (leadsSomewhere && !S_ISREG(status.st_mode)) {
        const int descriptor = ::open(path_.c_str(), O_WRONLY | O_CLOEXEC);
        return descriptor >= 0 ? descriptor : (fail(path_), -1);
    }
    if (!overwrites_) {
        throw std::runtime_error(path_ + ": is there already; --overwrite replaces it");
    }
    if (!leadsSomewhere || ::access(path_.c_str(), W_OK) != 0) {
        fail(path_);  // renaming would not ask
    }
    path_ = resolved(path_);
    const int descriptor = openTemporary();
    takeOver(descriptor, status);
    return descriptor;
}

int OutputFile::openTemporary() {
    int descriptor = -1;
    temporary_ = makeBeside(path_, [&descriptor](const char* name) {
        descriptor = ::open(name, O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
        return descriptor >= 0;
    });
    return descriptor;
}

bool OutputFile::isTerminal() const {
    return ::isatty(descriptor_) == 1;
}

void OutputFile::close() {
    // Closed even when that fails; a file system over a network tells only here that it is full.
    if (const int descriptor = std::exchange(descriptor_, -1); ::close(descriptor) != 0) {
        fail(failure_);
    }
}

void OutputFile::commit() {
    stream_.flush();
    close();
    if (!temporary_.empty()) {
        giveName(temporary_, path_, overwrites_);
        temporary_.clear();
    }
}

}  // namespace companion
