#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

#include "record/ByteSource.h"
#include "record/Layout.h"
#include "record/Reading.h"

namespace record {

/// A text that is left where it is.
struct TextPlace {
    std::uint64_t offset = 0;
    std::uint64_t length = 0;
};

/// Reads one field behind the other. A field that is not whole, or not in its form, is an obstacle,
/// at which the reader stays.
class FieldReader {
  public:
    /// The bytes are not owned. They are read from `offset` on.
    FieldReader(ByteSource& bytes, ByteOrder order, std::uint64_t offset)
        : bytes_(bytes), order_(order), offset_(offset) {}

    std::uint64_t offset() const { return offset_; }
    /// The number of the field that could not be read.
    int obstacle() const { return obstacle_; }
    /// Whether the input ends in this field, and all that is there of it is in its form.
    bool isAtEnd() const { return isAtEnd_; }
    /// How many bytes were searched for such characters.
    std::uint64_t searched() const { return searched_; }

    /// Each reads field `number`, and returns whether it is there.
    bool readMarker(int number);
    /// A number text of just so many characters, and of `least` or more.
    bool readNumber(int number, std::size_t width, std::uint64_t& value, std::uint64_t least = 0);
    /// A text that begins with `prefix`, or with a part of it when it is shorter.
    bool readText(int number, std::uint64_t length, std::string_view prefix, TextPlace& text);
    /// A text that has none of these characters.
    bool readTextWithout(std::string_view forbidden, int number, std::uint64_t length,
                         TextPlace& text);
    bool readDate(int number, TextPlace& text);
    bool readInt16(int number, std::int16_t& value);
    /// The same of a value that must not be negative.
    bool readCount(int number, std::int16_t& value);
    bool readByte(int number, std::uint8_t& value);
    /// The bits of a double, which must be those of `expected` if there are any.
    bool readReal(int number, std::optional<std::uint64_t> expected, std::uint64_t& bits);
    bool skipVectors(int number, std::int16_t pixels);

  private:
    /// Takes so many bytes.
    bool take(int number, std::uint64_t length);
    /// Refuses the field; `isAtEnd` when it could be one if the input went on.
    bool refuse(int number, bool isAtEnd);
    std::uint64_t left() const { return bytes_.size() - offset_; }

    ByteSource& bytes_;
    ByteOrder order_;
    std::uint64_t offset_;
    std::uint64_t searched_ = 0;
    int obstacle_ = 0;
    bool isAtEnd_ = false;
};

}  // namespace record
