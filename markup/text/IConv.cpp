#include "markup/text/IConv.h"

#include <errno.h>

#include <algorithm>
#include <bit>
#include <cstring>
#include <new>
#include <vector>

#include "markup/text/EncodingNameTable.h"

namespace {

// Room for any one character with the shift sequences around it (the longest known takes 5 bytes).
constexpr std::size_t leastScratchRoom = 10;

// Room for what the largest converter takes to be loaded.
constexpr std::size_t converterRoom = std::size_t{1} << 20;

// Bytes that are counted at once. UTF-8 is counted three times as fast in pieces. What is decoded
// has to come in pieces whose output fits: not all converters go on when it was full, that from
// EUC-JISX0213 writes the same for ever. No byte becomes more than 16.
constexpr std::size_t utf8Piece = 1024;
constexpr std::size_t decodedPiece = 128;

// NOLINTNEXTLINE(performance-no-int-to-ptr): this is how iconv_open says that it failed
const iconv_t noConverter = reinterpret_cast<iconv_t>(-1);

// A name as the system is given it, empty where it is too long.
struct PreparedName {
    explicit PreparedName(TextArg name) : isUsable(name.view().size() < maxEncodingNameLength) {
        if (isUsable) {
            IConv::prepareName(text.data(), name);
        }
    }

    // Whether big-endian text is asked for where memory is in host order.
    bool isSwapped(TextArg name) const {
        return std::endian::native == std::endian::little &&
               name.view().size() < std::strlen(text.data());
    }

    std::array<char, IConv::nameBufferSize> text{};
    bool isUsable;
};

// Throws std::bad_alloc when memory does not suffice: a text must not pass for one of an unknown
// encoding then.
iconv_t openConverter(const char* to, const char* from) {
    iconv_t handle = ::iconv_open(to, from);
    if (handle == noConverter && errno == EINVAL) {
        // Said of unknown names, but also when memory ran out while a converter was being loaded.
        // Only a second attempt tells them apart.
        Pages::requireRoom(converterRoom);
        handle = ::iconv_open(to, from);
    }
    if (handle == noConverter && errno == ENOMEM) {
        throw std::bad_alloc();
    }
    return handle;
}

// Swaps the two bytes of every whole 16-bit unit.
void swapUnits(std::span<char> bytes) {
    for (std::size_t i = 1; i < bytes.size(); i += 2) {
        std::swap(bytes[i - 1], bytes[i]);
    }
}

}  // namespace

char* IConv::prepareName(char* buffer, TextArg name) {
    const std::string_view text = name.view();
    char* const end = std::ranges::transform(text, buffer, [](char c) {
                          return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
                      }).out;
    const std::string_view suffix = std::string_view(buffer, text.size()) == "UTF-16" ? "BE" : "";
    *std::ranges::copy(suffix, end).out = '\0';
    return buffer;
}

IConv::IConv(TextArg to, TextArg from, std::size_t targetUnit, std::size_t sourceUnit)
    : handle_(noConverter), targetUnit_(targetUnit), sourceUnit_(sourceUnit) {
    const PreparedName toName(to);
    const PreparedName fromName(from);
    if (toName.isUsable && fromName.isUsable) {
        handle_ = openConverter(toName.text.data(), fromName.text.data());
        isTargetSwapped_ = toName.isSwapped(to);
        isSourceSwapped_ = fromName.isSwapped(from);
    }
    if (x_GetEncodingCodePage(to) == CodePageUtf8) {
        countingPiece_ = x_GetEncodingCodePage(from) == CodePageUtf8 ? utf8Piece : decodedPiece;
    }
}

IConv::~IConv() {
    if (isOpen()) {
        ::iconv_close(handle_);
    }
}

bool IConv::isOpen() const {
    return handle_ != noConverter;
}

std::size_t IConv::run(std::string_view source, std::span<char> target) {
    if (!isOpen()) {
        return 0;
    }
    std::vector<char> swapped;
    if (isSourceSwapped_) {
        swapped.assign(source.begin(), source.end());
        swapUnits(swapped);
        source = std::string_view(swapped.data(), swapped.size());
    }
    input_ = const_cast<char*>(source.data());
    inputLeft_ = source.size();
    output_ = target.data();
    room_ = target.size();
    counting_ = target.data() == nullptr;
    if (counting_) {
        restartScratch();
    }
    const char* last = input_;
    while (inputLeft_ > 0 && step()) {
        if (consumed_ != nullptr && !counting_ && swapped.empty()) {
            consumed_->discard(last, input_);
        }
        last = input_;
    }
    // The end of the text may still need output: the rest of a UTF-7 group, a shift back to ASCII.
    if (error_ != E2BIG) {
        reset();
    }
    if (isTargetSwapped_ && !counting_) {
        swapUnits(target.first(bytes_));
    }
    return bytes_;
}

// Converts up to the next fault, or a piece, and passes over it; false when the run is over.
bool IConv::step() {
    constexpr std::size_t consumedPiece = std::size_t{1} << 22;
    const std::size_t longest = counting_              ? countingPiece_
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
bool IConv::callByScratch(char** input, std::size_t* inputLeft) {
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
void IConv::reset() {
    callIConv(nullptr, nullptr);
    if (error_ == E2BIG && !counting_) {
        callByScratch(nullptr, nullptr);
    }
}

// Skips a source unit and writes "?" for it. The shift state is reset first and with its output, so
// that the "?" doesn't end up inside a run of two-byte characters.
bool IConv::replaceUnit() {
    const std::size_t skipped = std::min(sourceUnit_, inputLeft_);
    input_ += skipped;
    inputLeft_ -= skipped;
    reset();
    if (error_ == E2BIG || room_ < targetUnit_) {
        error_ = E2BIG;
        return false;
    }
    std::fill_n(output_, targetUnit_, '\0');
    output_[(std::endian::native == std::endian::little) != isTargetSwapped_ ? 0
                                                                             : targetUnit_ - 1] =
        '?';
    output_ += targetUnit_;
    room_ -= targetUnit_;
    bytes_ += targetUnit_;
    return true;
}

void IConv::callIConv(char** input, std::size_t* inputLeft) {
    if (counting_) {
        restartScratch();
    }
    const std::size_t roomBefore = room_;
    const std::size_t count = ::iconv(handle_, input, inputLeft, &output_, &room_);
    error_ = count == static_cast<std::size_t>(-1) ? errno : 0;
    bytes_ += roomBefore - room_;
    // What a call that resets the shift state returns are no characters.
    irreversible_ += error_ == 0 && input != nullptr ? count : 0;
}

void IConv::restartScratch() {
    output_ = scratch_.data();
    room_ = scratch_.size();
}
