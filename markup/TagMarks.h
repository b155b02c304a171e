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

/// The places of "<" and ">" in a text, one after another. They are collected ahead, in blocks and
/// whatever lies between: where the next tags begin and end is known before anything else is known
/// of them, so that the processor need not wait for that to go on.
class TagMarks {
  public:
    /// How many of the next marks may be looked at.
    static constexpr std::size_t ahead = 4;

    /// The text is not owned, must outlive the object and be no longer than INT32_MAX bytes.
    explicit TagMarks(std::string_view text) : text_(text) { end(0); }

    /// Goes to the first mark from `place` on. Requires: place <= text.size(), and not before what
    /// was asked for last.
    void seek(std::size_t place) {
        while (marks_[first_] < place) {
            ++first_;
        }
        if (first_ == end_) {
            scanned_ = std::max(scanned_, place);
        }
    }

    /// The places of the next marks, `ahead` of them, the text's size in place of those that there
    /// aren't; valid until the next call. A ">" may be missing that lies more than 64 bytes
    /// behind the mark before it.
    const std::uint32_t* next() {
        if (end_ - first_ < ahead && scanned_ < text_.size()) {
            collect();
        }
        return &marks_[first_];
    }

    /// Passes over the next marks. Requires: count <= ahead, and that they lie in the text.
    void skip(std::size_t count) { first_ += count; }

  private:
    static constexpr std::size_t blockSize = 64;
    // Far enough to be collected in one go, and near enough to be still in the processor's cache
    // when its turn comes.
    static constexpr std::size_t mostCollected = 512;
    static constexpr std::size_t mostScanned = 1 << 13;

    // A block rarely has more.
    static constexpr std::size_t usualMarks = 7;

    /// Which bytes of a block are marks, bit n for byte n, and how many they are.
    struct Found {
        std::uint64_t bits;
        std::size_t count;
    };

    /// Ends the marks behind `count` of them.
    void end(std::size_t count) {
        end_ = count;
        std::fill_n(&marks_[count], ahead, static_cast<std::uint32_t>(text_.size()));
    }

    /// Collects marks behind the few that are left, which are moved to the front.
    void collect() {
        std::uint32_t* last = std::copy(&marks_[first_], &marks_[end_], marks_.data());
        const std::uint32_t* const needed = &marks_[ahead];
        const std::uint32_t* const enough = &marks_[mostCollected];
        std::size_t place = scanned_;
        const std::size_t stop = place + mostScanned;
        while (place < text_.size() && last < enough && (place < stop || last < needed)) {
            const std::uint32_t* const before = last;
            last = addBlock(last, place);
            place += blockSize;
            if (last == before) {  // long ways are quicker in larger steps
                place = std::min(text_.find('<', place), text_.size());
            }
        }
        scanned_ = place;
        first_ = 0;
        end(static_cast<std::size_t>(last - marks_.data()));
    }

    /// Adds the marks of the block at `place`, which the end of the text may cut short, behind the
    /// last.
    std::uint32_t* addBlock(std::uint32_t* last, std::size_t place) const {
        const char* bytes = text_.data() + place;
        std::array<char, blockSize> lastBytes;
        if (const std::size_t left = text_.size() - place; left < blockSize) {
            lastBytes.fill(0);
            std::copy_n(bytes, left, lastBytes.begin());
            bytes = lastBytes.data();
        }
        return add(last, place, find(bytes));
    }

    static std::uint32_t* add(std::uint32_t* last, std::size_t place, const Found& found) {
        // Any place will do where there is no mark left.
        constexpr std::uint64_t lastBit = std::uint64_t{1} << (blockSize - 1);
        const auto base = static_cast<std::uint32_t>(place);
        std::uint64_t bits = found.bits;
        // So many whether they are there or not: the processor would often guess wrong.
        for (std::size_t i = 0; i < usualMarks; ++i, bits &= bits - 1) {
            last[i] = base + static_cast<std::uint32_t>(std::countr_zero(bits | lastBit));
        }
        for (std::size_t i = usualMarks; i < found.count; ++i, bits &= bits - 1) {
            last[i] = base + static_cast<std::uint32_t>(std::countr_zero(bits));
        }
        return last + found.count;
    }

    static Found find(const char* bytes) {
        Found found{};
#ifdef __x86_64__
        constexpr std::size_t size = sizeof(__m128i);
        // The two marks differ in one bit.
        const __m128i differing = _mm_set1_epi8('<' ^ '>');
        const __m128i mark = _mm_set1_epi8('<' | '>');
        __m128i counts = _mm_setzero_si128();
        for (std::size_t i = 0; i < blockSize; i += size) {
            const __m128i piece = _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes + i));
            const __m128i isMark = _mm_cmpeq_epi8(_mm_or_si128(piece, differing), mark);
            found.bits |= std::uint64_t{static_cast<unsigned>(_mm_movemask_epi8(isMark))} << i;
            counts = _mm_sub_epi8(counts, isMark);  // which is -1 for a mark
        }
        const __m128i halves = _mm_sad_epu8(counts, _mm_setzero_si128());
        const __m128i sum = _mm_add_epi32(halves, _mm_unpackhi_epi64(halves, halves));
        found.count = static_cast<unsigned>(_mm_cvtsi128_si32(sum));
#else
        for (std::size_t i = 0; i < blockSize; ++i) {
            found.bits |= std::uint64_t{bytes[i] == '<' || bytes[i] == '>'} << i;
        }
        found.count = static_cast<std::size_t>(std::popcount(found.bits));
#endif
        return found;
    }

    std::string_view text_;
    std::size_t scanned_ = 0;  ///< where collecting goes on; may lie behind the text's end
    std::size_t first_ = 0;    ///< the next mark
    std::size_t end_ = 0;      ///< how many there are, with `ahead` times the text's size behind
    std::array<std::uint32_t, mostCollected + blockSize + ahead> marks_;
};
