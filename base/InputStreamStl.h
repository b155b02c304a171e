#pragma once

#include <cstdint>
#include <fstream>
#include <istream>
#include <sstream>
#include <string_view>

#include "base/InputStream.h"

namespace vek {

/// Adapter over a standard input stream.
class InputStreamStl : public InputStream {
  public:
    /// `stream` is not owned and must outlive the adapter.
    InputStreamStl(std::istream* stream, const char* name, ByteOrder order);

    /// Clears the state of the stream first, so that a read past the end can be taken back.
    InputStream& seek(long offset, std::ios::seekdir dir = std::ios::beg) override;
    /// The stream's own position or, where it can't tell (a pipe), the bytes read through the
    /// adapter. Leaves the state of the stream as it was.
    long offset() override;
    InputStream& getline(char* buffer, unsigned long size, char delimiter = '\n') override;
    bool eof() override;
    bool fail() override;
    int peek() override;
    /// Throws StdError 38: a standard stream can't tell its size.
    long size() override;
    using InputStream::size;
    /// Returns `count`, whatever was read.
    unsigned long bufread(char* buffer, unsigned long count, unsigned long reserved = 0) override;

  private:
    std::istream* stream_;
    long consumed_ = 0;  ///< bytes read so far; where the stream can seek it means nothing
};

/// A file read through a standard file stream.
class InputFStream : public InputStreamStl {
  public:
    /// Opens the file. Throws StdError with the system's error number.
    InputFStream(const char* name, ByteOrder order);

    long size() override;
    using InputStream::size;

  private:
    std::ifstream file_;
};

/// A text in memory.
class InputSStream : public InputStreamStl {
  public:
    /// Copies `text`.
    InputSStream(const char* name, ByteOrder order, std::string_view text);

    /// Length of the text.
    long size() override;
    using InputStream::size;

  private:
    std::istringstream text_;
    std::int64_t length_;
};

}  // namespace vek
