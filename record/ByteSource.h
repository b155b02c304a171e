#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "record/NamelessFile.h"

namespace record {

/// The bytes of a file, of which only those are read that are asked for. What is no file, such as a
/// pipe, is copied to a file without a name first, in TMPDIR or /tmp.
class ByteSource {
  public:
    /// The most that can be viewed at once.
    static constexpr std::size_t windowSize = 4096;

    /// Opens a file; "-" is standard input from where it stands. Throws std::system_error, whose
    /// text names the path.
    explicit ByteSource(std::string path);
    /// A source of bytes that are in memory.
    static ByteSource ofBytes(std::string_view bytes) { return ByteSource("", bytes); }
    /// A source of what was written to a file, whose descriptor it takes.
    static ByteSource ofFile(NamelessFile& file) { return ByteSource(file); }
    ByteSource(const ByteSource&) = delete;
    ByteSource& operator=(const ByteSource&) = delete;
    ~ByteSource();

    const std::string& path() const { return path_; }
    std::uint64_t size() const { return size_; }

    /// The bytes from `offset` on, which may lie behind the end: `length` of them, or all that are
    /// there. Requires: length <= windowSize. Valid until the next call.
    std::string_view view(std::uint64_t offset, std::size_t length);
    /// Copies `length` bytes from `offset` on to `target`. Throws std::runtime_error when they are
    /// not there.
    void read(std::uint64_t offset, char* target, std::size_t length);

  private:
    ByteSource(std::string path, std::string_view bytes);
    explicit ByteSource(NamelessFile& file);
    [[noreturn]] void fail() const;
    void open();
    /// Copies what the descriptor gives to a file, which takes its place.
    void spool();
    void take(NamelessFile& file);
    /// Reads until the length is there or the file ends; returns what is there.
    std::size_t readAt(std::uint64_t offset, char* target, std::size_t length) const;

    std::string path_;
    int descriptor_ = -1;
    std::uint64_t start_ = 0;  ///< where in the file the first byte is
    std::uint64_t size_ = 0;
    std::vector<char> window_;
    std::uint64_t windowOffset_ = 0;
    std::size_t windowLength_ = 0;
};

}  // namespace record
