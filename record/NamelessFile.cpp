// The name is taken away at once, so that nothing is left behind however the program ends.

#include "record/NamelessFile.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <string>
#include <system_error>
#include <utility>

namespace record {

namespace {

[[noreturn]] void fail(const char* what) {
    throw std::system_error(errno, std::generic_category(), what);
}

}  // namespace

NamelessFile::NamelessFile() {
    const char* const folder = std::getenv("TMPDIR");
    std::string name = folder == nullptr || *folder == '\0' ? "/tmp" : folder;
    name += "/eqrecord-XXXXXX";
    descriptor_ = ::mkostemp(name.data(), O_CLOEXEC);
    if (descriptor_ < 0) {
        fail("cannot make a file in TMPDIR");
    }
    ::unlink(name.c_str());
}

NamelessFile::~NamelessFile() {
    if (descriptor_ >= 0) {
        ::close(descriptor_);
    }
}

void NamelessFile::append(std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t count = ::write(descriptor_, bytes.data(), bytes.size());
        if (count > 0) {
            bytes.remove_prefix(static_cast<std::size_t>(count));
            size_ += static_cast<std::uint64_t>(count);
        } else if (count == 0 || errno != EINTR) {
            fail("cannot write a file in TMPDIR");
        }
    }
}

int NamelessFile::release() {
    return std::exchange(descriptor_, -1);
}

}  // namespace record
