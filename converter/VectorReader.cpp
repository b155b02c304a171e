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

#ifdef __x86_64__
/// The spaces among 16 bytes, the first byte's bit lowest.
unsigned spacesIn16(const char* bytes) {
    return static_cast<unsigned>(
        _mm_movemask_epi8(_mm_cmpeq_epi8(decimal::registerAt(bytes), _mm_set1_epi8(' '))));
}
#endif

}  // namespace

std::size_t VectorReader::read(Batch& batch) {
    std::size_t count = 0;
    const char* piece = piece_;
    while (piece != end_ && count < batch.size()) {
        batch[count++] = next(piece);
    }
    piece_ = piece;
    return count;
}

/// Reads the number at `piece` and moves on to the next.
inline double VectorReader::next(const char*& piece) const {
#ifdef __x86_64__
    constexpr std::ptrdiff_t window = 32;
    if (piece - readable_ >= decimal::usualMargin && readableEnd_ - piece >= window) {
        const unsigned spaces = spacesIn16(piece) | spacesIn16(piece + window / 2) << (window / 2);
        // Branches, since what is foreseen does not have to be waited for.
        const char* end = piece + std::countr_zero(spaces);
        const bool isLast = spaces == 0 || end >= end_;
        if (isLast) [[unlikely]] {
            end = end_;
        }
        double value = 0;
        if (decimal::readUsual(piece, end, value)) {
            piece = isLast ? end_ : end + 1;
            return value;
        }
    }
#endif
    return nextAnywhere(piece);
}

/// Does the same whatever the number looks like and wherever it lies.
double VectorReader::nextAnywhere(const char*& piece) const {
    const char* const start = piece;
    const char* const end = std::find(start, end_, ' ');
    piece = end == end_ ? end_ : end + 1;
    double value = 0;
    return readUsualCopy(start, end, value) || decimal::read(start, end, value)
               ? value
               : strtodOf(start, end);
}
