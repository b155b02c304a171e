#pragma once

#include <string>
#include <string_view>

#include "markup/FilePos.h"

/// A file that is written or, under DocFlagAppendFile, appended to; whole or piece by piece.
class FileWriting : public FilePos {
  public:
    /// Takes the document flags that the file is written under.
    explicit FileWriting(int flags) : FilePos((flags & ~DocFlagReadFile) | DocFlagWriteFile) {}

    /// Opens `path`. The first byte-order mark of the table whose flag is set chooses the encoding,
    /// the other marks' flags are cleared, and an empty file is begun with the mark.
    bool FileOpen(TextArg path);

    /// Takes the encoding that `text` declares, else "UTF-8", unless the file has one or the text
    /// is empty.
    void chooseEncoding(std::string_view text);

    /// Writes the first `length` bytes of a UTF-8 text, all for a negative length, in the encoding
    /// of the file; unconverted when there is no converter for it. False when one can't be opened
    /// now or the conversion fails.
    bool FileWriteText(std::string_view text, int length = -1);

    /// Writes `opTextLength` units of whichever buffer is given, the other being null, swapped for
    /// a UTF-16BE file. A writable buffer may be swapped in place.
    bool FileWrite(void* buffer, const void* constBuffer);

    /// Writes the first `length` bytes of a growing buffer, all for a negative length, and removes
    /// them from it; then hands them to the system if `flush` is set. The first text written
    /// chooses the encoding where no mark has: the one it declares, else "UTF-8".
    bool FileFlush(std::string& buffer, int length = -1, bool flush = false);

  private:
    bool begin(bool isAppending);
    bool writeConverted(std::string_view text);
    bool writeBytes(const void* bytes);
};
