#pragma once

#include <memory>

#include "base/InputStream.h"

namespace vek {

/// A stream read through a window in memory, so that small reads, peek, getline and short ways back
/// are cheap, even on pipes; or a whole file or text held in memory.
///
/// The window holds up to `capacity` bytes of the source. When reading goes on behind it, it
/// slides: the last `keep-back` bytes before the read position stay, so that a reader of a pipe may
/// go back that far. On other sources a way back out of the window seeks the source.
class InputBStream : public InputStream {
  public:
    /// A stream without data; initFile or initBuf gives it some. A null name means standard input.
    InputBStream(const char* name, ByteOrder order);
    ~InputBStream() override;

    /// Holds a copy of `text` up to its NUL, whatever `length`; for a null text `length` zero
    /// bytes. Returns the number of bytes held and 1 more. Throws StdError 12 when there is no
    /// memory.
    unsigned long initBuf(const char* text, unsigned long length);

    /// Opens the source: the file or pipe of that name, standard input without one, or the chain of
    /// files that the name matches as a pattern. The window has `bufferSize` bytes; 0 means as many
    /// as the file has, or 2048 where that is not known. `wholeFile` changes nothing. Throws
    /// StdError as the source does, and 12 when there is no memory for the window.
    void initFile(unsigned long bufferSize, bool wholeFile);

    /// The source's name of it. Without an offset that is the member up to which the source has
    /// been read, which may lie behind the position.
    const String& name(long offset = -1) override;
    /// Only moves the position: a negative one and a seek from the end are ignored.
    InputStream& seek(long offset, std::ios::seekdir dir = std::ios::beg) override;
    long offset() override;
    InputStream& getline(char* buffer, unsigned long size, char delimiter = '\n') override;
    bool eof() override;
    /// True at the end of the data, too.
    bool fail() override;
    int peek() override;
    long size() override;
    long size(long offset) override;
    /// Returns the bytes delivered plus `reserved`. Throws StdError 29 when the position lies
    /// before the window of a pipe, and tells how large the window would have to be.
    unsigned long bufread(char* buffer, unsigned long count, unsigned long reserved = 0) override;

    /// Size of the window, and how many bytes of it stay behind the position when it slides.
    long capacity() const { return capacity_; }
    long keepBack() const { return keepBack_; }

  private:
    std::unique_ptr<InputStream> openSource();
    void chooseWindow(unsigned long bufferSize);
    long end() const { return start_ + valid_; }
    char* window() const { return storage_.get() + windowOffset_; }
    bool rewindSource();
    bool slide();
    void seekSource(long from);
    void fill(long moved);

    std::unique_ptr<char[]> storage_;  ///< for pipes larger than the window
    long storageSize_ = 0;
    long windowOffset_ = 0;  ///< in the storage
    bool eof_ = false;
    bool fail_ = false;
    long start_ = 0;     ///< stream offset of the window's first byte
    long position_ = 0;  ///< the read position, 0 or above
    long valid_ = 0;     ///< bytes in the window; fewer than its capacity: the source has ended
    long capacity_ = 0;
    long keepBack_ = 0;                    ///< below capacity_
    std::unique_ptr<InputStream> source_;  ///< null for a text in memory
};

}  // namespace vek
