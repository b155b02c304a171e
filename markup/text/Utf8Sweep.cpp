#include "markup/text/Utf8Sweep.h"

#ifdef __x86_64__
#include <emmintrin.h>
#endif

#include <algorithm>

namespace {

using Byte = unsigned char;

constexpr std::size_t blockSize = 64;

/// True when all bytes of the block are ASCII and none is NUL.
bool isPlainAscii(const Byte* block) {
#ifdef __x86_64__
    __m128i all = _mm_setzero_si128();
    __m128i least = _mm_set1_epi8(-1);
    for (std::size_t i = 0; i < blockSize; i += sizeof(__m128i)) {
        const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(block + i));
        all = _mm_or_si128(all, bytes);
        least = _mm_min_epu8(least, bytes);
    }
    const __m128i isNul = _mm_cmpeq_epi8(least, _mm_setzero_si128());
    return _mm_movemask_epi8(_mm_or_si128(all, isNul)) == 0;
#else
    // Kept in bytes, so that the compiler can take many at once.
    Byte high = 0;
    Byte nul = 0;
    for (std::size_t i = 0; i < blockSize; ++i) {
        high = static_cast<Byte>(high | block[i]);
        nul = static_cast<Byte>(nul | (block[i] == 0 ? 1 : 0));
    }
    return (high & 0x80) == 0 && nul == 0;
#endif
}

constexpr bool isWithin(Byte byte, Byte first, Byte last) {
    return byte >= first && byte <= last;
}

constexpr bool isContinuation(Byte byte) {
    return isWithin(byte, 0x80, 0xBF);
}

/// Length of the valid sequence at `text`, 0 when there is none.
std::size_t sequenceLength(const Byte* text, std::size_t left) {
    const Byte lead = text[0];
    if (lead < 0x80) {
        return lead != 0 ? 1 : 0;
    }
    if (isWithin(lead, 0xC2, 0xDF)) {
        return left >= 2 && isContinuation(text[1]) ? 2 : 0;
    }
    if (isWithin(lead, 0xE0, 0xEF)) {
        // No overlong forms behind E0, no surrogates behind ED.
        const bool second =
            left >= 3 && isWithin(text[1], lead == 0xE0 ? 0xA0 : 0x80, lead == 0xED ? 0x9F : 0xBF);
        return second && isContinuation(text[2]) ? 3 : 0;
    }
    if (isWithin(lead, 0xF0, 0xF4)) {
        // No overlong forms behind F0, nothing above U+10FFFF behind F4.
        const bool second =
            left >= 4 && isWithin(text[1], lead == 0xF0 ? 0x90 : 0x80, lead == 0xF4 ? 0x8F : 0xBF);
        return second && isContinuation(text[2]) && isContinuation(text[3]) ? 4 : 0;
    }
    return 0;
}

}  // namespace

std::size_t markup::plainUtf8Length(std::string_view text) {
    const auto* const bytes = reinterpret_cast<const Byte*>(text.data());
    std::size_t passed = 0;
    while (passed < text.size()) {
        if (text.size() - passed >= blockSize && isPlainAscii(bytes + passed)) {
            passed += blockSize;
            continue;
        }
        // Past the block that is not plain, byte by byte; then in blocks again.
        const std::size_t blockEnd = std::min(passed + blockSize, text.size());
        while (passed < blockEnd) {
            const std::size_t length = sequenceLength(bytes + passed, text.size() - passed);
            if (length == 0) {
                return passed;
            }
            passed += length;
        }
    }
    return passed;
}
