// What every stream has in common, and what they ask the system about names. Numbers are read by
// bytes and turned to the machine's order only at the end, so that one piece of code serves both
// orders: the value lies at that end of the field at which the data have its lowest byte.

#include "base/InputStream.h"

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "base/Exception.h"

namespace vek {

constinit const InputStream::ByteOrder InputStream::HW_BYTE_ORDER = hw_byte_order();

InputStream::InputStream(const char* name, ByteOrder order)
    : order_(order == BYTE_ORDER_NATIVE ? HW_BYTE_ORDER : order),
      name_(name == nullptr ? "" : name) {}

InputStream::~InputStream() = default;

const String& InputStream::name(long) {
    return name_;
}

bool InputStream::isFifo() {
    return isFifo_;
}

long InputStream::size(long) {
    return size();
}

/// Reads into `field` and returns the number of bytes that came.
unsigned long InputStream::readBytes(char* field, unsigned long count) {
    const long before = offset();
    bufread(field, count, 0);
    const long after = offset();
    if (before < 0 || after < before) {
        return eof() || fail() ? 0 : count;  // a source that does not know where it is
    }
    return static_cast<unsigned long>(after - before);
}

InputStream& InputStream::read_swap(char* field, unsigned short memorySize, unsigned short fileSize,
                                    bool isSigned) {
    if (memorySize == 0 || fileSize == 0) {
        return *this;
    }
    const bool isBig = order_ == BYTE_ORDER_BIG;
    if (fileSize > memorySize && isBig) {
        seek(fileSize - memorySize, std::ios::cur);
    }
    // The field is filled in the file's order first, then turned round as a whole, padding and all.
    const unsigned long count = std::min(memorySize, fileSize);
    const unsigned long padding = memorySize - count;
    char* const value = isBig ? field + padding : field;
    const unsigned long got = readBytes(value, count);
    const unsigned long signByte = isBig ? 0 : count - 1;
    if (isSigned && got > signByte && (value[signByte] & 0x80) != 0) {
        std::memset(isBig ? field : field + count, 0xFF, padding);
    }
    if (order_ != HW_BYTE_ORDER && got > 0) {
        std::reverse(field, field + memorySize);
    }
    return *this;
}

void throwOpenFailed(const String& name, int errorNumber) {
    const String quoted = String(name).quote('"');
    errno = 0;
    throw StdError((String("file ") + quoted + " open failed").c_str(), errorNumber);
}

bool isForwardOnly(const String& name) {
    struct stat status;
    return name.cmp(stdinName) == 0 ||
           (::stat(name.c_str(), &status) == 0 && S_ISFIFO(status.st_mode));
}

long fileSizeOf(const char* name) {
    struct stat status;
    return ::stat(name, &status) == 0 ? static_cast<long>(status.st_size) : 0;
}

}  // namespace vek
