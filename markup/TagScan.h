#pragma once

#ifdef __x86_64__
#include <emmintrin.h>
#endif

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <string_view>

/// Finds "<" and ">" in a text, which it looks at in blocks of 64 bytes: where a tag ends is known
/// before anything else is known of it, so that the processor need not wait for that to go on.
class TagScan {
  public:
    /// Requires: start <= text.size().
    TagScan(std::string_view text, std::size_t start) : text_(text) { load(start); }

    /// The position of the first "<" from `from` on, the text's size when there is none. Requires:
    /// from <= text.size(), and not before what was asked for last.
    std::size_t findOpening(std::size_t from) {
        const std::uint64_t rest = shifted(openings_, from);
        return rest != 0 ? from + static_cast<std::size_t>(std::countr_zero(rest))
                         : findFarOpening(std::max(from, block_ + blockSize));
    }

    /// The position of the first ">" from `from` on, or 0 when it does not lie within the next 64
    /// bytes: a text without any is not to be searched again and again. Requires: as above.
    std::size_t findClosing(std::size_t from) {
        std::uint64_t rest = shifted(closings_, from);
        if (rest == 0) {
            load(from);
            rest = closings_;
        }
        return rest != 0 ? from + static_cast<std::size_t>(std::countr_zero(rest)) : 0;
    }

  private:
    static constexpr std::size_t blockSize = 64;

    /// The bits of a mark from `from` on, 0 when that lies behind the block.
    std::uint64_t shifted(std::uint64_t marks, std::size_t from) const {
        const std::size_t distance = from - block_;
        return distance < blockSize ? marks >> distance : 0;
    }

    /// The same behind the block. Long ways are quicker in larger steps.
    std::size_t findFarOpening(std::size_t from) {
        constexpr int fewBlocks = 4;
        for (int i = 0; i < fewBlocks && from < text_.size(); ++i, from += blockSize) {
            load(from);
            if (openings_ != 0) {
                return from + static_cast<std::size_t>(std::countr_zero(openings_));
            }
        }
        return from < text_.size() ? std::min(text_.find('<', from), text_.size()) : text_.size();
    }

    void load(std::size_t block) {
        block_ = block;
        if (text_.size() - block >= blockSize) {
            load(text_.data() + block);
            return;
        }
        std::array<char, blockSize> last{};
        std::copy(text_.begin() + static_cast<std::ptrdiff_t>(block), text_.end(), last.begin());
        load(last.data());
    }

    void load(const char* bytes) {
        std::uint64_t openings = 0;
        std::uint64_t closings = 0;
#ifdef __x86_64__
        constexpr std::size_t size = sizeof(__m128i);
        for (std::size_t i = 0; i < blockSize; i += size) {
            const __m128i piece = _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes + i));
            const auto places = [piece](char mark) {
                const __m128i equal = _mm_cmpeq_epi8(piece, _mm_set1_epi8(mark));
                return std::uint64_t{static_cast<unsigned>(_mm_movemask_epi8(equal))};
            };
            openings |= places('<') << i;
            closings |= places('>') << i;
        }
#else
        for (std::size_t i = 0; i < blockSize; ++i) {
            openings |= std::uint64_t{bytes[i] == '<'} << i;
            closings |= std::uint64_t{bytes[i] == '>'} << i;
        }
#endif
        openings_ = openings;
        closings_ = closings;
    }

    std::string_view text_;
    std::size_t block_ = 0;       ///< where the block begins
    std::uint64_t openings_ = 0;  ///< bit n: byte n of the block is "<"
    std::uint64_t closings_ = 0;
};
