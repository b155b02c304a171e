#pragma once

#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>

#include "markup/DocFlags.h"
#include "markup/text/TextArg.h"

/// One file while it is being read (`FileReading`) or written (`FileWriting`): its encoding, how
/// far it has come, and a result log of its own in the form of the document's. Lives for one load
/// or save; closes its file when destroyed.
///
/// Every failing call adds a "file_error" with the system's text and number and returns false.
class FilePos {
  public:
    FilePos(const FilePos&) = delete;
    FilePos& operator=(const FilePos&) = delete;

    /// Adds a "file_error" for the last failed call, 5 (I/O error) when the system left no number.
    /// Always false.
    bool FileErrorAddResult();
    /// The same for error number `number`.
    bool FileErrorAddResult(int number);

    /// The number of the first "file_error" that this object has added, 0 for none.
    int fileError() const { return fileError_; }

    /// Closes the file; false when none was open, and with a "file_error" when closing fails. The
    /// flags of the open state are cleared.
    bool FileClose();

    /// True when the file holds UTF-16.
    bool isUtf16() const { return (docFlags & (DocFlagUtf16LeFile | DocFlagUtf16BeFile)) != 0; }
    /// Bytes from the read position to the end of the file.
    std::int64_t remaining() const { return fileByteLength - fileByteOffset; }

    int docFlags;          ///< `DocFlag` bits
    int opByteLength = 0;  ///< bytes that the next read must read
    std::int64_t fileByteLength = 0;
    std::int64_t fileByteOffset = 0;  ///< of the next byte to read; starts behind the mark
    int charUnitSize = 1;             ///< bytes per unit: 2 for UTF-16 with a mark
    int opTextLength = 0;             ///< units delivered by the last read, without the zero ones
    std::string ioResult;             ///< result log of this file
    std::string encoding;             ///< in force for the file

  protected:
    explicit FilePos(int flags) : docFlags(flags) {}
    ~FilePos() = default;

    /// Opens `path` in a mode of fopen and forgets what was known of another file.
    bool openAs(TextArg path, const char* mode);
    /// Adds a "file_error" for the last failed call and closes the file. Always false.
    bool giveUp();
    /// Finds the length of the file; where the next byte is read or written is its end then. False,
    /// with errno telling why, when it has none.
    bool measure();
    /// Moves to where the next byte is read or written; errno tells why it failed.
    bool seekTo(std::int64_t offset, int whence);
    std::FILE* file() const { return file_.get(); }

  private:
    struct Closer {
        void operator()(std::FILE* file) const { std::fclose(file); }
    };

    std::unique_ptr<std::FILE, Closer> file_;
    int fileError_ = 0;
};

/// The flag bit 128 (UTF-16BE) of `flags` as 0 or 1: whether UTF-16 text of such a file has to be
/// swapped to be in host order.
int x_EndianSwapRequired(int flags);

/// Swaps the two bytes of each of `length` units in place.
void x_EndianSwapUTF16(unsigned short* units, int length);
