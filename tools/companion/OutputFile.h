#pragma once

#include <array>
#include <ostream>
#include <streambuf>
#include <string>
#include <string_view>

namespace companion {

/// Writes to a descriptor, and throws std::system_error when that takes no more. A full pipe that
/// doesn't block is waited for.
class DescriptorBuffer : public std::streambuf {
  public:
    /// Neither is owned. `failure` is what exceptions say before the system's text.
    DescriptorBuffer(int descriptor, std::string_view failure);

  protected:
    int_type overflow(int_type c) override;
    int sync() override;

  private:
    int descriptor_;
    std::string_view failure_;
    std::array<char, std::size_t{1} << 16> buffer_;
};

/// Where the result of a program goes: standard output, or a file that is there whole or not at
/// all. A file is written under another name in its folder, and gets its own at the end. One that
/// it replaces hands on its permissions; a link stays one, and what it leads to is replaced, or
/// refused where it leads nowhere.
class OutputFile {
  public:
    /// Opens the output: "-" is standard output. A file that is there is refused unless
    /// `overwrites`; a device or a named pipe is written to as it is, as there is nothing to lose.
    /// Throws std::runtime_error with a message that names the file.
    OutputFile(std::string path, bool overwrites);
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;
    /// Removes what was not committed.
    ~OutputFile();

    /// Throws std::system_error, out of whatever writes to it, when nothing more can be written.
    std::ostream& stream() { return stream_; }
    /// Whether somebody looks at it.
    bool isTerminal() const;

    /// The descriptor of the new file, for those who write to it by other means than the stream; -1
    /// when the output is another thing.
    int newFile() const { return temporary_.empty() ? -1 : descriptor_; }

    /// Writes what is left, closes, and gives the file its name. Throws std::system_error.
    void commit();

  private:
    /// Opens a new file beside `path_` and keeps its name; returns its descriptor.
    int openTemporary();
    /// Decides what is opened, and opens it; returns the descriptor.
    int open();
    void close();

    std::string path_;
    std::string failure_;  ///< what is said when it can't be written: the path as it was given
    bool overwrites_;
    std::string temporary_;  ///< "" when nothing has to be renamed
    int descriptor_;
    DescriptorBuffer buffer_;
    std::ostream stream_;
};

}  // namespace companion
