// Files hold next to nothing but vectors, and vectors next to nothing but usual numbers, which are
// read by the register. The text is gone through in blocks: the spaces of a block are sought before
// the numbers that end there are read, so that no number has to wait for the end of the one before
// it. A register looks at bytes around its number; so near the ends of the text the numbers are
// read from a copy with room on either side. What is no usual number, and everything on machines
// without the registers, is left to strtod.

#include "converter/numbers/VectorReader.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "converter/numbers/Decimal.h"

namespace {

/// How much of a text is copied near its ends: at least what `decimal::read` may look at.
constexpr std::ptrdiff_t edge = 2 * decimal::blockSize;
static_assert(edge >= decimal::blockSize + decimal::margin);

/// The number in a piece. strtod would skip white space on into the next one, hence the copy.
/// Requires: room around the piece, see decimal::read.
double numberIn(const char* piece, const char* end) {
    double value = 0;
    return decimal::read(piece, end, value) ? value
                                            : std::strtod(std::string(piece, end).c_str(), nullptr);
}

/// Reads the numbers that end in the blocks that start before `stop`, but no more blocks than there
/// are values for, and returns how many. `piece` is the start of the first number and becomes that
/// of the one behind the last. Requires: room around the blocks, see decimal::read.
std::size_t readBlocks(const char* block, const char* stop, const char*& piece,
                       std::span<double> values) {
    std::size_t count = 0;
    for (; block < stop && values.size() - count >= decimal::blockSize;
         block += decimal::blockSize) {
        for (std::uint64_t spaces = decimal::spacesIn(block); spaces != 0; spaces &= spaces - 1) {
            const char* const end = block + std::countr_zero(spaces);
            values[count++] = numberIn(piece, end);
            piece = end + 1;
        }
    }
    return count;
}

}  // namespace

std::size_t VectorReader::read(Batch& batch) {
    std::size_t count = 0;
    while (piece_ != end_ && batch.size() - count >= decimal::blockSize) {
        const std::span<double> values = std::span(batch).subspan(count);
        const bool isInside = piece_ - begin_ >= decimal::margin && end_ - piece_ >= edge;
        const std::size_t got =
            isInside
                ? readBlocks(piece_, end_ - decimal::margin - decimal::blockSize, piece_, values)
                : readEdge(values);
        count += got != 0 ? got : readLong(values);
    }
    return count;
}

/// Reads numbers from a copy of the text ahead, in which a space follows the last.
std::size_t VectorReader::readEdge(std::span<double> values) {
    std::array<char, decimal::margin + edge + decimal::blockSize> room;
    char* const copy = std::fill_n(room.data(), decimal::margin, '\0');
    const std::ptrdiff_t size = std::min(end_ - piece_, edge);
    char* const last = std::copy_n(piece_, size, copy);
    std::fill_n(last, decimal::blockSize, '\0');
    const bool isEnd = size < edge;
    *last = isEnd && last[-1] != ' ' ? ' ' : '\0';
    const char* piece = copy;
    const std::size_t count = readBlocks(copy, isEnd ? last + 1 : last, piece, values);
    piece_ += std::min(piece - copy, end_ - piece_);
    return count;
}

/// Reads one number that is longer than what else is read at a time.
std::size_t VectorReader::readLong(std::span<double> values) {
    const char* const end = std::find(piece_, end_, ' ');
    values[0] = std::strtod(std::string(piece_, end).c_str(), nullptr);
    piece_ = end == end_ ? end_ : end + 1;
    return 1;
}
