#include "markup/text/TextEncoding.h"

#include <iconv.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cerrno>
#include <climits>
#include <cstdint>
#include <cstring>
#include <new>
#include <span>
#include <string_view>
#include <utility>
#include <vector>

#include "markup/text/EncodingNameTable.h"
#include "markup/text/IConv.h"
#include "markup/text/UnicodeCodec.h"

namespace {

static_assert(sizeof(wchar_t) == 4 && sizeof(unsigned short) == 2 && CHAR_BIT == 8);

constexpr bool littleEndianHost = std::endian::native == std::endian::little;
constexpr const char* hostUtf16 = littleEndianHost ? "UTF-16LE" : "UTF-16BE";

// An iconv name, and whether IConvName made it big-endian where memory is in host order.
class PreparedName {
  public:
    explicit PreparedName(TextArg name) : usable_(name.view().size() < maxEncodingNameLength) {
        if (usable_) {
            TextEncoding::IConvName(text_.data(), name);
            orderAdded_ = name.view().size() + 2 == std::strlen(text_.data());
        }
    }

    bool usable() const { return usable_; }
    const char* text() const { return text_.data(); }
    bool orderAdded() const { return orderAdded_; }

  private:
    std::array<char, TextEncoding::iconvNameBufferSize> text_{};
    bool usable_;
    bool orderAdded_ = false;
};

// Room for what the largest converter takes to be loaded.
constexpr std::size_t converterRoom = std::size_t{1} << 20;

// Owns an open converter, or none when there is none of these names. Throws std::bad_alloc when
// memory does not suffice to open it: a text must not pass for one of an unknown encoding then.
class IConvHandle {
  public:
    IConvHandle(const PreparedName& to, const PreparedName& from) {
        if (!to.usable() || !from.usable()) {
            return;
        }
        handle_ = ::iconv_open(to.text(), from.text());
        if (!isOpen() && errno == EINVAL) {
            // Said of unknown names, but also when memory ran out while a converter was being
            // loaded. Only a second attempt tells them apart.
            Pages::requireRoom(converterRoom);
            handle_ = ::iconv_open(to.text(), from.text());
        }
        if (!isOpen() && errno == ENOMEM) {
            throw std::bad_alloc();
        }
    }
    ~IConvHandle() {
        if (isOpen()) {
            ::iconv_close(handle_);
        }
    }
    IConvHandle(const IConvHandle&) = delete;
    IConvHandle& operator=(const IConvHandle&) = delete;

    bool isOpen() const { return handle_ != closed(); }
    iconv_t get() const { return handle_; }

  private:
    // NOLINTNEXTLINE(performance-no-int-to-ptr): this is how iconv_open says that it failed
    static iconv_t closed() { return reinterpret_cast<iconv_t>(-1); }

    iconv_t handle_ = closed();
};

// Bytes that are counted at once. UTF-8 is counted three times as fast in pieces. What is decoded
// has to come in pieces whose output fits: not all converters go on when it was full, that from
// EUC-JISX0213 writes the same for ever. No byte becomes more than 16.
constexpr std::size_t utf8Piece = 1024;
constexpr std::size_t decodedPiece = 128;

// Swaps the two bytes of every whole 16-bit unit.
void swapUnits(std::span<char> bytes) {
    for (std::size_t i = 1; i < bytes.size(); i += 2) {
        std::swap(bytes[i - 1], bytes[i]);
    }
}

// Code pages whose characters may take more than one byte, UTF-8 and UTF-16 aside. The default
// character set counts as one.
constexpr std::array multibyteCodePages = {
    0,     874,   932,   936,   949,   950,   1361,  10001, 10002, 10003, 10008, 10021, 20000,
    20001, 20002, 20003, 20004, 20833, 20932, 20936, 20949, 50220, 50221, 50222, 50225, 50227,
    50930, 50931, 50933, 50935, 50937, 50939, 51932, 51936, 51949, 52936, 54936};
static_assert(std::ranges::is_sorted(multibyteCodePages));

std::uint32_t decodeWide(const wchar_t*& cursor, const wchar_t*) {
    return static_cast<std::uint32_t>(*cursor++);
}

std::size_t putWide(std::uint32_t character, wchar_t* at) {
    *at = static_cast<wchar_t>(character);
    return 1;
}

// Cuts characters above 0xFFFF to their low 16 bits instead of splitting them: required.
std::size_t putLow16(std::uint32_t character, unsigned short* at) {
    *at = static_cast<unsigned short>(character);
    return 1;
}

}  // namespace

TextEncoding::TextEncoding(TextArg fromEncoding, const void* source, int sourceLength)
    : fromEncoding_(fromEncoding.view()),
      source_(source),
      sourceLength_(source == nullptr ? 0 : std::max(sourceLength, 0)) {}

int TextEncoding::PerformConversion(void* target, TextArg toEncoding) {
    if (!toEncoding.isNull()) {
        toEncoding_ = toEncoding.view();
    }
    failedCharacters_ = 0;
    error_ = 0;
    outputCount_ = convert(target);
    return outputCount_;
}

int TextEncoding::convert(void* target) {
    const int toCodePage = x_GetEncodingCodePage(toEncoding_);
    switch (x_GetEncodingCodePage(fromEncoding_)) {
        case CodePageUtf8:
            return fromUTF8(target, toCodePage);
        case CodePageUtf16:
            return fromUTF16(target, toCodePage);
        case CodePageUtf32:
            return fromUTF32(target, toCodePage);
        case CodePageUnknown:
            return IConv(target, 1, 1);
        default:
            return fromOther(target, toCodePage);
    }
}

// An own codec makes at least one unit of every text: nothing means that it refused the result.
int TextEncoding::checkedCount(int count) {
    error_ = count == 0 && sourceLength_ > 0 ? EFBIG : 0;
    return count;
}

int TextEncoding::fromUTF8(void* target, int toCodePage) {
    const char* const source = sourceAs<char>();
    switch (toCodePage) {
        case CodePageUtf16:
            return checkedCount(markup::transcode(static_cast<unsigned short*>(target), source,
                                                  sourceLength_, DecodeCharUTF8, putLow16));
        case CodePageUtf32:
            return checkedCount(markup::transcode(static_cast<wchar_t*>(target), source,
                                                  sourceLength_, DecodeCharUTF8, putWide));
        default:
            return IConv(target, 1, 1);
    }
}

int TextEncoding::fromUTF16(void* target, int toCodePage) {
    const auto* const source = sourceAs<unsigned short>();
    switch (toCodePage) {
        case CodePageUtf8:
            return target != nullptr && consumed_ != nullptr
                       ? consumeUTF16(static_cast<char*>(target))
                       : checkedCount(UTF16To8(static_cast<char*>(target), source, sourceLength_));
        case CodePageUtf32:
            return checkedCount(markup::transcode(static_cast<wchar_t*>(target), source,
                                                  sourceLength_, DecodeCharUTF16, putWide));
        default:
            return IConv(target, 1, 2);
    }
}

// Converts piece by piece, and gives back what has been read of the source. No piece ends with a
// surrogate, of whichever half: the codec would join it with the next unit.
int TextEncoding::consumeUTF16(char* target) {
    constexpr int pieceLength = 1 << 21;
    const auto* const source = sourceAs<unsigned short>();
    int count = 0;
    for (int done = 0; done < sourceLength_;) {
        int end = done + std::min(pieceLength, sourceLength_ - done);
        while (end < sourceLength_ && (source[end - 1] & 0xF800) == 0xD800) {
            ++end;
        }
        count += UTF16To8(target + count, source + done, end - done);
        consumed_->discard(reinterpret_cast<const char*>(source + done),
                           reinterpret_cast<const char*>(source + end));
        done = end;
    }
    return count;
}

int TextEncoding::fromUTF32(void* target, int toCodePage) {
    const auto* const source = sourceAs<wchar_t>();
    switch (toCodePage) {
        case CodePageUtf8:
            return checkedCount(markup::transcode(static_cast<char*>(target), source, sourceLength_,
                                                  decodeWide, markup::putUTF8));
        case CodePageUtf16:
            return checkedCount(markup::transcode(static_cast<unsigned short*>(target), source,
                                                  sourceLength_, decodeWide, markup::putUTF16));
        default:
            return IConv(target, 1, 4);
    }
}

int TextEncoding::fromOther(void* target, int toCodePage) {
    switch (toCodePage) {
        case CodePageUtf16:
            return IConv(target, 2, 1);
        case CodePageUtf32:
            return toUTF32(target);
        default:
            return IConv(target, 1, 1);
    }
}

// Goes through UTF-16, when only measuring too: the result counts characters, not units.
int TextEncoding::toUTF32(void* target) {
    const int units = convertByIConv(hostUtf16, nullptr, 0, 2, 1);
    std::vector<unsigned short> utf16(static_cast<std::size_t>(units));
    failedCharacters_ = 0;
    const int count = units == 0 ? 0 : convertByIConv(hostUtf16, utf16.data(), units, 2, 1);
    return markup::transcode(static_cast<wchar_t*>(target), utf16.data(), count, DecodeCharUTF16,
                             putWide);
}

int TextEncoding::IConv(void* target, int targetUnit, int sourceUnit) {
    int room = outputCount_;
    if (target != nullptr && room == 0) {
        room = convertByIConv(toEncoding_, nullptr, 0, targetUnit, sourceUnit);
        failedCharacters_ = 0;  // the count of the converting pass is the one kept
    }
    outputCount_ = convertByIConv(toEncoding_, target, room, targetUnit, sourceUnit);
    return outputCount_;
}

// `room` is in target units and doesn't matter when only measuring.
int TextEncoding::convertByIConv(TextArg toEncoding, void* target, int room, int targetUnit,
                                 int sourceUnit) {
    const PreparedName to(toEncoding);
    const PreparedName from(fromEncoding_);
    const IConvHandle handle(to, from);
    if (!handle.isOpen()) {
        return 0;
    }
    IConvRun::Units units;
    units.target = static_cast<std::size_t>(targetUnit);
    units.source = static_cast<std::size_t>(sourceUnit);
    units.targetOrder = to.orderAdded() ? std::endian::big : std::endian::native;
    if (x_GetEncodingCodePage(toEncoding) == CodePageUtf8) {
        const bool isUtf8 = x_GetEncodingCodePage(fromEncoding_) == CodePageUtf8;
        units.countingPiece = isUtf8 ? utf8Piece : decodedPiece;
    }
    // iconv is asked for big-endian text where the name is plain "UTF-16", memory is in host order.
    std::span<const char> source(sourceAs<char>(),
                                 static_cast<std::size_t>(sourceLength_) * units.source);
    std::vector<char> swapped;
    if (littleEndianHost && from.orderAdded()) {
        swapped.assign(source.begin(), source.end());
        swapUnits(swapped);
        source = swapped;
    }
    const std::span<char> output(
        static_cast<char*>(target),
        target == nullptr ? 0 : static_cast<std::size_t>(room) * units.target);
    IConvRun run(handle.get(), source, output, units);
    if (consumed_ != nullptr && target != nullptr && swapped.empty()) {
        run.consume(*consumed_);
    }
    run.run();
    if (littleEndianHost && to.orderAdded() && target != nullptr) {
        swapUnits(output.first(run.bytes()));
    }
    const std::size_t failed = static_cast<std::size_t>(failedCharacters_) + run.irreversible();
    failedCharacters_ = static_cast<int>(std::min(failed, std::size_t{INT_MAX}));
    const std::size_t count = run.bytes() / units.target;
    error_ = count > std::size_t{INT_MAX} ? EFBIG : 0;
    return error_ != 0 ? 0 : static_cast<int>(count);
}

int TextEncoding::converterError(TextArg toEncoding, TextArg fromEncoding) {
    const IConvHandle handle{PreparedName(toEncoding), PreparedName(fromEncoding)};
    return handle.isOpen() ? 0 : EINVAL;
}

char* TextEncoding::IConvName(char* buffer, TextArg name) {
    const std::string_view text = name.view();
    char* const end = std::ranges::transform(text, buffer, [](char c) {
                          return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
                      }).out;
    const std::string_view suffix = std::string_view(buffer, text.size()) == "UTF-16" ? "BE" : "";
    *std::ranges::copy(suffix, end).out = '\0';
    return buffer;
}

bool TextEncoding::FindRaggedEnd(int& trailingBytes) const {
    trailingBytes = 0;
    const int codePage = x_GetEncodingCodePage(fromEncoding_);
    if (sourceLength_ == 0) {
        return true;
    }
    if (codePage == CodePageUtf16) {
        const unsigned short last = sourceAs<unsigned short>()[sourceLength_ - 1];
        trailingBytes = last >= 0xD800 && last <= 0xDFFF ? 2 : 0;
        return true;
    }
    if (codePage == CodePageUtf8) {
        trailingBytes = raggedUTF8();
        return true;
    }
    return !std::ranges::binary_search(multibyteCodePages, codePage) ||
           raggedMultibyte(trailingBytes);
}

// Walks back to the last byte that begins a complete sequence.
int TextEncoding::raggedUTF8() const {
    const char* const begin = sourceAs<char>();
    const char* const end = begin + sourceLength_;
    const char* start = end;
    while (start != begin && (start[-1] & 0x80) != 0) {
        --start;
        const char* cursor = start;
        if (DecodeCharUTF8(cursor, end) >= 0) {
            return static_cast<int>(end - cursor);
        }
    }
    return static_cast<int>(end - start);
}

// Converts from the start, since only that tells the bytes of a character apart, and takes what the
// converter leaves unread at the end.
bool TextEncoding::raggedMultibyte(int& trailingBytes) const {
    const IConvHandle handle(PreparedName("UTF-8"), PreparedName(fromEncoding_));
    if (!handle.isOpen()) {
        return false;
    }
    const std::span source(sourceAs<char>(), static_cast<std::size_t>(sourceLength_));
    IConvRun::Units units;
    units.countingPiece = decodedPiece;
    IConvRun run(handle.get(), source, {}, units);
    run.run();
    trailingBytes = static_cast<int>(run.unread());
    return true;
}

namespace {

std::string convertWhole(TextEncoding& encoding, const char* toEncoding) {
    const int room = encoding.PerformConversion(nullptr, toEncoding);
    std::string out(static_cast<std::size_t>(room), '\0');
    if (room > 0) {
        out.resize(static_cast<std::size_t>(encoding.PerformConversion(out.data(), nullptr)));
    }
    return out;
}

// A text too long for the conversion is none.
int lengthOf(TextArg text) {
    return text.view().size() > std::size_t{INT_MAX} ? 0 : static_cast<int>(text.view().size());
}

}  // namespace

std::string AToUTF8(TextArg text) {
    TextEncoding encoding("", text.view().data(), lengthOf(text));
    return convertWhole(encoding, "UTF-8");
}

std::string UTF8ToA(TextArg text, int* failedCharacters) {
    TextEncoding encoding("UTF-8", text.view().data(), lengthOf(text));
    std::string out = convertWhole(encoding, "");
    if (failedCharacters != nullptr) {
        *failedCharacters = encoding.failedCharacters();
    }
    return out;
}
