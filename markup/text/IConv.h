#pragma once

#include <iconv.h>

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <span>

#include "markup/text/Pages.h"

/// One run of an open iconv converter over a buffer. What can't be converted becomes "?", one for
/// each source unit skipped. Writes to a target buffer, never past its end, or only counts.
class IConvRun {
  public:
    /// Bytes per unit of both sides, and how a unit "?" is laid out in the target.
    struct Units {
        std::size_t target = 1;
        std::size_t source = 1;
        std::endian targetOrder = std::endian::native;
        /// Source bytes handed to iconv at once while only counting. A small number avoids that the
        /// scratch buffer overflows in the middle of a call, after which iconv converts much of its
        /// input again. Only for sources that iconv may safely be given in pieces: its converter
        /// from EUC-CN to GBK, for one, then loses characters.
        std::size_t countingPiece = SIZE_MAX;
    };

    /// Prepares a run. The converter stays the caller's and must be in its initial state. A target
    /// without data means that the output is only counted.
    IConvRun(iconv_t converter, std::span<const char> source, std::span<char> target, Units units);
    IConvRun(const IConvRun&) = delete;
    IConvRun& operator=(const IConvRun&) = delete;

    /// Lets the run give back the memory of what it has read of the source, which lies in `block`.
    /// Call before `run`; the block must outlive it.
    void consume(Pages& block) { consumed_ = &block; }

    /// Converts until the source ends, ends in the middle of a character, or the target is full.
    void run();

    /// Bytes produced.
    std::size_t bytes() const { return bytes_; }

    /// Characters that iconv reported as converted irreversibly.
    std::size_t irreversible() const { return irreversible_; }

    /// Bytes of an incomplete character left at the end of the source.
    std::size_t unread() const { return inputLeft_; }

  private:
    bool step();
    bool callByScratch(char** input, std::size_t* inputLeft);
    void reset();
    bool replaceUnit();
    void callIConv(char** input, std::size_t* inputLeft);
    void restartScratch();

    iconv_t converter_;
    char* input_;  // iconv wants it so; the source is never written to
    std::size_t inputLeft_;
    char* output_;
    std::size_t room_;  // bytes left at output_
    Units units_;
    bool counting_;          // output goes to scratch_ and is forgotten
    int error_ = 0;          // errno of the last call, 0 for success
    std::size_t bytes_ = 0;  // produced in all
    std::size_t irreversible_ = 0;
    Pages* consumed_ = nullptr;  // holds the source, null when that is to stay
    std::array<char, 2048> scratch_;
};
