#pragma once

#ifdef __x86_64__
#include <emmintrin.h>
#endif

#include <bit>
#include <cstddef>
#include <string_view>

#include "markup/CharClass.h"

/// Scanning by the register where a run is likely to be short and its length hard to foresee: going
/// byte by byte, the processor would guess wrong at the end of almost every one.

/// Bytes that are looked at together, and the bits that stand for all of them.
inline constexpr std::size_t x_BlockSize = 16;
inline constexpr unsigned x_WholeBlock = 0xFFFF;

#ifdef __x86_64__

/// Which of the 16 bytes at `bytes` are no letter, digit, "_" or ":"; bit n stands for byte n.
inline unsigned x_NoNameBytes(const char* bytes) {
    const __m128i values = _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes));
    // A byte less the first of a range is at most the range's length, without a sign.
    const auto isWithin = [](__m128i tested, char first, char last) {
        const __m128i offset = _mm_sub_epi8(tested, _mm_set1_epi8(first));
        const __m128i most = _mm_set1_epi8(static_cast<char>(last - first));
        return _mm_cmpeq_epi8(_mm_min_epu8(offset, most), offset);
    };
    const __m128i lowered = _mm_or_si128(values, _mm_set1_epi8('a' - 'A'));
    const __m128i isName =
        _mm_or_si128(_mm_or_si128(isWithin(lowered, 'a', 'z'), isWithin(values, '0', ':')),
                     _mm_cmpeq_epi8(values, _mm_set1_epi8('_')));
    return static_cast<unsigned>(_mm_movemask_epi8(isName)) ^ x_WholeBlock;
}

/// Which of 16 bytes are the same at both places; bit n stands for byte n.
inline unsigned x_SameBytes(const char* bytes, const char* others) {
    const __m128i equal = _mm_cmpeq_epi8(_mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes)),
                                         _mm_loadu_si128(reinterpret_cast<const __m128i*>(others)));
    return static_cast<unsigned>(_mm_movemask_epi8(equal));
}

#else

inline unsigned x_NoNameBytes(const char* bytes) {
    unsigned others = 0;
    for (std::size_t i = 0; i < x_BlockSize; ++i) {
        const char c = bytes[i];
        const char lowered = static_cast<char>(c | ('a' - 'A'));
        const bool isName =
            (lowered >= 'a' && lowered <= 'z') || (c >= '0' && c <= ':') || c == '_';
        others |= static_cast<unsigned>(!isName) << i;
    }
    return others;
}

inline unsigned x_SameBytes(const char* bytes, const char* others) {
    unsigned same = 0;
    for (std::size_t i = 0; i < x_BlockSize; ++i) {
        same |= static_cast<unsigned>(bytes[i] == others[i]) << i;
    }
    return same;
}

#endif

/// How many of the next bytes at `pos` are letters, digits, "_" or ":", which belong to names of
/// all classes; perhaps fewer than there are, so that the caller looks on. Requires: pos <= size.
inline std::size_t x_NameRun(std::string_view text, std::size_t pos) {
    std::size_t run = 0;
#ifdef __x86_64__
    constexpr std::size_t size = 16;
    for (; text.size() - pos - run >= size; run += size) {
        const unsigned others = x_NoNameBytes(text.data() + pos + run);
        if (others != 0) {
            return run + static_cast<std::size_t>(std::countr_zero(others));
        }
    }
#else
    static_cast<void>(text);
    static_cast<void>(pos);
#endif
    return run;
}

/// The first position from `pos` on that does not hold white space. Requires: pos <= size.
inline std::size_t x_SkipSpace(std::string_view text, std::size_t pos) {
    if (pos == text.size() || !x_IsClass(text[pos], ClassSpace)) {
        return pos;
    }
#ifdef __x86_64__
    constexpr std::size_t size = 16;
    for (; text.size() - pos >= size; pos += size) {
        const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(text.data() + pos));
        __m128i isSpace = _mm_setzero_si128();
        for (const char space : charclass::space) {
            isSpace = _mm_or_si128(isSpace, _mm_cmpeq_epi8(bytes, _mm_set1_epi8(space)));
        }
        const auto others = static_cast<unsigned>(_mm_movemask_epi8(isSpace)) ^ 0xFFFF;
        if (others != 0) {
            return pos + static_cast<std::size_t>(std::countr_zero(others));
        }
    }
#endif
    while (pos < text.size() && x_IsClass(text[pos], ClassSpace)) {
        ++pos;
    }
    return pos;
}

/// The first position from `pos` on that holds a byte of one of the classes, all of which end
/// names. Requires: pos <= size.
inline std::size_t x_SkipName(std::string_view text, std::size_t pos, unsigned classes) {
    pos += x_NameRun(text, pos);
    while (pos < text.size() && !x_IsClass(text[pos], classes)) {
        ++pos;
    }
    return pos;
}

/// The position of the first "<" or "&", the text's size when there is none.
inline std::size_t x_FindMark(std::string_view text) {
    std::size_t pos = 0;
#ifdef __x86_64__
    constexpr std::size_t size = 16;
    const auto marksIn = [&text](std::size_t at) {
        const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(text.data() + at));
        return _mm_or_si128(_mm_cmpeq_epi8(bytes, _mm_set1_epi8('<')),
                            _mm_cmpeq_epi8(bytes, _mm_set1_epi8('&')));
    };
    for (; text.size() - pos >= 4 * size; pos += 4 * size) {
        const __m128i first = _mm_or_si128(marksIn(pos), marksIn(pos + size));
        const __m128i second = _mm_or_si128(marksIn(pos + 2 * size), marksIn(pos + 3 * size));
        if (_mm_movemask_epi8(_mm_or_si128(first, second)) != 0) {
            break;
        }
    }
    while (text.size() - pos >= size && _mm_movemask_epi8(marksIn(pos)) == 0) {
        pos += size;
    }
#endif
    while (pos < text.size() && text[pos] != '<' && text[pos] != '&') {
        ++pos;
    }
    return pos;
}
