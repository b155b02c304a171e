#pragma once

#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <string_view>

#include "markup/text/TextArg.h"
#include "markup/text/TextBuffer.h"

/// One file while it is being read or written: its encoding, how far it has come, and a result log
/// of its own in the form of the document's. Lives for one load or save; closes its file when
/// destroyed.
///
/// Every failing call adds a "file_error" with the system's text and number and returns false.
class FilePos {
  public:
    /// Takes the document flags (`DocFlag`) that the file is opened under.
    explicit FilePos(int flags) : docFlags(flags) {}

    /// Opens `path`; the flags say how.
    ///
    /// For reading it measures the file and finds its encoding: that of its byte-order mark, else
    /// the one declared in its first 1024 bytes, else "UTF-8" when it begins with "<"; it sets the
    /// flag of the mark. A file that can't be measured (a pipe) is refused.
    ///
    /// For writing (DocFlagWriteFile) or appending (DocFlagAppendFile) the first mark of the table
    /// whose flag is set chooses the encoding, the other marks' flags are cleared, and an empty
    /// file is begun with the mark.
    bool FileOpen(TextArg path);

    /// Reads `opByteLength` bytes as text into `text`, in UTF-8 unless there is no converter for
    /// the encoding.
    bool FileReadText(TextBuffer& text);
    bool FileReadText(std::string& text);

    /// Reads `opByteLength` bytes into `buffer`, removes zero units and brings UTF-16 into host
    /// byte order. After a short read the rest of the buffer is zero and `opTextLength` counts what
    /// came.
    bool FileRead(void* buffer);

    /// Takes an incomplete character at the end of the text just read off again and seeks back to
    /// its start. Always true.
    bool FileCheckRaggedEnd(void* buffer);

    /// Writes the first `length` bytes of a UTF-8 text, all for a negative length, in the encoding
    /// of the file; unconverted when there is no converter for it.
    bool FileWriteText(std::string_view text, int length = -1);

    /// Writes `opTextLength` units of whichever buffer is given, the other being null, swapped for
    /// a UTF-16BE file. A writable buffer may be swapped in place.
    bool FileWrite(void* buffer, const void* constBuffer);

    /// Writes the first `length` bytes of a growing buffer, all for a negative length, and removes
    /// them from it; then hands them to the system if `flush` is set. The first text written
    /// chooses the encoding where no mark has: the one it declares, else "UTF-8".
    bool FileFlush(std::string& buffer, int length = -1, bool flush = false);

    /// Takes the encoding that `text` declares, else "UTF-8", unless the file has one or the text
    /// is empty.
    void chooseEncoding(std::string_view text);

    /// Adds a "file_error" for the last failed call, 5 (I/O error) when the system left no number.
    /// Always false.
    bool FileErrorAddResult();
    /// The same for error number `number`.
    bool FileErrorAddResult(int number);

    /// Closes the file; false when none was open, and with a "file_error" when closing fails. The
    /// flags of the open state are cleared.
    bool FileClose();

    /// True when the file is to be read as UTF-16.
    bool isUtf16() const;
    /// Bytes from the read position to the end of the file.
    std::int64_t remaining() const { return fileByteLength - fileByteOffset; }

    int docFlags;
    int opByteLength = 0;        ///< bytes that the next read must read
    int blockSizeBasis = 16384;  ///< for reading block by block
    std::int64_t fileByteLength = 0;
    std::int64_t fileByteOffset = 0;  ///< of the next byte to read; starts behind the mark
    int charUnitSize = 1;             ///< bytes per unit: 2 for UTF-16 with a mark
    int opTextLength = 0;             ///< units delivered by the last read, without the zero ones
    std::string ioResult;             ///< result log of this file
    std::string encoding;             ///< in force for the file

  private:
    struct Closer {
        void operator()(std::FILE* file) const { std::fclose(file); }
    };

    bool beginWriting(bool isAppending);
    bool writeUtf16(const char* text, int length);
    bool writeConverted(const char* text, int length);
    bool writeBytes(const void* bytes);
    bool countRead(void* buffer, std::size_t got);
    void closeUpNulls(void* buffer);
    bool measure();
    bool findEncoding();
    bool seekTo(std::int64_t offset, int whence);
    bool readUtf16(TextBuffer& text, bool mayBeRagged);
    bool readConverted(TextBuffer& text, bool mayBeRagged);
    bool readUnconverted(TextBuffer& text, bool assumedUtf8, bool mayBeRagged);
    bool detectEncoding(const TextBuffer& text, bool mayBeRagged);
    bool readUtf8(TextBuffer& text);
    bool finishUtf8(TextBuffer& text, std::size_t got, std::size_t plain);
    bool convertToUtf8(TextBuffer& text, TextArg from, Pages& source, int units);

    std::unique_ptr<std::FILE, Closer> file_;
};

/// The flag bit 128 (UTF-16BE) of `flags` as 0 or 1: whether UTF-16 text of such a file has to be
/// swapped to be in host order.
int x_EndianSwapRequired(int flags);

/// Swaps the two bytes of each of `length` units in place.
void x_EndianSwapUTF16(unsigned short* units, int length);
