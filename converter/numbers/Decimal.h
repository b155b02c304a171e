#pragma once

#ifdef __x86_64__
#include <emmintrin.h>
#endif

#include <array>
#include <bit>
#include <cstdint>
#include <cstring>

#include "converter/numbers/DecimalScale.h"

/// Reads the numbers that files are full of, many times faster than digit by digit and to the same
/// bits: an optional "-", up to 19 digits with at most one point among or around them, and an
/// optional exponent of "e" or "E", a sign and two digits.
///
/// Where the text ends is known, so that its last digits are the last bytes of a register, however
/// many there are; only what differs from vector to vector, and seldom from number to number, is
/// branched on.
namespace decimal {

/// Bytes in which spaces are sought together.
inline constexpr std::ptrdiff_t blockSize = 64;

#ifdef __x86_64__

/// How many bytes before the end of a number, and behind its start, have to be readable.
inline constexpr std::ptrdiff_t margin = 21;
/// The longest number: a sign, all digits, the point and an exponent.
inline constexpr std::ptrdiff_t longest = 1 + 19 + 1 + 4;

/// A word of the text, its first byte lowest.
inline std::uint32_t wordAt(const char* text) {
    std::uint32_t word;
    std::memcpy(&word, text, sizeof word);
    return word;
}

inline __m128i registerAt(const void* bytes) {
    return _mm_loadu_si128(static_cast<const __m128i*>(bytes));
}

/// The spaces among the bytes of a block, the first byte's bit lowest.
inline std::uint64_t spacesIn(const char* block) {
    const auto spaces = [block](int offset) {
        const __m128i bytes = registerAt(block + offset);
        const int found = _mm_movemask_epi8(_mm_cmpeq_epi8(bytes, _mm_set1_epi8(' ')));
        return std::uint64_t{static_cast<unsigned>(found)} << offset;
    };
    return spaces(0) | spaces(16) | spaces(32) | spaces(48);
}

/// Cuts an exponent off the end of a number and returns its value; 0 when there is none, and then
/// an "e" that stays is found to be no digit.
inline int cutExponent(const char*& end) {
    const std::uint32_t word = wordAt(end - 4);
    constexpr std::uint32_t caseBit = 0x20;
    if ((word & 0xFF & ~caseBit) != 'E') {
        return 0;
    }
    // "+" becomes 0 and "-" 6, and the digits their values.
    const std::uint32_t bytes = word >> 8 ^ 0x30302B;
    if (((bytes & 0xF0F0F9) | ((bytes + 0x060600) & 0xF0F000) | ((bytes >> 1 ^ bytes >> 2) & 1)) !=
        0) {
        return 0;
    }
    end -= 4;
    const int size = static_cast<int>((bytes >> 8 & 0xF) * 10 + (bytes >> 16));
    return (bytes & 6) != 0 ? -size : size;
}

/// The digits of a number without their point: as many as fit, right-aligned, as values 0 to 9; 0
/// before the first. Bytes that are no digits have larger values. Requires: behind <= count <= 20.
inline __m128i lastDigits(const char* end, unsigned count, unsigned behind, bool hasPoint) {
    // Read at i, 16 bytes of which the last i are kept.
    alignas(64) static constexpr auto keepLast = [] {
        std::array<unsigned char, 16 + 20> mask{};
        for (std::size_t i = 16; i < mask.size(); ++i) {
            mask[i] = 0xFF;
        }
        return mask;
    }();
    // What is before the point moves over it.
    const __m128i isBehind = registerAt(keepLast.data() + (hasPoint ? behind : 16));
    const __m128i digits = _mm_or_si128(_mm_and_si128(isBehind, registerAt(end - 16)),
                                        _mm_andnot_si128(isBehind, registerAt(end - 17)));
    return _mm_and_si128(_mm_xor_si128(digits, _mm_set1_epi8('0')),
                         registerAt(keepLast.data() + count));
}

inline bool areDigits(__m128i values) {
    constexpr char toTopBit = 0x80 - 10;
    return _mm_movemask_epi8(_mm_adds_epu8(values, _mm_set1_epi8(toTopBit))) == 0;
}

/// The number that 16 digits make, the first one in the lowest byte.
inline std::uint64_t numberOf(__m128i digits) {
    // Neighbours are joined, the first one the higher: to pairs, to fours, to eights. A pair is
    // first + 256 * second; times 10 * 256 + 1, its second byte is first * 10 + second.
    const __m128i pairs = _mm_srli_epi16(_mm_mullo_epi16(digits, _mm_set1_epi16(10 * 256 + 1)), 8);
    const __m128i fours = _mm_madd_epi16(pairs, _mm_set1_epi32(100 | 1 << 16));
    const __m128i packed = _mm_packs_epi32(fours, fours);
    const __m128i eights = _mm_madd_epi16(packed, _mm_set1_epi32(10000 | 1 << 16));
    const auto both = static_cast<std::uint64_t>(_mm_cvtsi128_si64(eights));
    return (both & 0xFFFFFFFF) * 100000000 + (both >> 32);
}

/// Adds the digits before the last 16 of `count`, if there are any, to the number `w` that the last
/// 16 make; false when one is no digit, when there are none at all, and when they may be too many
/// for 64 bits. `before` is how many digits lie before the point.
inline bool addFirstDigits(const char* text, unsigned before, unsigned count, std::uint64_t& w) {
    constexpr unsigned most = 19;
    if (count == 0 || count > most) {
        return false;
    }
    std::uint64_t number = 0;
    for (unsigned i = 0; i + 16 < count; ++i) {
        const auto digit = static_cast<unsigned char>(text[i < before ? i : i + 1] - '0');
        if (digit > 9) {
            return false;
        }
        number = number * 10 + digit;
    }
    w += number * 10000000000000000;
    return true;
}

/// Reads the number that is the whole text from `text` to `end`; false when it is not of the
/// usual form; `value` means nothing then. Requires: text <= end, and `margin` bytes before
/// `end` and behind `text` that may be read, whatever they are.
inline bool read(const char* text, const char* end, double& value) {
    const bool isNegative = *text == '-';
    text += isNegative ? 1 : 0;
    const int exponent = cutExponent(end);
    // An end before the start makes this a large number.
    const auto length = static_cast<std::size_t>(end - text);
    if (length - 1 >= 20) {
        return false;
    }
    // Where the point is tells how many digits lie on either side. One beyond the register is
    // taken for a digit, and found to be none.
    const auto points = static_cast<unsigned>(
        _mm_movemask_epi8(_mm_cmpeq_epi8(registerAt(text), _mm_set1_epi8('.'))));
    const auto before = static_cast<unsigned>(std::countr_zero(points | 1U << length));
    const bool hasPoint = before < length;
    const unsigned count = static_cast<unsigned>(length) - (hasPoint ? 1 : 0);
    const unsigned behind = count - before;
    const __m128i digits = lastDigits(end, count, behind, hasPoint);
    std::uint64_t w = numberOf(digits);
    if (!areDigits(digits) || (count - 1 >= 16 && !addFirstDigits(text, before, count, w))) {
        return false;
    }
    double magnitude = 0;
    if (!scale(w, exponent - static_cast<int>(behind), magnitude)) {
        return false;
    }
    value = std::bit_cast<double>(std::bit_cast<std::uint64_t>(magnitude) |
                                  std::uint64_t{isNegative ? 1U : 0U} << 63);
    return true;
}

#else

inline constexpr std::ptrdiff_t margin = 0;
inline constexpr std::ptrdiff_t longest = 0;

inline std::uint64_t spacesIn(const char* block) {
    std::uint64_t spaces = 0;
    for (std::ptrdiff_t i = 0; i < blockSize; ++i) {
        spaces |= std::uint64_t{block[i] == ' '} << i;
    }
    return spaces;
}

inline bool read(const char*, const char*, double&) {
    return false;
}

#endif

}  // namespace decimal
