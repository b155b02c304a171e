#include "tools/companion/Temporary.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <system_error>

namespace companion {

std::string makeBeside(const std::string& path, const std::function<bool(const char*)>& make) {
    const std::size_t slash = path.rfind('/');
    const std::string start = path.substr(0, slash == std::string::npos ? 0 : slash + 1) +
                              ".part-" + std::to_string(::getpid());
    for (int attempt = 0; attempt < 100; ++attempt) {
        std::string name = start + '-' + std::to_string(attempt);
        if (make(name.c_str())) {
            return name;  // takes no memory, which could be at an end
        }
        if (errno != EEXIST) {
            break;
        }
    }
    throw std::system_error(errno, std::generic_category(), path);
}

void giveName(const std::string& temporary, const std::string& path, bool overwrites) {
    // Not every file system knows the way that replaces nothing.
    const unsigned int flags = overwrites ? 0 : RENAME_NOREPLACE;
    int result = ::renameat2(AT_FDCWD, temporary.c_str(), AT_FDCWD, path.c_str(), flags);
    if (result != 0 && (errno == EINVAL || errno == ENOSYS)) {
        result = ::rename(temporary.c_str(), path.c_str());
    }
    if (result != 0) {
        throw std::system_error(errno, std::generic_category(), path);
    }
}

}  // namespace companion
