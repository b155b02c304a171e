#include "converter/numbers/VectorReader.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "converter/numbers/Decimal.h"

// Files hold next to nothing but vectors, and vectors next to nothing but usual numbers, which are
// read by the register. The text is gone through in blocks: the spaces of a block are sought before
// the numbers that end there are read, so that no number has to wait for the end of the one before
// it. A register looks at bytes around its number; so where a block would lie too near an end of
// the text, the next pieces are copied to where there is room on either side. What is no usual
// number, and everything on machines without the registers, is left to strtod.

namespace {

/// What strtod makes of a piece. It would skip white space on into the next one, hence the copy.
double strtodOf(const char* piece, const char* end) {
    return std::strtod(std::string(piece, end).c_str(), nullptr);
}

/// Reads the numbers of a block, each of which ends at one of the `spaces`, into `values`, and
/// returns how many. `piece` is the start of the first and becomes that of the one behind the last.
/// Requires: room around the block, see decimal::read.
std::size_t readPieces(const char* block, std::uint64_t spaces, const char*& piece,
                       double* values) {
    std::size_t count = 0;
    for (; spaces != 0; spaces &= spaces - 1) {
        const char* const end = block + std::countr_zero(spaces);
        double& value = values[count++];
        if (!decimal::read(piece, end, value)) {
            value = strtodOf(piece, end);
        }
        piece = end + 1;
    }
    return count;
}

}  // namespace

std::size_t VectorReader::read(Batch& batch) {
    std::size_t count = 0;
    while (piece_ != end_ && count + decimal::blockSize <= batch.size()) {
        count = readInside(batch, count);
        if (piece_ != end_ && count + decimal::blockSize <= batch.size()) {
            count = readEdge(batch, count);
        }
    }
    return count;
}

/// Reads the numbers that end in the blocks that follow, behind the first `count` of the batch, as
/// long as there is room for a block's and text around it; returns the new count.
std::size_t VectorReader::readInside(Batch& batch, std::size_t count) {
    const char* piece = piece_;
    for (const char* block = piece; block - begin_ >= decimal::margin &&
                                    end_ - block >= decimal::blockSize + decimal::margin &&
                                    count + decimal::blockSize <= batch.size();
         block += decimal::blockSize) {
        count += readPieces(block, decimal::spacesIn(block), piece, &batch[count]);
    }
    piece_ = piece;
    return count;
}

/// Reads the next numbers, at least one, from a copy of the next block; as `readInside`.
std::size_t VectorReader::readEdge(Batch& batch, std::size_t count) {
    std::array<char, decimal::margin + decimal::blockSize + decimal::margin> room{};
    char* const block = room.data() + decimal::margin;
    const std::ptrdiff_t size = std::min<std::ptrdiff_t>(end_ - piece_, decimal::blockSize);
    char* const last = std::copy_n(piece_, size, block);
    if (size < decimal::blockSize && last[-1] != ' ') {
        *last = ' ';  // as if there were one behind the text
    }
    const char* piece = block;
    const std::size_t read = readPieces(block, decimal::spacesIn(block), piece, &batch[count]);
    if (read == 0) {
        batch[count] = readLong();
        return count + 1;
    }
    piece_ += std::min<std::ptrdiff_t>(piece - block, end_ - piece_);
    return count + read;
}

/// Reads a number that is longer than a block.
double VectorReader::readLong() {
    const char* const piece = piece_;
    const char* const end = std::find(piece, end_, ' ');
    piece_ = end == end_ ? end_ : end + 1;
    return strtodOf(piece, end);
}
