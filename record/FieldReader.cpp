// A field that reaches beyond the end is told apart from one that is not in its form, as the first
// is what a cut leaves, and the second damage. So of a field that is not whole the part that is
// there is checked too: a date that ends in "2015-0" is cut, one that ends in "2015x" is none.

#include "record/FieldReader.h"

#include <algorithm>
#include <array>
#include <bit>

namespace record {

namespace {

bool isDigit(char c) {
    return '0' <= c && c <= '9';
}

/// The unsigned integer of raw bytes, at most 8, whatever the machine's own order is.
std::uint64_t integerOf(std::string_view bytes, ByteOrder order) {
    std::uint64_t value = 0;
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        const char byte = bytes[order == ByteOrder::big ? i : bytes.size() - 1 - i];
        value = value << 8 | static_cast<unsigned char>(byte);
    }
    return value;
}

/// One byte of an integer of 8, as it stands in a record.
std::uint64_t byteAt(std::uint64_t value, std::size_t place, ByteOrder order) {
    return value >> (order == ByteOrder::big ? 56 - 8 * place : 8 * place) & 0xFF;
}

/// How many characters from the start on are those of a date. A year has four digits or more, and
/// may have a minus.
std::size_t datePrefix(std::string_view text, bool& isWhole) {
    constexpr std::string_view rest = "-dd-ddTdd:dd:dd";
    constexpr std::size_t leastYear = 4;
    std::size_t at = text.starts_with('-') ? 1 : 0;
    const std::size_t year = at;
    while (at < text.size() && isDigit(text[at])) {
        ++at;
    }
    std::size_t done = 0;
    const bool isYear = at - year >= leastYear;
    for (; isYear && done < rest.size() && at < text.size(); ++done, ++at) {
        if (rest[done] == 'd' ? !isDigit(text[at]) : rest[done] != text[at]) {
            break;
        }
    }
    isWhole = done == rest.size();
    return at;
}

/// A year of the converter's has at most 11 characters, of 32 bits.
constexpr std::size_t longestDate = 26;

}  // namespace

bool FieldReader::refuse(int number, bool isAtEnd) {
    obstacle_ = number;
    isAtEnd_ = isAtEnd;
    return false;
}

bool FieldReader::take(int number, std::uint64_t length) {
    if (length > left()) {
        return refuse(number, true);
    }
    offset_ += length;
    return true;
}

bool FieldReader::readMarker(int number) {
    const std::string_view there = bytes_.view(offset_, marker.size());
    return marker.starts_with(there) ? take(number, marker.size()) : refuse(number, false);
}

bool FieldReader::readNumber(int number, std::size_t width, std::uint64_t& value,
                             std::uint64_t least) {
    const std::string_view there = bytes_.view(offset_, width);
    const char fill = field(number).fill;
    value = 0;
    // Two characters may begin with the fill; wider texts are as wide as they need to be.
    for (std::size_t i = 0; i < there.size(); ++i) {
        const bool isFill = i == 0 && width == numberWidth && there[i] == fill;
        if (!isFill && (!isDigit(there[i]) || (i == 0 && there[i] == '0'))) {
            return refuse(number, false);
        }
        value = value * 10 + static_cast<std::uint64_t>(isFill ? 0 : there[i] - '0');
    }
    return there.size() < width || value >= least ? take(number, width) : refuse(number, false);
}

bool FieldReader::readText(int number, std::uint64_t length, std::string_view prefix,
                           TextPlace& text) {
    const std::uint64_t there = std::min(length, left());
    const auto compared = static_cast<std::size_t>(std::min<std::uint64_t>(there, prefix.size()));
    if (length < prefix.size() || bytes_.view(offset_, compared) != prefix.substr(0, compared)) {
        return refuse(number, false);
    }
    const std::uint64_t start = offset_;
    if (!take(number, length)) {
        return false;
    }
    text = {start, length};
    return true;
}

bool FieldReader::readTextWithout(std::string_view forbidden, int number, std::uint64_t length,
                                  TextPlace& text) {
    // In pieces, as damage can make a text of any length.
    const std::uint64_t end = offset_ + std::min(length, left());
    for (std::uint64_t at = offset_; !forbidden.empty() && at < end;) {
        const auto wanted = std::min<std::uint64_t>(end - at, ByteSource::windowSize);
        const std::string_view piece = bytes_.view(at, static_cast<std::size_t>(wanted));
        searched_ += piece.size();
        if (piece.find_first_of(forbidden) != std::string_view::npos) {
            return refuse(number, false);
        }
        at += piece.size();
    }
    text = {offset_, length};
    return take(number, length);
}

bool FieldReader::readDate(int number, TextPlace& text) {
    const std::string_view there = bytes_.view(offset_, longestDate);
    bool isWhole = false;
    const std::size_t length = datePrefix(there, isWhole);
    if (!isWhole) {
        // A view that is full holds the longest date, so this is none.
        return refuse(number, length == there.size() && there.size() < longestDate);
    }
    text = {offset_, length};
    return take(number, length);
}

bool FieldReader::readInt16(int number, std::int16_t& value) {
    const std::string_view there = bytes_.view(offset_, sizeof value);
    value = static_cast<std::int16_t>(static_cast<std::uint16_t>(integerOf(there, order_)));
    return take(number, sizeof value);
}

bool FieldReader::readCount(int number, std::int16_t& value) {
    const std::uint64_t start = offset_;
    if (!readInt16(number, value)) {
        return false;
    }
    if (value < 0) {
        offset_ = start;  // damage is told where the field begins
        return refuse(number, false);
    }
    return true;
}

bool FieldReader::readByte(int number, std::uint8_t& value) {
    const std::string_view there = bytes_.view(offset_, 1);
    value = static_cast<std::uint8_t>(integerOf(there, order_));
    return take(number, 1);
}

bool FieldReader::readReal(int number, std::optional<std::uint64_t> expected, std::uint64_t& bits) {
    const std::string_view there = bytes_.view(offset_, sizeof bits);
    // Compared by bytes and not by value, so that NaN agrees with itself and 0 not with -0.
    for (std::size_t i = 0; expected && i < there.size(); ++i) {
        if (byteAt(*expected, i, order_) != static_cast<unsigned char>(there[i])) {
            return refuse(number, false);
        }
    }
    bits = integerOf(there, order_);
    return take(number, sizeof bits);
}

bool FieldReader::skipVectors(int number, std::int16_t pixels) {
    const auto values = static_cast<std::uint64_t>(pixels) * kindCount * detectorCount;
    return take(number, values * sizeof(double));
}

}  // namespace record
