#pragma once

#include <string>
#include <string_view>

namespace eqrecode {

/// A file that is in memory only, for what wants a path.
class MemoryFile {
  public:
    /// Throws std::system_error.
    explicit MemoryFile(std::string_view content = {});
    MemoryFile(const MemoryFile&) = delete;
    MemoryFile& operator=(const MemoryFile&) = delete;
    ~MemoryFile();

    /// Where this process finds it while the object is there.
    std::string path() const;

    /// What it holds now. Throws std::system_error.
    std::string content() const;

  private:
    int descriptor_;
};

}  // namespace eqrecode
