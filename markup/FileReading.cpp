// A text comes from its file by one plain read into memory of the right size and is then turned
// into UTF-8. The rules ask for a conversion even from UTF-8 to UTF-8, which makes "?" of what is
// not valid; since it gives valid text back unchanged, a sweep that proves a text valid stands in
// for it, and a document in UTF-8 is read without being copied.
//
// UTF-8 never lacks a converter, so that a text without mark and declaration, which is taken for
// UTF-8, need not be examined for what else it might be.

#include "markup/FileReading.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>

#include "markup/BomTable.h"
#include "markup/DeclaredEncoding.h"
#include "markup/ResultLog.h"
#include "markup/text/EncodingNameTable.h"
#include "markup/text/TextEncoding.h"
#include "markup/text/Utf8Sweep.h"

namespace {

/// The first zero unit of a text, `end` when there is none.
unsigned short* findNull(unsigned short* text, unsigned short* end) {
    return std::find(text, end, 0);
}

char* findNull(char* text, char* end) {
    void* const found = std::memchr(text, 0, static_cast<std::size_t>(end - text));
    return found == nullptr ? end : static_cast<char*>(found);
}

/// Closes up the zero units of a text, in order, and returns how many units are left.
template <class Unit>
int removeNulls(void* text, int length) {
    Unit* const begin = static_cast<Unit*>(text);
    Unit* const end = begin + length;
    return static_cast<int>(std::remove(findNull(begin, end), end, Unit{}) - begin);
}

/// Reads `size` bytes, going on where a signal has interrupted it; fewer at the end of the file or,
/// with errno set, when reading fails.
std::size_t readBytes(std::FILE* file, char* buffer, std::size_t size) {
    if (file == nullptr) {
        errno = EBADF;
        return 0;
    }
    errno = 0;
    std::size_t got = std::fread(buffer, 1, size, file);
    while (got < size && std::ferror(file) != 0 && errno == EINTR) {
        std::clearerr(file);
        errno = 0;
        got += std::fread(buffer + got, 1, size - got, file);
    }
    return got;
}

bool isUtf8(std::string_view encoding) {
    return x_GetEncodingCodePage(encoding) == CodePageUtf8;
}

/// Why there is no converter from this encoding, without asking where the system always has one.
int converterError(std::string_view encoding) {
    const bool isUsual = encoding == "UTF-8" || encoding == "utf-8";
    return isUsual ? 0 : TextEncoding::converterError("UTF-8", encoding);
}

}  // namespace

bool FileReading::FileOpen(TextArg path) {
    if (!openAs(path, "rb")) {
        return false;
    }
    // Two reads, both into memory of the right size: a buffer in between would only be filled.
    std::setvbuf(file(), nullptr, _IONBF, 0);
    return (measure() && (fileByteLength == 0 || findEncoding())) || giveUp();
}

/// Only what lies near the start of a file can say what it is in: read again with the rest, it
/// needs no place of its own.
bool FileReading::findEncoding() {
    std::array<char, 1024> probe;
    const auto length = static_cast<std::size_t>(
        std::min<std::int64_t>(fileByteLength, static_cast<std::int64_t>(probe.size())));
    if (!seekTo(0, SEEK_SET) || readBytes(file(), probe.data(), length) != length) {
        return false;
    }
    const std::string_view bytes(probe.data(), length);
    // Bit 128 stays as it came in, and with it a file after a UTF-16BE one in the same document is
    // read as UTF-16: this is required.
    docFlags &= ~(DocFlagUtf16LeFile | DocFlagUtf8Preamble);
    const auto* const bom = std::find_if(bomTable.begin(), bomTable.end(), [&](const Bom& row) {
        return bytes.starts_with(row.bytes);
    });
    if (bom != bomTable.end()) {
        docFlags |= bom->flag;
        charUnitSize = bom->unitSize();
        encoding = bom->encoding;
        fileByteOffset = static_cast<std::int64_t>(bom->bytes.size());
        x_AddResult(ioResult, ResultBom);
    } else {
        encoding = markup::declaredEncoding(bytes);
        if (encoding.empty() && bytes.front() == '<') {
            encoding = "UTF-8";
        }
    }
    return seekTo(fileByteOffset, SEEK_SET);
}

bool FileReading::FileReadText(TextBuffer& text) {
    ioResult.clear();
    text.truncate(0);
    if (opByteLength == 0) {
        x_AddResult(ioResult, ResultRead, encoding, RESULT_ENCODING | RESULT_LENGTH, 0);
        return true;
    }
    const bool mayBeRagged = opByteLength < remaining();
    if (!mayBeRagged) {
        opByteLength = static_cast<int>(remaining());
    }
    if (!isUtf16() && encoding.empty()) {
        encoding = "UTF-8";
    }
    const int error = isUtf16() ? 0 : converterError(encoding);
    if (error != 0 && error != EINVAL) {
        return FileErrorAddResult(error);  // there may be one, another time
    }
    const bool isRead = FileRead(text.reset(static_cast<std::size_t>(opByteLength)));
    if (mayBeRagged) {
        FileCheckRaggedEnd(text.data());
    }
    text.truncate(static_cast<std::size_t>(opTextLength) * static_cast<std::size_t>(charUnitSize));
    return (error != 0 || convertToUtf8(text)) && isRead;
}

bool FileReading::FileRead(void* buffer) {
    auto* const bytes = static_cast<char*>(buffer);
    const auto wanted = static_cast<std::size_t>(opByteLength);
    const std::size_t got = readBytes(file(), bytes, wanted);
    opTextLength = static_cast<int>(got) / charUnitSize;
    if (got < wanted) {
        FileErrorAddResult();
        std::memset(bytes + got, 0, wanted - got);
        return false;
    }
    fileByteOffset += opByteLength;
    x_AddResult(ioResult, ResultRead, encoding, RESULT_ENCODING | RESULT_LENGTH, opTextLength);
    closeUpNulls(buffer);
    if (charUnitSize == 2 && x_EndianSwapRequired(docFlags) != 0) {
        x_EndianSwapUTF16(static_cast<unsigned short*>(buffer), opTextLength);
        x_AddResult(ioResult, ResultEndianSwap);
    }
    return true;
}

/// Takes the zero units out, which no XML has: of UTF-16 without a mark the ASCII text is left.
void FileReading::closeUpNulls(void* buffer) {
    const int kept = charUnitSize == 2 ? removeNulls<unsigned short>(buffer, opTextLength)
                                       : removeNulls<char>(buffer, opTextLength);
    if (kept != opTextLength) {
        x_AddResult(ioResult, ResultNullsRemoved, nullptr, RESULT_COUNT, opTextLength - kept);
        opTextLength = kept;
    }
}

bool FileReading::FileCheckRaggedEnd(void* buffer) {
    // By the unit, not by the flags: with flag 128 left over from an earlier file it is a byte.
    TextEncoding end(charUnitSize == 2 ? "UTF-16" : byteEncoding(), buffer, opTextLength);
    int trailingBytes = 0;
    if (!end.FindRaggedEnd(trailingBytes)) {
        x_AddResult(ioResult, ResultTruncationError, encoding.empty() ? "ANSI" : encoding,
                    RESULT_ENCODING);
    } else if (trailingBytes != 0) {
        fileByteOffset -= trailingBytes;
        seekTo(fileByteOffset, SEEK_SET);
        opByteLength -= trailingBytes;
        opTextLength -= trailingBytes / charUnitSize;
        x_AddResult(ioResult, ResultRead, nullptr, RESULT_MODIFY | RESULT_LENGTH, opTextLength);
    }
    return true;
}

/// The encoding of the bytes of a byte file. One that claims to be UTF-16 or UTF-32 is neither: the
/// claim could be read as bytes.
std::string_view FileReading::byteEncoding() const {
    const int codePage = x_GetEncodingCodePage(encoding);
    return codePage == CodePageUtf16 || codePage == CodePageUtf32 ? "UTF-8"
                                                                  : std::string_view(encoding);
}

/// Converts the text just read and adds what came of it to the log. False, with a "file_error" and
/// no text, when the result would be too long for a document.
bool FileReading::convertToUtf8(TextBuffer& text) {
    const std::string_view from = isUtf16() ? "UTF-16" : byteEncoding();
    int lost = 0;
    if (!isUtf8(from) || markup::plainUtf8Length(text.view()) != text.size()) {
        TextEncoding conversion(from, text.data(),
                                static_cast<int>(text.size()) / (isUtf16() ? 2 : 1));
        conversion.ConsumeSource(text.block());  // both texts at once would take twice the memory
        TextBuffer converted;
        const int length = conversion.PerformConversion(nullptr, "UTF-8");
        if (length != 0) {  // else it would be measured anew
            converted.reset(static_cast<std::size_t>(length));
            converted.truncate(
                static_cast<std::size_t>(conversion.PerformConversion(converted.data(), nullptr)));
        }
        text = std::move(converted);
        if (conversion.error() != 0) {
            text.truncate(0);
            return FileErrorAddResult(conversion.error());
        }
        lost = conversion.failedCharacters();
    }
    x_AddResult(ioResult, ResultConvertedTo, "UTF-8", RESULT_ENCODING | RESULT_LENGTH,
                static_cast<int>(text.size()));
    if (lost != 0) {
        x_AddResult(ioResult, ResultConversionLoss);
    }
    return true;
}
