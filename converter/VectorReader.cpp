#include "converter/VectorReader.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "converter/DecimalReader.h"
#include "converter/UsualDecimal.h"

namespace {

/// Reads a usual number that lies near an end of its text, where bytes around it may not be there.
bool readUsualCopy(const char* piece, const char* end, double& value) {
    std::array<char, 2 * decimal::usualMargin + decimal::longestUsual> room{};
    if (end - piece > decimal::longestUsual) {
        return false;
    }
    char* const copy = room.data() + decimal::usualMargin;
    return decimal::readUsual(copy, std::copy(piece, end, copy), value);
}

/// What strtod makes of a piece. It would skip white space on into the next one, hence the copy.
double strtodOf(const char* piece, const char* end) {
    return std::strtod(std::string(piece, end).c_str(), nullptr);
}

/// The number in a piece, whatever it looks like and wherever it lies.
double anyNumber(const char* piece, const char* end) {
    double value = 0;
    return readUsualCopy(piece, end, value) || decimal::read(piece, end, value)
               ? value
               : strtodOf(piece, end);
}

#ifdef __x86_64__
constexpr std::ptrdiff_t blockSize = 64;

/// The spaces among the bytes of a block, the first byte's bit lowest.
std::uint64_t spacesIn(const char* block) {
    const auto spaces = [block](int offset) {
        const __m128i bytes = decimal::registerAt(block + offset);
        const int found = _mm_movemask_epi8(_mm_cmpeq_epi8(bytes, _mm_set1_epi8(' ')));
        return std::uint64_t{static_cast<unsigned>(found)} << offset;
    };
    return spaces(0) | spaces(16) | spaces(32) | spaces(48);
}
#endif

}  // namespace

std::size_t VectorReader::read(Batch& batch) {
    std::size_t count = 0;
    const char* piece = piece_;
#ifdef __x86_64__
    // The spaces of a block are sought before its numbers are read, so that no number has to wait
    // for the end of the one before it.
    for (; end_ - block_ >= blockSize && count + blockSize <= batch.size(); block_ += blockSize) {
        const bool hasMargins = block_ - readable_ >= decimal::usualMargin &&
                                readableEnd_ - block_ >= blockSize + decimal::usualMargin;
        for (std::uint64_t spaces = spacesIn(block_); spaces != 0; spaces &= spaces - 1) {
            const char* const end = block_ + std::countr_zero(spaces);
            double& value = batch[count++];
            if (!hasMargins || !decimal::readUsual(piece, end, value)) {
                value = anyNumber(piece, end);
            }
            piece = end + 1;
        }
    }
    const bool isNearEnd = end_ - block_ < blockSize;
#else
    const bool isNearEnd = true;
#endif
    while (isNearEnd && piece != end_ && count < batch.size()) {
        const char* const end = std::find(piece, end_, ' ');
        double& value = batch[count++];
        const bool hasMargins =
            end - readable_ >= decimal::usualMargin && readableEnd_ - piece >= decimal::usualMargin;
        if (!hasMargins || !decimal::readUsual(piece, end, value)) {
            value = anyNumber(piece, end);
        }
        piece = end == end_ ? end_ : end + 1;
    }
    piece_ = piece;
    return count;
}
