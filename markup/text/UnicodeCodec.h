#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>

/// Encodes a character at `target[length]` and adds the units written to `length`. With a null
/// target it only adds. A negative character counts as its unsigned 32-bit value.
void EncodeCharUTF8(int character, char* target, int& length);
void EncodeCharUTF16(int character, unsigned short* target, int& length);

/// Reads one UTF-8 sequence and moves the cursor behind the last byte read. Overlong forms,
/// surrogate values and lead bytes of the form 10xxxxxx (read as two-byte leads) pass. Returns -1
/// for an invalid or cut-off sequence; a byte below 0x80 that breaks a sequence is consumed with
/// it. Returns -1 at the end, too.
int DecodeCharUTF8(const char*& cursor, const char* end);

/// Reads one character and moves the cursor behind it. Any unit in 0xD800 to 0xDFFF is joined with
/// the unit after it, whatever that is. Returns -1 for such a unit at the end or before a zero
/// unit; only the one unit is consumed then. Returns -1 at the end, too.
int DecodeCharUTF16(const unsigned short*& cursor, const unsigned short* end);

/// Converts `length` UTF-16 units to UTF-8 and returns the number of bytes; a surrogate without
/// partner becomes "?". With a null target it only measures; the target is not terminated. Returns
/// 0, and writes nothing, when the result would be longer than INT32_MAX.
int UTF16To8(char* target, const unsigned short* source, int length);

/// Converts `length` bytes of UTF-8 to UTF-16 (with surrogate pairs) and returns the number of
/// units; an invalid sequence becomes one "?". With a null target it only measures; the target is
/// not terminated.
int UTF8To16(unsigned short* target, const char* source, int length);

/// Tells whether the text, up to its first NUL and at most `length` bytes, is made of UTF-8
/// sequences by the rule of DecodeCharUTF8. Stores the number of non-ASCII characters met, the
/// faulty one included, in `nonAscii`, and in `errorAtEnd` whether the only fault is a sequence cut
/// off by the end of the buffer. Either pointer may be null.
bool DetectUTF8(const char* text, int length, int* nonAscii, bool* errorAtEnd);

namespace markup {

/// Writes a character as 1 to 4 bytes of UTF-8 at `at`, which needs room for 4, and returns how
/// many. Surrogates are encoded like any value; of a value above 0x1FFFFF the higher bits are lost.
inline std::size_t putUTF8(std::uint32_t c, char* at) {
    const auto put = [at](std::size_t index, std::uint32_t byte) {
        at[index] = static_cast<char>(byte);
    };
    if (c < 0x80) {
        put(0, c);
        return 1;
    }
    if (c < 0x800) {
        put(0, 0xC0 | (c & 0x7C0) >> 6);
        put(1, 0x80 | (c & 0x3F));
        return 2;
    }
    if (c < 0x10000) {
        put(0, 0xE0 | (c & 0xF000) >> 12);
        put(1, 0x80 | (c & 0xFC0) >> 6);
        put(2, 0x80 | (c & 0x3F));
        return 3;
    }
    put(0, 0xF0 | (c & 0x1C0000) >> 18);
    put(1, 0x80 | (c & 0x3F000) >> 12);
    put(2, 0x80 | (c & 0xFC0) >> 6);
    put(3, 0x80 | (c & 0x3F));
    return 4;
}

/// Writes a character as 1 or 2 units of UTF-16 at `at`, which needs room for 2, and returns how
/// many.
inline std::size_t putUTF16(std::uint32_t c, unsigned short* at) {
    if (c < 0x10000) {
        at[0] = static_cast<unsigned short>(c);
        return 1;
    }
    at[0] = static_cast<unsigned short>(0xD800 | ((c - 0x10000) >> 10 & 0x3FF));
    at[1] = static_cast<unsigned short>(0xDC00 | (c & 0x3FF));
    return 2;
}

/// Converts `length` source units character by character and returns the number of target units;
/// with a null target it only measures. `decode(cursor, end)` reads a character, -1 for a fault,
/// which becomes one "?"; `put(character, at)` writes up to 4 units and returns how many. Returns
/// 0, and writes nothing, when the result would be longer than INT32_MAX. A null source is empty.
template <class Target, class Source, class Decode, class Put>
int transcode(Target* target, const Source* source, int length, Decode decode, Put put) {
    constexpr int intMax = std::numeric_limits<int>::max();
    const bool mayOverflow = target != nullptr && length > intMax / 4;
    if (mayOverflow && transcode<Target>(nullptr, source, length, decode, put) == 0) {
        return 0;
    }
    const Source* const end = source + (source == nullptr || length < 0 ? 0 : length);
    Target scratch[4];
    std::size_t count = 0;
    while (source != end) {
        const std::int64_t character = decode(source, end);
        count += put(character < 0 ? '?' : static_cast<std::uint32_t>(character),
                     target == nullptr ? scratch : target + count);
    }
    return count > std::size_t{intMax} ? 0 : static_cast<int>(count);
}

}  // namespace markup
