#include "markup/text/IConv.h"

#include <errno.h>

#include <algorithm>

namespace {

// Room for any one character with the shift sequences around it (the longest known takes 5 bytes).
constexpr std::size_t leastScratchRoom = 10;

}  // namespace

IConvRun::IConvRun(iconv_t converter, std::span<const char> source, std::span<char> target,
                   Units units)
    : converter_(converter),
      input_(const_cast<char*>(source.data())),
      inputLeft_(source.size()),
      output_(target.data()),
      room_(target.size()),
      units_(units),
      counting_(target.data() == nullptr) {
    if (counting_) {
        restartScratch();
    }
}

void IConvRun::run() {
    const char* last = input_;
    while (inputLeft_ > 0 && step()) {
        if (consumed_ != nullptr) {
            consumed_->discard(last, input_);
        }
        last = input_;
    }
    // The end of the text may still need output: the rest of a UTF-7 group, a shift back to ASCII.
    if (error_ != E2BIG) {
        reset();
    }
}

// Converts up to the next fault, or a piece, and passes over it; false when the run is over.
bool IConvRun::step() {
    constexpr std::size_t consumedPiece = std::size_t{1} << 22;
    const std::size_t longest = counting_              ? units_.countingPiece
                                : consumed_ != nullptr ? consumedPiece
                                                       : SIZE_MAX;
    const std::size_t piece = std::min(inputLeft_, longest);
    const bool moreToCome = piece < inputLeft_;
    const std::size_t bytesBefore = bytes_;
    std::size_t pieceLeft = piece;
    callIConv(&input_, &pieceLeft);
    const bool full = error_ == E2BIG && !counting_ && !callByScratch(&input_, &pieceLeft);
    const bool progress = !full && (pieceLeft < piece || bytes_ > bytesBefore);
    inputLeft_ -= piece - pieceLeft;
    switch (error_) {
        case 0:
            return progress;
        case EILSEQ:
            // With a target such as "ASCII//IGNORE" the error comes after all input was taken.
            return inputLeft_ > 0 && replaceUnit();
        case E2BIG:
            // Into an empty scratch buffer a call that reads nothing would write the same for ever,
            // as the converter from EUC-JISX0213 does once its output was full.
            return counting_ ? pieceLeft < piece : progress;
        case EINVAL:  // a character cut off at the end, be it only that of the piece
            return moreToCome && progress;
        default:  // nothing else is worth another try
            return false;
    }
}

// Calls again through the scratch buffer when the target is nearly full: some converters (to
// EUC-JP, for one) want more room than the character takes, or before they find that there is none.
// False, with nothing written, when the target really is full.
bool IConvRun::callByScratch(char** input, std::size_t* inputLeft) {
    const std::span<char> target(output_, room_);
    const std::size_t bytesBefore = bytes_;
    output_ = scratch_.data();
    room_ = std::min(target.size() + leastScratchRoom, scratch_.size());
    callIConv(input, inputLeft);
    const std::size_t produced = bytes_ - bytesBefore;
    const bool fits = produced <= target.size();
    const std::size_t taken = fits ? produced : 0;
    std::copy_n(scratch_.data(), taken, target.data());
    output_ = target.data() + taken;
    room_ = target.size() - taken;
    bytes_ = bytesBefore + taken;
    error_ = fits ? error_ : E2BIG;
    return fits;
}

// Returns to the initial shift state, with the output that it takes: also what the converter holds
// back, as that from CP1255 does with a letter that may yet get a point.
void IConvRun::reset() {
    callIConv(nullptr, nullptr);
    if (error_ == E2BIG && !counting_) {
        callByScratch(nullptr, nullptr);
    }
}

// Skips a source unit and writes "?" for it. The shift state is reset first and with its output, so
// that the "?" doesn't end up inside a run of two-byte characters.
bool IConvRun::replaceUnit() {
    const std::size_t skipped = std::min(units_.source, inputLeft_);
    input_ += skipped;
    inputLeft_ -= skipped;
    reset();
    if (error_ == E2BIG || room_ < units_.target) {
        error_ = E2BIG;
        return false;
    }
    std::fill_n(output_, units_.target, '\0');
    output_[units_.targetOrder == std::endian::little ? 0 : units_.target - 1] = '?';
    output_ += units_.target;
    room_ -= units_.target;
    bytes_ += units_.target;
    return true;
}

void IConvRun::callIConv(char** input, std::size_t* inputLeft) {
    if (counting_) {
        restartScratch();
    }
    const std::size_t roomBefore = room_;
    const std::size_t count = ::iconv(converter_, input, inputLeft, &output_, &room_);
    error_ = count == static_cast<std::size_t>(-1) ? errno : 0;
    bytes_ += roomBefore - room_;
    irreversible_ += error_ == 0 ? count : 0;
}

void IConvRun::restartScratch() {
    output_ = scratch_.data();
    room_ = scratch_.size();
}
