#include "converter/CoefficientTable.h"

#ifdef __SSE2__
#include <emmintrin.h>
#endif

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

#include "base/String.h"
#include "converter/DecimalReader.h"

namespace {

constexpr std::size_t blockSize = 64;

/// The spaces among 64 bytes, the first byte's bit lowest.
std::uint64_t spacesIn(const char* block) {
    std::uint64_t spaces = 0;
#ifdef __SSE2__
    constexpr std::size_t registerSize = 16;
    const __m128i space = _mm_set1_epi8(' ');
    for (std::size_t i = 0; i < blockSize; i += registerSize) {
        const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(block + i));
        const auto found = static_cast<unsigned>(_mm_movemask_epi8(_mm_cmpeq_epi8(bytes, space)));
        spaces |= std::uint64_t{found} << i;
    }
#else
    for (std::size_t i = 0; i < blockSize; ++i) {
        spaces |= std::uint64_t{block[i] == ' '} << i;
    }
#endif
    return spaces;
}

/// Calls `use(piece, end)` for each piece between single spaces; nothing behind a last one. The
/// spaces are sought ahead of the use, so that a piece does not have to wait for the one before it
/// to be read to its end.
template <class Use>
void forEachPiece(std::string_view text, Use use) {
    const char* const end = text.data() + text.size();
    const char* piece = text.data();
    const char* block = piece;
    for (; end - block >= static_cast<std::ptrdiff_t>(blockSize); block += blockSize) {
        for (std::uint64_t spaces = spacesIn(block); spaces != 0; spaces &= spaces - 1) {
            const char* const space = block + std::countr_zero(spaces);
            use(piece, space);
            piece = space + 1;
        }
    }
    for (; block != end; ++block) {
        if (*block == ' ') {
            use(piece, block);
            piece = block + 1;
        }
    }
    if (piece != end) {
        use(piece, end);
    }
}

/// What strtod makes of a piece. It would skip white space on into the next one, hence the copy.
double toDouble(std::string_view piece) {
    return std::strtod(std::string(piece).c_str(), nullptr);
}

}  // namespace

int CoefficientTable::kindOf(std::string_view elementName) {
    const auto found = std::find(kindNames.begin(), kindNames.end(), elementName);
    return found == kindNames.end() ? -1 : static_cast<int>(found - kindNames.begin());
}

long CoefficientTable::appendValues(int detector, int kind, std::string_view text) {
    Values& values = lists_[static_cast<std::size_t>(detector) - 1][static_cast<std::size_t>(kind)];
    // Values are appended many at a time: a vector of the usual length then takes its memory once.
    std::array<double, 4096> batch;
    std::size_t count = 0;
    const char* const textEnd = text.data() + text.size();
    forEachPiece(text, [&](const char* piece, const char* end) {
        double& value = batch[count];
        if (!decimal::read(piece, end, textEnd, value)) {
            value = toDouble({piece, end});
        }
        if (++count == batch.size()) {
            values.append(batch.data(), static_cast<long>(count));
            count = 0;
        }
    });
    values.append(batch.data(), static_cast<long>(count));
    return values.count();
}

void CoefficientTable::writeVectors(RecordWriter& record, std::int16_t pixels) {
    for (std::size_t kind = 0; kind < kindCount; ++kind) {
        for (auto& detector : lists_) {
            Values& values = detector[kind];
            while (values.count() < pixels) {
                values.append(vek::String::nan);
            }
            record.doubles(values.data(), static_cast<std::size_t>(pixels));
        }
    }
}
