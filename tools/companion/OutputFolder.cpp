#include "tools/companion/OutputFolder.h"

#include <sys/stat.h>

#include <filesystem>
#include <new>
#include <stdexcept>
#include <system_error>
#include <utility>

#include "tools/companion/Temporary.h"

namespace companion {

namespace {

/// A path without the slashes behind it, of which there may be any number.
std::string withoutEnd(std::string path) {
    while (path.size() > 1 && path.back() == '/') {
        path.pop_back();
    }
    return path;
}

}  // namespace

OutputFolder::OutputFolder(std::string path) : path_(withoutEnd(std::move(path))) {
    struct stat status {};
    if (::lstat(path_.c_str(), &status) == 0) {
        throw std::runtime_error(path_ + ": is there already; a folder is never replaced");
    }
    temporary_ = makeBeside(path_, [](const char* name) { return ::mkdir(name, 0777) == 0; });
}

OutputFolder::~OutputFolder() {
    if (temporary_.empty()) {
        return;
    }
    try {
        std::error_code ignored;
        std::filesystem::remove_all(temporary_, ignored);  // follows no links
    } catch (const std::bad_alloc&) {
        // It stays: to look into a folder takes memory, and there may be none at all.
    }
}

void OutputFolder::commit() {
    giveName(temporary_, path_, false);
    temporary_.clear();
}

}  // namespace companion
