#pragma once

#include <cstdint>
#include <string_view>

namespace record {

/// A new file in TMPDIR or /tmp that has no name and is gone with its descriptor: for what is too
/// large to be kept in memory. It is written first, and then read by a ByteSource.
class NamelessFile {
  public:
    /// Throws std::system_error when the file can't be made.
    NamelessFile();
    NamelessFile(const NamelessFile&) = delete;
    NamelessFile& operator=(const NamelessFile&) = delete;
    ~NamelessFile();

    /// Writes behind what is there. Throws std::system_error when that fails.
    void append(std::string_view bytes);
    std::uint64_t size() const { return size_; }
    /// Gives the descriptor away.
    int release();

  private:
    int descriptor_;
    std::uint64_t size_ = 0;
};

}  // namespace record
