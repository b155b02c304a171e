#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <string>
#include <string_view>

#include "tests/Require.h"

/// A file in memory that can be opened by name like any other.
class MemoryFile {
  public:
    /// The path depends on the number of the descriptor, which can be chosen.
    explicit MemoryFile(int number = -1) : descriptor_(make(number)) {}
    MemoryFile(const MemoryFile&) = delete;
    MemoryFile& operator=(const MemoryFile&) = delete;
    ~MemoryFile() { close(descriptor_); }

    /// Makes `data` the whole content; the descriptor stands at the start.
    void put(std::string_view data) {
        require(ftruncate(descriptor_, 0) == 0 && lseek(descriptor_, 0, SEEK_SET) == 0 &&
                    pwrite(descriptor_, data.data(), data.size(), 0) ==
                        static_cast<ssize_t>(data.size()),
                "the file takes its content");
    }
    /// The whole content.
    std::string bytes() const {
        std::string data(static_cast<std::size_t>(lseek(descriptor_, 0, SEEK_END)), '\0');
        require(
            pread(descriptor_, data.data(), data.size(), 0) == static_cast<ssize_t>(data.size()),
            "the file gives its content");
        return data;
    }
    int descriptor() const { return descriptor_; }
    const std::string& path() const { return path_; }

  private:
    static int make(int number) {
        const int made = memfd_create("fuzz", 0);
        require(made >= 0 && (number < 0 || dup2(made, number) == number), "a file can be made");
        static_cast<void>(number >= 0 && close(made));
        return number < 0 ? made : number;
    }

    const int descriptor_;
    const std::string path_ = "/proc/self/fd/" + std::to_string(descriptor_);
};
