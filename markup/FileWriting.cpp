// A text is converted whole, measured first so that the buffer has the right size, and written by
// one call. Units of UTF-16 are swapped only behind that, as the last thing before the file.

#include "markup/FileWriting.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstring>

#include "markup/BomTable.h"
#include "markup/DeclaredEncoding.h"
#include "markup/ResultLog.h"
#include "markup/text/EncodingNameTable.h"
#include "markup/text/Pages.h"
#include "markup/text/TextEncoding.h"

namespace {

/// Bytes per unit that a conversion to this encoding makes. In a file without a mark they are
/// written as bytes all the same.
int unitSizeOf(std::string_view encoding) {
    const int codePage = x_GetEncodingCodePage(encoding);
    return codePage == CodePageUtf16 ? 2 : codePage == CodePageUtf32 ? 4 : 1;
}

std::string_view firstBytes(std::string_view text, int length) {
    return length < 0 ? text : text.substr(0, static_cast<std::size_t>(length));
}

}  // namespace

bool FileWriting::FileOpen(TextArg path) {
    const bool isAppending = (docFlags & DocFlagAppendFile) != 0;
    return openAs(path, isAppending ? "ab" : "wb") &&
           (((!isAppending || measure()) && begin(isAppending)) || giveUp());
}

/// Chooses the byte-order mark and writes it where the file is empty.
bool FileWriting::begin(bool isAppending) {
    fileByteOffset = fileByteLength;
    const auto* const bom = std::find_if(bomTable.begin(), bomTable.end(), [this](const Bom& row) {
        return (docFlags & row.flag) != 0;
    });
    docFlags &= ~bomFlags;
    if (bom == bomTable.end()) {
        return true;
    }
    docFlags |= bom->flag;
    charUnitSize = bom->unitSize();
    encoding = bom->encoding;
    errno = 0;
    if (fileByteLength == 0 && std::fwrite(bom->bytes.data(), bom->bytes.size(), 1, file()) != 1) {
        return false;
    }
    if (!isAppending) {
        fileByteOffset = static_cast<std::int64_t>(bom->bytes.size());
    }
    // Added also where the mark was there already: required.
    x_AddResult(ioResult, ResultBom);
    return true;
}

void FileWriting::chooseEncoding(std::string_view text) {
    if (encoding.empty() && !text.empty()) {
        encoding = markup::declaredEncoding(text);
        if (encoding.empty()) {
            encoding = "UTF-8";
        }
    }
}

bool FileWriting::FileWriteText(std::string_view text, int length) {
    ioResult.clear();
    if (text.size() > INT_MAX) {
        return FileErrorAddResult(EFBIG);
    }
    text = firstBytes(text, length);
    if (text.empty()) {
        x_AddResult(ioResult, ResultWrite, encoding, RESULT_ENCODING | RESULT_LENGTH, 0);
        return true;
    }
    const int error = isUtf16() ? 0 : TextEncoding::converterError(encoding, "UTF-8");
    if (error == 0) {
        return writeConverted(text);
    }
    if (error != EINVAL) {
        return FileErrorAddResult(error);  // there may be a converter, another time
    }
    opTextLength = static_cast<int>(text.size());
    return FileWrite(nullptr, text.data());
}

/// Converts a text that is not empty, and writes it. What the file's encoding can't hold is written
/// as "?", which is no loss unless the converter calls it one: required.
bool FileWriting::writeConverted(std::string_view text) {
    const std::string_view to = isUtf16() ? "UTF-16" : std::string_view(encoding);
    const auto size = static_cast<int>(text.size());
    TextEncoding conversion("UTF-8", text.data(), size);
    const int measured = conversion.PerformConversion(nullptr, to);
    const std::int64_t bytes = std::int64_t{measured} * unitSizeOf(to);
    if (bytes > INT_MAX) {
        return FileErrorAddResult(EFBIG);
    }
    const Pages buffer(static_cast<std::size_t>(bytes), Pages::usual);
    // Less than was measured where a stateful converter shifts otherwise when it starts a new
    // piece. Into nothing nothing is converted: it would be measured anew.
    const int units = measured == 0 ? 0 : conversion.PerformConversion(buffer.data(), nullptr);
    if (conversion.error() != 0) {
        return FileErrorAddResult(conversion.error());
    }
    opTextLength = units * unitSizeOf(to) / charUnitSize;
    x_AddResult(ioResult, ResultConvertedFrom, "UTF-8", RESULT_ENCODING | RESULT_LENGTH, size);
    if (conversion.failedCharacters() != 0) {
        x_AddResult(ioResult, ResultConversionLoss);
    }
    return FileWrite(buffer.data(), nullptr);
}

bool FileWriting::FileWrite(void* buffer, const void* constBuffer) {
    const std::int64_t bytes = std::int64_t{charUnitSize} * opTextLength;
    if (bytes > INT_MAX) {
        return FileErrorAddResult(EFBIG);
    }
    opByteLength = static_cast<int>(bytes);
    // Only units of two bytes have an order.
    if (x_EndianSwapRequired(docFlags) == 0 || charUnitSize != 2) {
        return writeBytes(buffer != nullptr ? buffer : constBuffer);
    }
    Pages copy;
    if (buffer == nullptr) {
        copy = Pages(static_cast<std::size_t>(bytes), Pages::usual);
        buffer = std::memcpy(copy.data(), constBuffer, static_cast<std::size_t>(bytes));
    }
    x_EndianSwapUTF16(static_cast<unsigned short*>(buffer), opTextLength);
    x_AddResult(ioResult, ResultEndianSwap);
    return writeBytes(buffer);
}

/// Writes `opByteLength` bytes by one call: when not all are taken, it can't be told which were.
bool FileWriting::writeBytes(const void* bytes) {
    if (file() == nullptr) {
        return FileErrorAddResult(EBADF);
    }
    errno = 0;
    const auto size = static_cast<std::size_t>(opByteLength);
    if (size != 0 && std::fwrite(bytes, size, 1, file()) != 1) {
        return FileErrorAddResult();
    }
    fileByteOffset += opByteLength;
    x_AddResult(ioResult, ResultWrite, encoding, RESULT_ENCODING | RESULT_LENGTH, opTextLength);
    return true;
}

bool FileWriting::FileFlush(std::string& buffer, int length, bool flush) {
    ioResult.clear();
    const std::string_view text = firstBytes(buffer, length);
    if (!text.empty()) {
        // By the whole buffer, of which less may be written: the declaration may be longer.
        if (fileByteOffset == 0) {
            chooseEncoding(buffer);
        }
        if (!FileWriteText(text)) {
            return false;
        }
        buffer.erase(0, text.size());
    }
    if (!flush) {
        return true;
    }
    if (file() == nullptr) {
        return FileErrorAddResult(EBADF);
    }
    errno = 0;
    return std::fflush(file()) == 0 || FileErrorAddResult();
}
