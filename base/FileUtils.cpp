// A listing goes down into folders without recursion: the open ones are a path of levels, each with
// the names that are left of it. All names of a folder are read before the first is used, so that
// they can be sorted and no more than one folder is open at a time.

#include "base/FileUtils.h"

#include <dirent.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "base/Exception.h"

namespace vek {

namespace {

std::string_view viewOf(const char* text) {
    return text == nullptr ? std::string_view() : std::string_view(text);
}

/// Throws std::length_error for more than a String holds. Requires: a text that is not null.
String toString(std::string_view text) {
    return String(text.data(), text.size() > INT_MAX ? -1 : static_cast<int>(text.size()));
}

/// One directory that is being listed: its remaining names, and who it is, since a symbolic link
/// can lead back to it.
struct Level {
    String path;  // null for the current directory
    std::vector<std::string> names;
    std::size_t next = 0;
    dev_t device = 0;
    ino_t inode = 0;
};

/// Fills `level` with the sorted names of its directory that match; false if it cannot be read.
bool readLevel(Level& level, const char* pattern) {
    const auto close = [](DIR* open) { closedir(open); };
    errno = 0;
    const std::unique_ptr<DIR, decltype(close)> directory(
        opendir(level.path.isNull() ? "." : level.path.c_str()), close);
    struct stat status;
    if (!directory || fstat(dirfd(directory.get()), &status) != 0) {
        return false;
    }
    level.device = status.st_dev;
    level.inode = status.st_ino;
    const dirent* entry;
    // Only errno tells the end of the names from a failure to read them.
    while (errno = 0, (entry = readdir(directory.get())) != nullptr) {
        if (pattern == nullptr || String(entry->d_name).match(pattern)) {
            level.names.emplace_back(entry->d_name);
        }
    }
    const bool isWhole = errno == 0;
    std::sort(level.names.begin(), level.names.end());
    return isWhole;
}

bool isOnPath(const std::vector<Level>& path, const struct stat& status) {
    return std::any_of(path.begin(), path.end(), [&](const Level& level) {
        return level.device == status.st_dev && level.inode == status.st_ino;
    });
}

/// Lists one name of the last level: a file goes to `result`, a directory to enter becomes a new
/// last level.
void listEntry(const std::string& name, const char* pattern, bool recursive,
               std::vector<Level>& path, ObjAppendListP<String>& result) {
    const String& dir = path.back().path;
    auto file = std::make_unique<String>(
        FileUtils::pathName(name.c_str(), dir.isNull() ? nullptr : dir.c_str()));
    struct stat status;
    if (stat(file->c_str(), &status) != 0) {
        // Gone since the names were read, or a link that leads nowhere.
        return;
    }
    if (!S_ISDIR(status.st_mode)) {
        result.append(std::move(file));
    } else if (recursive && name != "." && name != ".." && !isOnPath(path, status)) {
        Level level;
        level.path = std::move(*file);
        if (readLevel(level, pattern)) {
            path.push_back(std::move(level));
        }
    }
}

}  // namespace

String FileUtils::baseName(const char* path, bool stripTrailingSlash) {
    std::string_view text = viewOf(path);
    if (stripTrailingSlash && text.size() > 1 && text.back() == '/') {
        text.remove_suffix(1);
    } else if (stripTrailingSlash && text == "/") {
        return toString(text);
    }
    const std::size_t slash = text.rfind('/');
    if (slash != std::string_view::npos) {
        text.remove_prefix(slash + 1);
    }
    // An empty view may have no data, of which a null string would be made.
    return text.empty() ? String("") : toString(text);
}

String FileUtils::dirName(const char* path, bool stripTrailingSlash) {
    std::string_view text = viewOf(path);
    if (stripTrailingSlash && !text.empty() && text.back() == '/') {
        text.remove_suffix(1);
    }
    const std::size_t slash = text.rfind('/');
    if (slash == std::string_view::npos || slash == 0) {
        return String("/");
    }
    return toString(text.substr(0, slash));
}

String FileUtils::pathName(const char* file, const char* dir) {
    String path(dir == nullptr ? "" : dir);
    if (path.length() > 0 && path[path.length() - 1] != '/') {
        path += '/';
    }
    path += file;
    return path;
}

String FileUtils::pathNameCheck(const char* file, const char* dir) {
    if (viewOf(file).empty()) {
        throw StdError("invalid blank filename", ENOENT);
    }
    String path = pathName(file, dir);
    if (!checkFile(path.c_str())) {
        throw StdError(path.quote('"').c_str(), ENOENT);
    }
    return path;
}

bool FileUtils::makePath(const char* path, unsigned int mode) {
    if (path == nullptr) {
        return false;
    }
    // Every part up to a "/", then the whole: the parents come first.
    const std::string_view text(path);
    std::size_t end = 0;
    while (end < text.size()) {
        end = std::min(text.find('/', end + 1), text.size());
        const std::string part(text.substr(0, end));
        if (part != "." && part != "/" && mkdir(part.c_str(), mode) != 0 && errno != EEXIST) {
            return false;
        }
    }
    return true;
}

bool FileUtils::checkFile(const char* path) {
    struct stat status;
    return stat(path == nullptr ? "" : path, &status) == 0 &&
           (S_ISREG(status.st_mode) || S_ISFIFO(status.st_mode));
}

bool FileUtils::checkDirectory(const char* path) {
    struct stat status;
    return stat(path == nullptr ? "" : path, &status) == 0 && S_ISDIR(status.st_mode);
}

int FileUtils::listFiles(const char* dir, const char* pattern, bool recursive,
                         ObjAppendListP<String>& result) {
    std::vector<Level> path(1);
    path.back().path = dir;
    if (!readLevel(path.back(), pattern)) {
        return 0;
    }
    while (!path.empty()) {
        Level& level = path.back();
        if (level.next == level.names.size()) {
            path.pop_back();
        } else {
            const std::string name = std::move(level.names[level.next++]);
            listEntry(name, pattern, recursive, path, result);
        }
    }
    return static_cast<int>(result.count());
}

}  // namespace vek
