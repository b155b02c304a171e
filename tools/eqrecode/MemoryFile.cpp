// The document layer reads and writes files by their paths only. One in memory has a path as well,
// leaves nothing behind, whatever ends the process, and needs no folder that can be written to.

#include "tools/eqrecode/MemoryFile.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cerrno>
#include <ostream>
#include <system_error>

#include "tools/companion/OutputFile.h"
#include "tools/eqrecode/InputFile.h"

namespace eqrecode {

namespace {

constexpr const char* name = "a file in memory";  // in messages

}  // namespace

MemoryFile::MemoryFile(std::string_view content)
    : descriptor_(::memfd_create("eqrecode", MFD_CLOEXEC)) {
    if (descriptor_ < 0) {
        throw std::system_error(errno, std::generic_category(), name);
    }
    try {
        companion::DescriptorBuffer buffer(descriptor_, name);
        std::ostream stream(&buffer);
        stream.exceptions(std::ios::badbit);
        stream << content << std::flush;
    } catch (...) {
        ::close(descriptor_);
        throw;
    }
}

MemoryFile::~MemoryFile() {
    ::close(descriptor_);
}

std::string MemoryFile::path() const {
    return "/proc/self/fd/" + std::to_string(descriptor_);
}

std::string MemoryFile::content() const {
    ::lseek(descriptor_, 0, SEEK_SET);
    return readToEnd(descriptor_, name);
}

}  // namespace eqrecode
