#pragma once

#include "base/ObjAppendList.h"
#include "base/String.h"

namespace vek {

/// Operations on file names and directories. A null path is taken as "" unless stated.
class FileUtils {
  public:
    FileUtils() = delete;

    /// The part of `path` after its last "/", the whole path without one. With
    /// `stripTrailingSlash` one "/" at the end is dropped first, but "/" itself stays "/".
    static String baseName(const char* path, bool stripTrailingSlash);
    /// The part of `path` before its last "/", or before the one in front of a "/" at the end
    /// with `stripTrailingSlash`. "/" when that leaves nothing, and, on purpose, for a bare file
    /// name.
    static String dirName(const char* path, bool stripTrailingSlash);
    /// `dir`, "/" unless dir is empty or ends in one, and `file`.
    static String pathName(const char* file, const char* dir);
    /// pathName, checked to name a regular file or FIFO. Throws StdError 2 (ENOENT) with the
    /// message "invalid blank filename" for an empty file, else with the quoted path.
    static String pathNameCheck(const char* file, const char* dir);
    /// Creates the directory `path` and its missing parents with permission bits `mode`. True
    /// when all exist afterwards (as files of any kind) and for "", "." and "/"; false for null.
    static bool makePath(const char* path, unsigned int mode);
    /// Whether `path` names a regular file or a FIFO.
    static bool checkFile(const char* path);
    /// Whether `path` names a directory.
    static bool checkDirectory(const char* path);
    /// Appends the files of `dir` (null: the current directory) whose names match the shell
    /// pattern (null: all) to `result`, which takes ownership, as pathName(name, dir), sorted by
    /// bytes. With `recursive`, matching subdirectories are listed in their place; one that is
    /// already being listed (through a symbolic link) is not entered again. Returns the number
    /// of elements that `result` then has; 0, leaving it, when `dir` cannot be read.
    static int listFiles(const char* dir, const char* pattern, bool recursive,
                         ObjAppendListP<String>& result);
};

}  // namespace vek
