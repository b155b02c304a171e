#pragma once

#include <string_view>

#include "markup/FilePos.h"
#include "markup/text/TextBuffer.h"

/// A file that is read. It is measured when it is opened, so that its text can be read in one piece
/// into memory of its size; reading it in blocks, each of whole characters, is possible too.
class FileReading : public FilePos {
  public:
    /// Takes the document flags that the file is read under.
    explicit FileReading(int flags)
        : FilePos((flags & ~(DocFlagWriteFile | DocFlagAppendFile)) | DocFlagReadFile) {}

    /// Opens `path`, measures it and finds its encoding: that of its byte-order mark, else the one
    /// declared in its first 1024 bytes, else "UTF-8" when it begins with "<"; sets the flag of the
    /// mark. A file that can't be measured (a pipe) is refused.
    bool FileOpen(TextArg path);

    /// Reads `opByteLength` bytes as text into `text`, in UTF-8 unless there is no converter for
    /// the encoding. False, with no text, when one can't be opened now or the conversion fails.
    bool FileReadText(TextBuffer& text);

    /// Reads `opByteLength` bytes into `buffer`, removes zero units and brings UTF-16 into host
    /// byte order. After a short read the rest of the buffer is zero and `opTextLength` counts what
    /// came.
    bool FileRead(void* buffer);

    /// Takes an incomplete character at the end of the text just read off again and seeks back to
    /// its start. Always true.
    bool FileCheckRaggedEnd(void* buffer);

  private:
    bool findEncoding();
    void closeUpNulls(void* buffer);
    std::string_view byteEncoding() const;
    bool convertToUtf8(TextBuffer& text);
};
