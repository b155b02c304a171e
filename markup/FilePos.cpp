#include "markup/FilePos.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <cstring>
#include <string_view>

#include "markup/BomTable.h"
#include "markup/DeclaredEncoding.h"
#include "markup/DocFlags.h"
#include "markup/ResultLog.h"
#include "markup/text/EncodingNameTable.h"
#include "markup/text/TextEncoding.h"
#include "markup/text/UnicodeCodec.h"
#include "markup/text/Utf8Sweep.h"

namespace {

constexpr int openStateFlags = DocFlagReadFile | DocFlagWriteFile | DocFlagAppendFile;
/// How much of a file is searched for its encoding.
constexpr std::size_t probeLength = 1024;
constexpr std::size_t maxErrorText = 100;

const Bom* findBom(std::string_view bytes) {
    for (const Bom& row : bomTable) {
        if (bytes.starts_with(row.bytes)) {
            return &row;
        }
    }
    return nullptr;
}

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
int removeNulls(Unit* text, int length) {
    Unit* const end = text + length;
    Unit* kept = findNull(text, end);
    for (Unit* run = kept; run != end;) {
        run = std::find_if(run, end, [](Unit unit) { return unit != 0; });
        Unit* const runEnd = findNull(run, end);
        kept = std::copy(run, runEnd, kept);
        run = runEnd;
    }
    return static_cast<int>(kept - text);
}

/// Whether the name is one under which the system always has a converter from UTF-8.
bool isUtf8Name(std::string_view encoding) {
    return encoding == "UTF-8" || encoding == "utf-8";
}

/// Reads `size` bytes, going on where a signal has interrupted it; fewer at the end of the file or,
/// with errno set, when reading fails.
std::size_t readBytes(std::FILE* file, char* buffer, std::size_t size) {
    errno = 0;
    std::size_t got = std::fread(buffer, 1, size, file);
    while (got < size && std::ferror(file) != 0 && errno == EINTR) {
        std::clearerr(file);
        errno = 0;
        got += std::fread(buffer + got, 1, size - got, file);
    }
    return got;
}

/// The encoding to convert from. A byte file that claims to be UTF-16 or UTF-32 is neither: the
/// claim could be read as bytes.
std::string_view sourceEncoding(std::string_view declared) {
    const int codePage = x_GetEncodingCodePage(declared);
    return codePage == CodePageUtf16 || codePage == CodePageUtf32 ? "UTF-8" : declared;
}

}  // namespace

int x_EndianSwapRequired(int flags) {
    return (flags & DocFlagUtf16BeFile) != 0 ? 1 : 0;
}

void x_EndianSwapUTF16(unsigned short* units, int length) {
    while (length-- > 0) {
        const unsigned unit = units[length];
        units[length] = static_cast<unsigned short>(unit << 8 | unit >> 8);
    }
}

bool FilePos::isUtf16() const {
    return (docFlags & (DocFlagUtf16LeFile | DocFlagUtf16BeFile)) != 0;
}

bool FilePos::FileErrorAddResult() {
    return FileErrorAddResult(errno == 0 ? EIO : errno);
}

bool FilePos::FileErrorAddResult(int number) {
    std::string_view text = std::strerror(number);
    text = text.substr(0, maxErrorText);
    text = text.substr(0, text.find_first_of("\r\n"));
    x_AddResult(ioResult, ResultFileError, text, RESULT_MSG | RESULT_NUMBER, number);
    return false;
}

bool FilePos::FileOpen(TextArg path) {
    const bool isAppending = (docFlags & DocFlagAppendFile) != 0;
    const bool isWriting = isAppending || (docFlags & DocFlagWriteFile) != 0;
    ioResult.clear();
    if (path.view().find('\0') != std::string_view::npos) {
        return FileErrorAddResult(
            ENOENT);  // no file has such a name; cut off it would be another's
    }
    errno = 0;
    file_.reset(std::fopen(std::string(path.view()).c_str(), isAppending ? "ab"
                                                             : isWriting ? "wb"
                                                                         : "rb"));
    if (!file_) {
        return FileErrorAddResult();
    }
    if (!isWriting) {
        // Two reads, both into memory of the right size: a buffer in between would only be filled.
        std::setvbuf(file_.get(), nullptr, _IONBF, 0);
    }
    charUnitSize = 1;
    fileByteLength = 0;
    fileByteOffset = 0;
    encoding.clear();
    const bool isReady = isWriting ? beginWriting(isAppending)
                                   : measure() && (fileByteLength == 0 || findEncoding());
    if (!isReady) {
        FileErrorAddResult();
        file_.reset();
    }
    return isReady;
}

bool FilePos::seekTo(std::int64_t offset, int whence) {
    errno = 0;
    return fseeko(file_.get(), offset, whence) == 0;
}

bool FilePos::measure() {
    if (!seekTo(0, SEEK_END)) {
        return false;
    }
    fileByteLength = ftello(file_.get());
    return fileByteLength >= 0 && seekTo(0, SEEK_SET);
}

bool FilePos::findEncoding() {
    std::array<char, probeLength> probe;
    const auto length =
        static_cast<std::size_t>(std::min<std::int64_t>(fileByteLength, probeLength));
    if (readBytes(file_.get(), probe.data(), length) != length) {
        return false;
    }
    const std::string_view bytes(probe.data(), length);
    // Bit 128 stays as it came in, and with it a file after a UTF-16BE one in the same document is
    // read as UTF-16: this is required.
    docFlags &= ~(DocFlagUtf16LeFile | DocFlagUtf8Preamble);
    const Bom* const bom = findBom(bytes);
    if (bom != nullptr) {
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

bool FilePos::FileClose() {
    if (!file_) {
        return false;
    }
    errno = 0;
    const bool closed = std::fclose(file_.release()) == 0;
    docFlags &= ~openStateFlags;
    return closed || FileErrorAddResult();
}

bool FilePos::FileReadText(std::string& text) {
    TextBuffer buffer;
    const bool isRead = FileReadText(buffer);
    text = buffer.view();
    return isRead;
}

bool FilePos::FileReadText(TextBuffer& text) {
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
    if (isUtf16()) {
        return readUtf16(text, mayBeRagged);
    }
    const bool assumedUtf8 = encoding.empty();
    if (assumedUtf8) {
        encoding = "UTF-8";
    }
    if (!mayBeRagged && isUtf8Name(encoding)) {
        return readUtf8(text);
    }
    return TextEncoding::CanConvert("UTF-8", encoding)
               ? readConverted(text, mayBeRagged)
               : readUnconverted(text, assumedUtf8, mayBeRagged);
}

bool FilePos::FileRead(void* buffer) {
    if (!file_) {
        opTextLength = 0;
        return FileErrorAddResult(EBADF);
    }
    const auto wanted = static_cast<std::size_t>(opByteLength);
    if (!countRead(buffer, readBytes(file_.get(), static_cast<char*>(buffer), wanted))) {
        return false;
    }
    closeUpNulls(buffer);
    if (charUnitSize == 2 && x_EndianSwapRequired(docFlags) != 0) {
        x_EndianSwapUTF16(static_cast<unsigned short*>(buffer), opTextLength);
        x_AddResult(ioResult, ResultEndianSwap);
    }
    return true;
}

/// Accounts for the `got` bytes that a read delivered; a short read is an error.
bool FilePos::countRead(void* buffer, std::size_t got) {
    const auto wanted = static_cast<std::size_t>(opByteLength);
    opTextLength = static_cast<int>(got) / charUnitSize;
    if (got < wanted) {
        const bool failed = FileErrorAddResult();
        std::memset(static_cast<char*>(buffer) + got, 0, wanted - got);
        return failed;
    }
    fileByteOffset += opByteLength;
    x_AddResult(ioResult, ResultRead, encoding, RESULT_ENCODING | RESULT_LENGTH, opTextLength);
    return true;
}

void FilePos::closeUpNulls(void* buffer) {
    const int kept = charUnitSize == 2
                         ? removeNulls(static_cast<unsigned short*>(buffer), opTextLength)
                         : removeNulls(static_cast<char*>(buffer), opTextLength);
    if (kept != opTextLength) {
        x_AddResult(ioResult, ResultNullsRemoved, nullptr, RESULT_COUNT, opTextLength - kept);
        opTextLength = kept;
    }
}

bool FilePos::FileCheckRaggedEnd(void* buffer) {
    // The text of two-byte units is in host order by now, and a text of bytes is no UTF-16 whatever
    // it claims to be.
    TextEncoding end(charUnitSize == 2 ? "UTF-16" : sourceEncoding(encoding), buffer, opTextLength);
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

bool FilePos::readUtf16(TextBuffer& text, bool mayBeRagged) {
    const auto units = static_cast<std::size_t>(opByteLength) / 2 + 1;
    Pages buffer(units * sizeof(unsigned short), Pages::huge);
    const bool isRead = FileRead(buffer.data());
    if (mayBeRagged) {
        FileCheckRaggedEnd(buffer.data());
    }
    // With flag 128 left over from an earlier file the unit is still a byte.
    return convertToUtf8(text, "UTF-16", buffer, opTextLength * charUnitSize / 2) && isRead;
}

bool FilePos::readConverted(TextBuffer& text, bool mayBeRagged) {
    Pages buffer(static_cast<std::size_t>(opByteLength), Pages::huge);
    const bool isRead = FileRead(buffer.data());
    if (mayBeRagged) {
        FileCheckRaggedEnd(buffer.data());
    }
    return convertToUtf8(text, sourceEncoding(encoding), buffer, opTextLength) && isRead;
}

/// Reads UTF-8 in place. The rules ask for a conversion to UTF-8, but what a sweep proves valid
/// would come back the same; only other texts are converted. Each piece is swept while it is still
/// near the processor.
bool FilePos::readUtf8(TextBuffer& text) {
    constexpr std::size_t pieceSize = std::size_t{1} << 18;
    constexpr std::size_t longestSequence = 4;
    const auto wanted = static_cast<std::size_t>(opByteLength);
    char* const data = text.reset(wanted);
    std::size_t got = 0;
    std::size_t plain = 0;
    errno = file_ ? 0 : EBADF;
    for (std::size_t last = 1; file_ && got < wanted && last != 0; got += last) {
        last = readBytes(file_.get(), data + got, std::min(pieceSize, wanted - got));
        // What is left of the piece before may be a sequence that was cut off, and no more.
        if (got - plain < longestSequence) {
            plain += markup::plainUtf8Length({data + plain, got + last - plain});
        }
    }
    return finishUtf8(text, got, plain);
}

/// Finishes reading a text of which `got` bytes came, and the first `plain` are valid.
bool FilePos::finishUtf8(TextBuffer& text, std::size_t got, std::size_t plain) {
    char* const data = text.data();
    bool isRead = countRead(data, got);
    if (isRead && plain < got) {
        closeUpNulls(data);
    }
    text.truncate(static_cast<std::size_t>(opTextLength));
    if (plain == got || markup::plainUtf8Length(text.view()) == text.size()) {
        x_AddResult(ioResult, ResultConvertedTo, "UTF-8", RESULT_ENCODING | RESULT_LENGTH,
                    opTextLength);
        return isRead;
    }
    TextBuffer converted;
    isRead = convertToUtf8(converted, "UTF-8", text.block(), opTextLength) && isRead;
    text = std::move(converted);
    return isRead;
}

bool FilePos::readUnconverted(TextBuffer& text, bool assumedUtf8, bool mayBeRagged) {
    text.reset(static_cast<std::size_t>(opByteLength));
    bool isRead = FileRead(text.data());
    const bool convertAgain = assumedUtf8 && detectEncoding(text, mayBeRagged);
    if (mayBeRagged) {
        FileCheckRaggedEnd(text.data());
    }
    text.truncate(static_cast<std::size_t>(opTextLength));
    if (convertAgain) {
        TextBuffer converted;
        isRead = convertToUtf8(converted, encoding, text.block(), opTextLength) && isRead;
        text = std::move(converted);
    }
    if (assumedUtf8) {
        x_AddResult(ioResult, ResultUtf8Detection);
    }
    return isRead;
}

/// Takes a text assumed to be UTF-8 as what it proves to be, else as the platform's default
/// character set; true when it then has to be converted.
bool FilePos::detectEncoding(const TextBuffer& text, bool mayBeRagged) {
    int nonAscii = 0;
    bool errorAtEnd = false;
    const bool isUtf8 = DetectUTF8(text.view().data(), opByteLength, &nonAscii, &errorAtEnd) ||
                        (errorAtEnd && mayBeRagged);
    encoding = isUtf8 ? "UTF-8" : "";
    if (isUtf8) {
        x_AddResult(ioResult, ResultRead, encoding, RESULT_MODIFY | RESULT_ENCODING);
    }
    return !isUtf8 && nonAscii != 0;
}

/// Converts a text, which may be lost, and adds what came of it to the log. False, with a
/// "file_error", when the result would be too long for a document.
bool FilePos::convertToUtf8(TextBuffer& text, TextArg from, Pages& source, int units) {
    TextEncoding conversion(from, source.data(), units);
    // Both texts at once would take twice the memory.
    conversion.ConsumeSource(source);
    int length = conversion.PerformConversion(nullptr, "UTF-8");
    if (conversion.error() != 0) {
        return FileErrorAddResult(conversion.error());
    }
    text.reset(static_cast<std::size_t>(length));
    if (length != 0) {  // else it would be measured anew
        length = conversion.PerformConversion(text.data(), nullptr);
    }
    text.truncate(static_cast<std::size_t>(length));
    x_AddResult(ioResult, ResultConvertedTo, "UTF-8", RESULT_ENCODING | RESULT_LENGTH, length);
    if (conversion.failedCharacters() != 0) {
        x_AddResult(ioResult, ResultConversionLoss);
    }
    return true;
}
