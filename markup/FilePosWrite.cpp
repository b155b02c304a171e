// The writing half of FilePos.

#include <algorithm>
#include <cerrno>
#include <climits>

#include "markup/BomTable.h"
#include "markup/DeclaredEncoding.h"
#include "markup/FilePos.h"
#include "markup/ResultLog.h"
#include "markup/text/EncodingNameTable.h"
#include "markup/text/TextEncoding.h"

namespace {

/// Bytes per unit that a conversion to this encoding makes. In a file without a mark they are
/// written as bytes all the same.
int unitSizeOf(std::string_view encoding) {
    switch (x_GetEncodingCodePage(encoding)) {
        case CodePageUtf16:
            return 2;
        case CodePageUtf32:
            return 4;
        default:
            return 1;
    }
}

int clampLength(int length, std::size_t size) {
    const int most = static_cast<int>(std::min<std::size_t>(size, INT_MAX));
    return length < 0 ? most : std::min(length, most);
}

}  // namespace

bool FilePos::beginWriting(bool isAppending) {
    if (isAppending) {
        if (!seekTo(0, SEEK_END)) {
            return false;
        }
        fileByteLength = ftello(file_.get());
        if (fileByteLength < 0) {
            return false;
        }
    }
    const auto* const bom = std::find_if(bomTable.begin(), bomTable.end(), [this](const Bom& row) {
        return (docFlags & row.flag) != 0;
    });
    docFlags &= ~bomFlags;
    if (bom == bomTable.end()) {
        fileByteOffset = fileByteLength;
        return true;
    }
    docFlags |= bom->flag;
    charUnitSize = bom->unitSize();
    encoding = bom->encoding;
    errno = 0;
    if (fileByteLength == 0 &&
        std::fwrite(bom->bytes.data(), bom->bytes.size(), 1, file_.get()) != 1) {
        return false;
    }
    fileByteOffset = isAppending ? fileByteLength : static_cast<std::int64_t>(bom->bytes.size());
    // Added also where the mark was there already: required.
    x_AddResult(ioResult, ResultBom);
    return true;
}

void FilePos::chooseEncoding(std::string_view text) {
    if (encoding.empty() && !text.empty()) {
        encoding = markup::declaredEncoding(text);
        if (encoding.empty()) {
            encoding = "UTF-8";
        }
    }
}

bool FilePos::FileWriteText(std::string_view text, int length) {
    ioResult.clear();
    if (text.size() > INT_MAX) {
        return FileErrorAddResult(EFBIG);
    }
    length = clampLength(length, text.size());
    if (length == 0) {
        x_AddResult(ioResult, ResultWrite, encoding, RESULT_ENCODING | RESULT_LENGTH, 0);
        return true;
    }
    if (isUtf16()) {
        return writeUtf16(text.data(), length);
    }
    if (TextEncoding::CanConvert(encoding, "UTF-8")) {
        return writeConverted(text.data(), length);
    }
    opTextLength = length;
    return FileWrite(nullptr, text.data());
}

bool FilePos::writeUtf16(const char* text, int length) {
    TextEncoding conversion("UTF-8", text, length);
    opTextLength = conversion.PerformConversion(nullptr, "UTF-16");
    const auto units =
        std::make_unique_for_overwrite<unsigned short[]>(static_cast<std::size_t>(opTextLength));
    conversion.PerformConversion(units.get(), nullptr);
    x_AddResult(ioResult, ResultConvertedFrom, "UTF-8", RESULT_ENCODING | RESULT_LENGTH, length);
    return FileWrite(units.get(), nullptr);
}

bool FilePos::writeConverted(const char* text, int length) {
    TextEncoding conversion("UTF-8", text, length);
    const std::int64_t bytes =
        std::int64_t{conversion.PerformConversion(nullptr, encoding)} * unitSizeOf(encoding);
    if (conversion.error() != 0 || bytes > INT_MAX) {
        return FileErrorAddResult(bytes > INT_MAX ? EFBIG : conversion.error());
    }
    const auto buffer = std::make_unique_for_overwrite<char[]>(static_cast<std::size_t>(bytes));
    // Less than was measured where a stateful converter shifts otherwise when it starts a new
    // piece. Into nothing nothing is converted: it would be measured anew.
    opTextLength =
        bytes == 0 ? 0 : conversion.PerformConversion(buffer.get(), nullptr) * unitSizeOf(encoding);
    x_AddResult(ioResult, ResultConvertedFrom, "UTF-8", RESULT_ENCODING | RESULT_LENGTH, length);
    if (conversion.failedCharacters() != 0) {
        x_AddResult(ioResult, ResultConversionLoss);
    }
    return FileWrite(buffer.get(), nullptr);
}

bool FilePos::FileWrite(void* buffer, const void* constBuffer) {
    const std::int64_t bytes = std::int64_t{charUnitSize} * opTextLength;
    if (bytes > INT_MAX) {
        return FileErrorAddResult(EFBIG);
    }
    opByteLength = static_cast<int>(bytes);
    if (x_EndianSwapRequired(docFlags) == 0 || charUnitSize != 2) {
        return writeBytes(buffer != nullptr ? buffer : constBuffer);
    }
    std::unique_ptr<unsigned short[]> copy;
    auto* units = static_cast<unsigned short*>(buffer);
    if (units == nullptr) {
        copy = std::make_unique_for_overwrite<unsigned short[]>(
            static_cast<std::size_t>(opTextLength));
        units = copy.get();
        std::copy_n(static_cast<const char*>(constBuffer), opByteLength,
                    reinterpret_cast<char*>(units));
    }
    x_EndianSwapUTF16(units, opTextLength);
    x_AddResult(ioResult, ResultEndianSwap);
    return writeBytes(units);
}

bool FilePos::writeBytes(const void* bytes) {
    if (!file_) {
        return FileErrorAddResult(EBADF);
    }
    errno = 0;
    const auto size = static_cast<std::size_t>(opByteLength);
    if (size != 0 && std::fwrite(bytes, size, 1, file_.get()) != 1) {
        return FileErrorAddResult();
    }
    fileByteOffset += opByteLength;
    x_AddResult(ioResult, ResultWrite, encoding, RESULT_ENCODING | RESULT_LENGTH, opTextLength);
    return true;
}

bool FilePos::FileFlush(std::string& buffer, int length, bool flush) {
    ioResult.clear();
    length = clampLength(length, buffer.size());
    if (length != 0) {
        if (fileByteOffset == 0) {
            chooseEncoding(buffer);
        }
        if (!FileWriteText(buffer, length)) {
            return false;
        }
        buffer.erase(0, static_cast<std::size_t>(length));
    }
    if (!flush) {
        return true;
    }
    if (!file_) {
        return FileErrorAddResult(EBADF);
    }
    errno = 0;
    return std::fflush(file_.get()) == 0 || FileErrorAddResult();
}
