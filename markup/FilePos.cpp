// Calls of the C library leave their reason in errno, some of them none at all. It is cleared
// before each call, so that no older reason is told for a failure that left none.

#include "markup/FilePos.h"

#include <cerrno>
#include <cstring>
#include <string_view>

#include "markup/ResultLog.h"

bool FilePos::FileErrorAddResult() {
    return FileErrorAddResult(errno == 0 ? EIO : errno);
}

bool FilePos::FileErrorAddResult(int number) {
    constexpr std::size_t maxErrorText = 100;
    // The log may be full and hold no more: the number is kept beside it.
    fileError_ = fileError_ == 0 ? number : fileError_;
    std::string_view text = std::strerror(number);
    text = text.substr(0, maxErrorText);
    text = text.substr(0, text.find_first_of("\r\n"));
    x_AddResult(ioResult, ResultFileError, text, RESULT_MSG | RESULT_NUMBER, number);
    return false;
}

bool FilePos::FileClose() {
    if (!file_) {
        return false;
    }
    errno = 0;
    // What was written may fail to reach the file only now.
    const bool closed = std::fclose(file_.release()) == 0;
    docFlags &= ~(DocFlagReadFile | DocFlagWriteFile | DocFlagAppendFile);
    return closed || FileErrorAddResult();
}

bool FilePos::openAs(TextArg path, const char* mode) {
    ioResult.clear();
    charUnitSize = 1;
    fileByteLength = 0;
    fileByteOffset = 0;
    encoding.clear();
    if (path.view().find('\0') != std::string_view::npos) {
        // No file has such a name; cut off it would be another's.
        return FileErrorAddResult(ENOENT);
    }
    errno = 0;
    file_.reset(std::fopen(std::string(path.view()).c_str(), mode));
    return file_ || FileErrorAddResult();
}

bool FilePos::giveUp() {
    FileErrorAddResult();
    file_.reset();
    return false;
}

bool FilePos::measure() {
    fileByteLength = seekTo(0, SEEK_END) ? ftello(file()) : -1;
    return fileByteLength >= 0;
}

bool FilePos::seekTo(std::int64_t offset, int whence) {
    errno = 0;
    return fseeko(file(), offset, whence) == 0;
}

int x_EndianSwapRequired(int flags) {
    return (flags & DocFlagUtf16BeFile) != 0 ? 1 : 0;
}

void x_EndianSwapUTF16(unsigned short* units, int length) {
    while (length-- > 0) {
        const unsigned unit = units[length];
        units[length] = static_cast<unsigned short>(unit << 8 | unit >> 8);
    }
}
