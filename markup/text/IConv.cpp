// The C library's converters are taken at their best. They come from many hands and differ in what
// they do where a buffer ends; what they make of a text must not depend on that.
//
// Where its output is full, a converter has to undo what it has decoded ahead. That from
// EUC-JISX0213 then writes the same again, for ever if nothing helps, and that to ISO-2022-KR
// shifts otherwise. So the output never gets full: the source is handed over in pieces so small
// that the room of a call holds whatever they become, and the room is the same whether the output
// is kept or only counted. Both passes make the same calls then, and the second needs just what the
// first has counted. What lies ahead of a fault has to be decoded anew as well, so pieces are
// smaller where faults are.
//
// A piece may end anywhere: a converter leaves a character that isn't complete, and the next piece
// begins with it. There are two exceptions. That from EUC-CN to GBK passes over the first byte of
// what it leaves, and leaves the last character of a piece even if it is complete; it is caught at
// that and the byte handed over again. Those to IBM1390 and IBM1399 join a letter and its mark only
// if they come in one call; so no piece of UTF-8 begins with one of these marks. Nor does one begin
// within a character: of a call that ends so the system does not tell what was lost in it.
//
// Told to ignore faults, the system passes over them and says EILSEQ once it has taken all; what it
// then leaves is an incomplete character.

#include "markup/text/IConv.h"

#include <errno.h>
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <bit>
#include <cstring>
#include <new>

#include "markup/text/EncodingNameTable.h"

namespace {

/// Room for what the largest converter takes to be loaded.
constexpr std::size_t converterRoom = std::size_t{1} << 20;

// NOLINTNEXTLINE(performance-no-int-to-ptr): this is how iconv_open says that it failed
const iconv_t noConverter = reinterpret_cast<iconv_t>(-1);

/// A name as the system is given it, empty where it is too long.
struct PreparedName {
    explicit PreparedName(TextArg name) : isUsable(name.view().size() < maxEncodingNameLength) {
        if (isUsable) {
            IConv::prepareName(text.data(), name);
        }
    }

    std::string_view view() const { return text.data(); }

    /// Whether big-endian text is asked for where memory is in host order.
    bool isSwapped(TextArg name) const {
        return std::endian::native == std::endian::little && name.view().size() < view().size();
    }

    std::array<char, IConv::nameBufferSize> text{};
    bool isUsable;
};

/// EMFILE or ENFILE when no descriptor can be had, else 0.
int lackOfDescriptors() {
    const int descriptor = ::open("/", O_RDONLY | O_CLOEXEC);
    if (descriptor >= 0) {
        ::close(descriptor);
        return 0;
    }
    return errno == EMFILE || errno == ENFILE ? errno : 0;
}

/// Opens a converter or tells why there is none. The system says EINVAL of unknown names, but also
/// where it lacks memory or a descriptor (it never needs two) to load a converter, or to read its
/// list of them; a list that it could not read is empty to it from then on. A text must not pass
/// for one of an unknown encoding then, so the system is asked only while both are to be had, and
/// twice.
int openConverter(iconv_t& handle, const char* to, const char* from) {
    for (int attempt = 0; attempt < 2; ++attempt) {
        Pages::requireRoom(converterRoom);
        const int lack = lackOfDescriptors();
        if (lack != 0) {
            return lack;
        }
        handle = ::iconv_open(to, from);
        if (handle != noConverter) {
            return 0;
        }
        if (errno == ENOMEM) {
            throw std::bad_alloc();
        }
    }
    return errno;
}

/// Swaps the two bytes of every whole 16-bit unit.
void swapUnits(std::span<char> bytes) {
    for (std::size_t i = 1; i < bytes.size(); i += 2) {
        std::swap(bytes[i - 1], bytes[i]);
    }
}

/// Whether a piece of UTF-8 should not begin here: within a character, or with one that some target
/// joins with the one before it: U+0300, U+0301, U+02E5, U+02E9, U+309A.
bool continuesCharacter(std::string_view text) {
    constexpr std::array<std::string_view, 5> marks = {"\xCC\x80", "\xCC\x81", "\xCB\xA5",
                                                       "\xCB\xA9", "\xE3\x82\x9A"};
    return (text.front() & 0xC0) == 0x80 || std::ranges::any_of(marks, [&](std::string_view mark) {
               return text.starts_with(mark);
           });
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
    const bool isUsable = toName.isUsable && fromName.isUsable;
    error_ = isUsable ? openConverter(handle_, toName.text.data(), fromName.text.data()) : EINVAL;
    isTargetSwapped_ = toName.isSwapped(to);
    isSourceSwapped_ = fromName.isSwapped(from);
    ignoresFaults_ = toName.view().find("IGNORE") != std::string_view::npos;
}

IConv::~IConv() {
    if (handle_ != noConverter) {
        ::iconv_close(handle_);
    }
}

std::size_t IConv::run(std::string_view source, std::span<char> target) {
    source_ = source;
    target_ = target;
    isCounting_ = target.data() == nullptr;
    while (error_ == 0 && !source_.empty()) {
        const char* const begin = source_.data();
        if (!convertPiece()) {
            break;
        }
        if (consumed_ != nullptr && !isCounting_) {
            consumed_->discard(begin, source_.data());
        }
    }
    // The end of the text may still need output: the rest of a UTF-7 group, a shift back to ASCII.
    if (error_ == 0) {
        reset();
    }
    return produced_;
}

/// Converts the next piece, or what comes before a fault and that; false when this was the last.
bool IConv::convertPiece() {
    const std::string_view piece = nextPiece();
    const bool isLast = piece.size() == source_.size();
    const Outcome outcome = call(piece);
    const bool hasTaken = outcome.left.size() < piece.size();
    source_.remove_prefix(piece.size() - outcome.left.size());
    store(outcome.output);
    irreversible_ += outcome.irreversible;
    switch (outcome.error) {
        case 0:
        case E2BIG:
            error_ = hasTaken ? error_ : E2BIG;
            return hasTaken;
        case EILSEQ:
            return (ignoresFaults_ && hasTaken && !isLast) || (!source_.empty() && replaceUnit());
        case EINVAL:
            if (!isLast && hasTaken && passesOverByte(outcome.left)) {
                source_ = {source_.data() - 1, source_.size() + 1};
            }
            return !isLast && (hasTaken || replaceUnit());
        default:
            error_ = outcome.error;
            return false;
    }
}

/// Only UTF-8 minds where a piece ends; in what isn't UTF-8 the search makes no difference.
std::string_view IConv::nextPiece() {
    std::size_t size = std::min(pieceLength_, source_.size());
    const std::size_t least = size - std::min(size, shortestPiece / 2);
    while (size < source_.size() && size > least && sourceUnit_ == 1 &&
           continuesCharacter(source_.substr(size))) {
        --size;
    }
    pieceLength_ = std::min(2 * pieceLength_, longestPiece);
    return source_.substr(0, size);
}

/// Whether the converter has passed over the first byte of an incomplete character, having left the
/// rest of it: it leaves nothing, or would pass over what it left as well.
bool IConv::passesOverByte(std::string_view left) {
    return left.empty() || (left.size() == 1 && call(left).left.empty());
}

/// Skips a source unit and writes "?" for it. The shift state is reset first and with its output,
/// so that the "?" doesn't end up inside a run of two-byte characters.
bool IConv::replaceUnit() {
    source_.remove_prefix(std::min(sourceUnit_, source_.size()));
    pieceLength_ = shortestPiece;
    reset();
    std::array<char, 4> mark{};
    mark[std::endian::native == std::endian::little ? 0 : targetUnit_ - 1] = '?';
    store(std::span(mark).first(targetUnit_));
    return true;
}

/// Hands `input` over; without one the converter returns to its initial shift state and gives what
/// it holds back.
IConv::Outcome IConv::call(std::string_view input) {
    char* in = const_cast<char*>(input.data());  // iconv wants it so, and never writes there
    if (isSourceSwapped_) {
        std::ranges::copy(input, swapped_.begin());
        in = swapped_.data();
        swapUnits({in, input.size()});
    }
    char* const output = target_.size() < callRoom ? scratch_.data() : target_.data();
    char* out = output;
    std::size_t room = callRoom;
    std::size_t inputLeft = input.size();
    const std::size_t count =
        ::iconv(handle_, input.empty() ? nullptr : &in, &inputLeft, &out, &room);
    const int error = count == static_cast<std::size_t>(-1) ? errno : 0;
    if (isTargetSwapped_) {
        swapUnits({output, out});
    }
    // Told to ignore faults, some converters go beyond the end.
    const std::size_t taken = inputLeft > input.size() ? input.size() : input.size() - inputLeft;
    return {input.substr(taken), {output, out}, error, error == 0 ? count : 0};
}

/// Appends output to the target as far as there is room, or only counts it.
void IConv::store(std::span<const char> output) {
    if (!isCounting_) {
        error_ = output.size() > target_.size() ? E2BIG : error_;
        output = output.first(std::min(output.size(), target_.size()));
        std::memmove(target_.data(), output.data(), output.size());
        target_ = target_.subspan(output.size());
    }
    produced_ += output.size();
}
