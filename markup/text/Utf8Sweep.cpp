// Files are ASCII for the most part, so the sweep goes by blocks as long as they are plain ASCII,
// and byte by byte through a block that is not.

#include "markup/text/Utf8Sweep.h"

#include <algorithm>
#include <array>

namespace {

using Byte = unsigned char;

constexpr std::size_t blockSize = 64;

/// True when all bytes of the block are ASCII and none is NUL: as signed numbers all are positive.
/// In lanes of bytes and without a branch, so that the compiler takes all lanes at once.
bool isPlainAscii(const Byte* block) {
    using Lanes = std::array<Byte, 16>;
    Lanes faults{};
    for (std::size_t row = 0; row < blockSize; row += faults.size()) {
        for (std::size_t i = 0; i < faults.size(); ++i) {
            faults[i] |= static_cast<signed char>(block[row + i]) > 0 ? 0x00 : 0xFF;
        }
    }
    return faults == Lanes{};
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
        // Past the block that is not plain, by sequences, the last of which may end behind it; then
        // in blocks again, wherever they begin now.
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
