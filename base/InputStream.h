#pragma once

#include <bit>
#include <cstdint>
#include <ios>

#include "base/String.h"

namespace vek {

/// A read-only source of bytes that hides where they come from: a file, a pipe, a text in memory, a
/// read buffer or a chain of files. Made by the input server (InputServer::getFile) or directly.
/// Offsets and sizes are in bytes. Failures to open or to seek throw StdError; failing reads do not
/// throw, eof() and fail() tell.
class InputStream {
  public:
    /// Byte order of the data.
    enum ByteOrder : std::int32_t {
        BYTE_ORDER_BIG = 0,     ///< most significant byte first
        BYTE_ORDER_LITTLE = 1,  ///< least significant byte first
        BYTE_ORDER_NATIVE = -1  ///< the machine's own; for constructors only
    };

    /// The machine's byte order.
    static constexpr ByteOrder hw_byte_order() {
        return std::endian::native == std::endian::big ? BYTE_ORDER_BIG : BYTE_ORDER_LITTLE;
    }
    static const ByteOrder HW_BYTE_ORDER;

    InputStream(const InputStream&) = delete;
    InputStream& operator=(const InputStream&) = delete;
    virtual ~InputStream();

    /// The name of the file, or a descriptive one; "(stdin)" for standard input. Chains of files
    /// name the one that holds `offset` (negative: the current one).
    virtual const String& name(long offset = -1);
    /// Moves the read position. Throws StdError 29 for a way back that a pipe does not have.
    virtual InputStream& seek(long offset, std::ios::seekdir dir = std::ios::beg) = 0;
    /// The read position.
    virtual long offset() = 0;
    /// Reads up to `delimiter`, which is consumed but not stored, or `size` - 1 bytes, and ends the
    /// text in `buffer` with a NUL. Classes without lines leave the buffer as it is.
    virtual InputStream& getline(char* buffer, unsigned long size, char delimiter = '\n') = 0;
    /// Whether the source cannot seek backwards: a pipe or standard input.
    virtual bool isFifo();
    /// Whether the last operation met the end of the data.
    virtual bool eof() = 0;
    /// Whether the last operation failed.
    virtual bool fail() = 0;
    /// The next byte, 0 to 255, which stays unread; -1 at the end.
    virtual int peek() = 0;
    /// Size of the source; 0 for a pipe.
    virtual long size() = 0;
    /// Size of the file that holds `offset`.
    virtual long size(long offset);
    /// Reads up to `count` bytes into `buffer`. What is returned differs from class to class and is
    /// of no use to callers: take the change of offset(). `reserved` serves the classes that read
    /// in several steps.
    virtual unsigned long bufread(char* buffer, unsigned long count,
                                  unsigned long reserved = 0) = 0;

    /// Whether a read so far brought less because the source failed, not because it ended. Unlike
    /// fail() it stays, and it passes through windows and chains.
    bool readFailed() const { return readFailed_; }

    /// The byte order of the data, never BYTE_ORDER_NATIVE.
    ByteOrder byteOrder() const { return order_; }

    /// Reads a number of `fileSize` bytes into a field of `memorySize` bytes, in the machine's byte
    /// order.
    ///
    /// A narrower number fills the low end of the field; with `isSigned` a negative one is extended
    /// to the whole field, else the padding stays as the caller set it. Of a wider number the low
    /// end is kept: in big-endian data the excess is skipped, in little-endian data it stays unread
    /// (required). Bytes of the field for which none could be read stay as they were; without any
    /// the whole field does.
    InputStream& read_swap(char* field, unsigned short memorySize, unsigned short fileSize,
                           bool isSigned);

  protected:
    /// Keeps a copy of `name` (null: "") and the order, BYTE_ORDER_NATIVE becoming the machine's.
    InputStream(const char* name, ByteOrder order);

    /// Whether seek() knows `dir`: any other is ignored.
    static bool isDirection(std::ios::seekdir dir) {
        return dir == std::ios::beg || dir == std::ios::cur || dir == std::ios::end;
    }

    ByteOrder order_;
    String name_;
    bool isFifo_ = false;
    bool readFailed_ = false;

  private:
    unsigned long readBytes(char* field, unsigned long count);
};

/// What is thrown for a file that can't be opened: "file "NAME" open failed" with `errorNumber`.
/// Sets errno to 0, as every failed opening does.
[[noreturn]] void throwOpenFailed(const String& name, int errorNumber);

/// The name of standard input.
inline constexpr const char* stdinName = "(stdin)";

/// Whether the source of that name can't seek backwards: a named pipe, or whatever is named as
/// standard input is.
bool isForwardOnly(const String& name);

/// The size that the system tells for the file `name`; 0 when it tells none.
long fileSizeOf(const char* name);

}  // namespace vek
