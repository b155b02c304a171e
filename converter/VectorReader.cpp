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

constexpr std::ptrdiff_t blockSize = 64;

#ifdef __x86_64__
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
    while (piece_ != end_ && count + blockSize <= batch.size()) {
        count = readBlocks(batch, count);
        if (piece_ != end_ && count < batch.size()) {
            const char* const end = std::find(piece_, end_, ' ');
            batch[count++] = anyNumber(piece_, end);
            piece_ = end == end_ ? end_ : end + 1;
        }
    }
    return count;
}

/// Reads the numbers that follow in whole blocks behind the first `count` of the batch, as long as
/// there is room for a block's and memory around it that may be looked at; returns the new count.
std::size_t VectorReader::readBlocks(Batch& batch, std::size_t count) {
#ifdef __x86_64__
    const char* piece = piece_;
    const char* block = piece;
    while (block < end_ && count + blockSize <= batch.size() &&
           block - readable_ >= decimal::usualMargin &&
           readableEnd_ - block >= blockSize + decimal::usualMargin) {
        // The spaces of a block are sought before its numbers are read, so that no number has to
        // wait for the end of the one before it. The end of the text counts as one.
        std::uint64_t spaces = spacesIn(block);
        if (end_ - block < blockSize) {
            const std::uint64_t last = std::uint64_t{1} << (end_ - block);
            spaces = (spaces & (last - 1)) | (end_[-1] != ' ' ? last : 0);
        }
        for (; spaces != 0; spaces &= spaces - 1) {
            const char* const end = block + std::countr_zero(spaces);
            double& value = batch[count++];
            if (!decimal::readUsual(piece, end, value)) {
                value = anyNumber(piece, end);
            }
            piece = end + 1;
        }
        block += blockSize;
    }
    piece_ = std::min(piece, end_);
#endif
    return count;
}
