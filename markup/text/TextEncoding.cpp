// Which codec converts is told by the code pages of the two names. Among UTF-8, UTF-16 and 32-bit
// characters the own ones do, which are loose: what they make of faults is required. Every other
// pair is the system's, UTF-8 to UTF-8 included, so that a text of undoubted UTF-8 comes out. What
// the system has no 32-bit form of (in host byte order and without a mark) goes through UTF-16.

#include "markup/text/TextEncoding.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cerrno>
#include <climits>
#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

#include "markup/text/EncodingNameTable.h"
#include "markup/text/IConv.h"
#include "markup/text/UnicodeCodec.h"

namespace {

static_assert(sizeof(wchar_t) == 4 && sizeof(unsigned short) == 2 && CHAR_BIT == 8);

constexpr const char* hostUtf16 =
    std::endian::native == std::endian::little ? "UTF-16LE" : "UTF-16BE";

/// Code pages whose characters may take more than one byte, UTF-8 and UTF-16 aside. The default
/// character set counts as one. 20833 and those from 50930 to 50939 have no name in the table.
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

/// Cuts characters above 0xFFFF to their low 16 bits instead of splitting them: required.
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

/// An own codec makes at least one unit of every text: nothing means that it refused the result.
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

/// Converts piece by piece, and gives back what has been read of the source. No piece ends with a
/// surrogate, of whichever half: the codec would join it with the next unit.
int TextEncoding::consumeUTF16(char* target) {
    // In units: two huge pages of source, of which only whole ones are given back.
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

/// Goes through UTF-16, when only measuring too: the result counts characters, not units.
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

/// `room` is in target units and doesn't matter when only measuring.
int TextEncoding::convertByIConv(TextArg toEncoding, void* target, int room, int targetUnit,
                                 int sourceUnit) {
    const auto unit = static_cast<std::size_t>(targetUnit);
    ::IConv converter(toEncoding, fromEncoding_, unit, static_cast<std::size_t>(sourceUnit));
    if (consumed_ != nullptr) {
        converter.consume(*consumed_);
    }
    const std::span output(static_cast<char*>(target),
                           target == nullptr ? 0 : static_cast<std::size_t>(room) * unit);
    const std::size_t count = converter.run(sourceBytes(sourceUnit), output) / unit;
    const std::size_t failed =
        static_cast<std::size_t>(failedCharacters_) + converter.irreversible();
    failedCharacters_ = static_cast<int>(std::min(failed, std::size_t{INT_MAX}));
    error_ = count > std::size_t{INT_MAX} ? EFBIG : converter.error();
    return error_ == EFBIG ? 0 : static_cast<int>(count);
}

std::string_view TextEncoding::sourceBytes(int unit) const {
    return {sourceAs<char>(),
            static_cast<std::size_t>(sourceLength_) * static_cast<std::size_t>(unit)};
}

int TextEncoding::converterError(TextArg toEncoding, TextArg fromEncoding) {
    return ::IConv(toEncoding, fromEncoding).error();
}

char* TextEncoding::IConvName(char* buffer, TextArg name) {
    static_assert(iconvNameBufferSize == ::IConv::nameBufferSize);
    return ::IConv::prepareName(buffer, name);
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

/// Walks back to the last byte that begins a complete sequence.
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

/// Converts from the start, since only that tells the bytes of a character apart, and takes what
/// the converter leaves unread at the end.
bool TextEncoding::raggedMultibyte(int& trailingBytes) const {
    ::IConv converter("UTF-8", fromEncoding_);
    converter.run(sourceBytes(1), {});
    trailingBytes = converter.error() == 0 ? static_cast<int>(converter.unread()) : 0;
    return converter.error() == 0;
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

/// A text too long for the conversion is none.
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
