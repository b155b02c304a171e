// The columns are as wide as the record needs them: its size decides the digits of all offsets.

#include "tools/eqrecord/Listing.h"

#include <algorithm>

#include "tools/eqrecord/JsonWriter.h"

namespace eqrecord {

namespace {

constexpr std::uint64_t rowLength = 16;  // bytes
constexpr std::size_t bytesWidth = 50;   // columns
constexpr std::size_t leastDigits = 4;   // of an offset

std::string padded(std::string text, std::size_t width) {
    text.resize(std::max(text.size(), width), ' ');
    return text;
}

std::string offsetOf(std::uint64_t offset, std::size_t width) {
    const std::string digits = hexNumber(offset).substr(2);
    return std::string(width - std::min(width, digits.size()), '0') + digits;
}

}  // namespace

Listing::Listing(record::RecordReader& reader, std::ostream& out)
    : reader_(reader),
      out_(out),
      digits_(offsetOf(reader.size(), leastDigits).size()),
      bytesColumn_(std::max(std::string_view("offset").size(), digits_) + 2) {
    out_ << padded("offset", bytesColumn_) << padded("bytes", bytesWidth) << "field\n";
}

void Listing::write(std::uint64_t offset, std::uint64_t length, int number, const std::string& text,
                    std::string_view ending) {
    std::string row = padded(offsetOf(offset, digits_), bytesColumn_);
    for (; length > rowLength; length -= rowLength, offset += rowLength) {
        out_ << row << hexOf(reader_.view(offset, rowLength), " ") << '\n';
        row.assign(bytesColumn_, ' ');
    }
    row += hexOf(reader_.view(offset, static_cast<std::size_t>(length)), " ");
    const std::string digits = number > 0 ? std::to_string(number) : "";
    out_ << padded(row.append(ending), bytesColumn_ + bytesWidth)
         << std::string(2 - digits.size(), ' ') << digits << "  " << text << '\n';
}

}  // namespace eqrecord
