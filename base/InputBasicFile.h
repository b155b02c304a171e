#pragma once

#include <cstdint>
#include <cstdio>
#include <memory>

#include "base/InputStream.h"

namespace vek {

/// A file read through stdio: a regular file, a named pipe or standard input. Pipes and standard
/// input can seek forward only; what is passed over is read and dropped.
class InputBasicFile : public InputStream {
  public:
    /// Opens `name`, checked to be a regular file or a pipe, or standard input when it is null.
    /// Throws StdError: 2 for a name that is none of these, else the system's error number.
    ///
    /// Standard input is taken over: closing this stream closes descriptor 0, and a second one
    /// can't be opened.
    InputBasicFile(const char* name, ByteOrder order);

    /// Opens the file of that name (again, from the start). Throws as the constructor does.
    void open();

    InputStream& seek(long offset, std::ios::seekdir dir = std::ios::beg) override;
    long offset() override;
    /// Does nothing: this class has no lines.
    InputStream& getline(char* buffer, unsigned long size, char delimiter = '\n') override;
    /// Holds until the next seek.
    bool eof() override;
    bool fail() override;
    int peek() override;
    long size() override;
    using InputStream::size;
    /// Returns the offset after the read.
    unsigned long bufread(char* buffer, unsigned long count, unsigned long reserved = 0) override;

  private:
    struct Closer {
        void operator()(std::FILE* file) const { std::fclose(file); }
    };

    void seekFifo(long offset, std::ios::seekdir dir);
    std::size_t read(char* buffer, std::size_t count);

    std::unique_ptr<std::FILE, Closer> file_;
    std::int64_t offset_ = 0;
};

}  // namespace vek
