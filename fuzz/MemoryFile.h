#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <string>
#include <string_view>

#include "fuzz/Check.h"

/// A file in memory that can be opened by name like any other.
class MemoryFile {
  public:
    MemoryFile() : descriptor_(memfd_create("fuzz", 0)), path_(pathOf(descriptor_)) {
        check(descriptor_ >= 0, "a file in memory can be made");
    }
    /// The same with a descriptor of this number, on which the path depends.
    explicit MemoryFile(int number) : MemoryFile() {
        check(dup2(descriptor_, number) == number, "the descriptor can be had");
        close(descriptor_);
        descriptor_ = number;
        path_ = pathOf(number);
    }
    MemoryFile(const MemoryFile&) = delete;
    MemoryFile& operator=(const MemoryFile&) = delete;
    ~MemoryFile() { close(descriptor_); }

    /// Makes `data` the whole content; the descriptor stands at the start.
    void put(std::string_view data) {
        const bool isDone =
            ftruncate(descriptor_, 0) == 0 && lseek(descriptor_, 0, SEEK_SET) == 0 &&
            pwrite(descriptor_, data.data(), data.size(), 0) == static_cast<ssize_t>(data.size());
        check(isDone, "the file takes its content");
    }

    /// The whole content.
    std::string bytes() const {
        const off_t size = lseek(descriptor_, 0, SEEK_END);
        std::string data(static_cast<std::size_t>(size), '\0');
        check(pread(descriptor_, data.data(), data.size(), 0) == size,
              "the file gives its content");
        return data;
    }

    int descriptor() const { return descriptor_; }
    const std::string& path() const { return path_; }

  private:
    static std::string pathOf(int descriptor) {
        return "/proc/self/fd/" + std::to_string(descriptor);
    }

    int descriptor_;
    std::string path_;
};
