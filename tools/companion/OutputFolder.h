#pragma once

#include <string>

namespace companion {

/// Where a program puts several files: a new folder, that is there whole or not at all. It is
/// filled under another name in the folder that it will stand in, and gets its own at the end.
class OutputFolder {
  public:
    /// Makes the folder. One that is there, or anything else of this name, is refused. Throws
    /// std::runtime_error with a message that names it.
    explicit OutputFolder(std::string path);
    OutputFolder(const OutputFolder&) = delete;
    OutputFolder& operator=(const OutputFolder&) = delete;
    /// Removes what was not committed, with all that is in it.
    ~OutputFolder();

    /// What the folder is called until it is committed.
    const std::string& temporary() const { return temporary_; }

    /// Gives the folder its name. Throws std::system_error.
    void commit();

  private:
    std::string path_;
    std::string temporary_;  ///< "" once it is committed
};

}  // namespace companion
