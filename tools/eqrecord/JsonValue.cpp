// JSON knows numbers, and a record doubles and integers. The library hands out a number without
// point and exponent as an integer, signed when it has a minus: so it is a signed 0 by which -0, as
// some programs write -0.0, is known.

#include "tools/eqrecord/JsonValue.h"

#include <bit>
#include <charconv>
#include <limits>

#include "record/Layout.h"

namespace eqrecord {

namespace {

/// Reads all of a text as a number in hexadecimal digits.
template <class Number>
bool readHex(std::string_view text, Number& number) {
    const char* const end = text.data() + text.size();
    const auto result = std::from_chars(text.data(), end, number, 16);
    return result.ec == std::errc() && result.ptr == end;
}

}  // namespace

std::int64_t integerOf(const JsonValue& value, std::int64_t least, std::int64_t most) {
    const auto* const natural = std::get_if<std::uint64_t>(&value);
    const auto* const integer = std::get_if<std::int64_t>(&value);
    if (natural == nullptr && integer == nullptr) {
        throw Refusal("must be a whole number");
    }
    // Beyond what a signed integer holds, and so beyond every limit.
    const bool isLarge =
        natural != nullptr && *natural > std::uint64_t{std::numeric_limits<std::int64_t>::max()};
    const std::int64_t number =
        natural == nullptr ? *integer : static_cast<std::int64_t>(isLarge ? 0 : *natural);
    if (isLarge || number < least || number > most) {
        throw Refusal((natural == nullptr ? std::to_string(*integer) : std::to_string(*natural)) +
                      " is not within " + std::to_string(least) + " to " + std::to_string(most));
    }
    return number;
}

const std::string& textOf(const JsonValue& value) {
    const auto* const text = std::get_if<std::string>(&value);
    if (text == nullptr) {
        throw Refusal("must be a text");
    }
    return *text;
}

double realOf(const JsonValue& value) {
    if (std::holds_alternative<std::nullptr_t>(value)) {
        return record::fillValue;
    }
    if (const auto* const natural = std::get_if<std::uint64_t>(&value)) {
        return static_cast<double>(*natural);
    }
    if (const auto* const integer = std::get_if<std::int64_t>(&value)) {
        return *integer == 0 ? -0.0 : static_cast<double>(*integer);
    }
    if (const auto* const real = std::get_if<double>(&value)) {
        return *real;
    }
    if (const auto* const text = std::get_if<std::string>(&value)) {
        return realOf(std::string_view(*text));
    }
    throw notReal();
}

double realOf(std::string_view text) {
    constexpr double infinity = std::numeric_limits<double>::infinity();
    constexpr std::size_t bitsLength = std::string_view("0x7ff8000000000123").size();
    if (text == "inf" || text == "-inf") {
        return text.front() == '-' ? -infinity : infinity;
    }
    std::uint64_t bits = 0;
    if (text.size() != bitsLength || !text.starts_with("0x") || !readHex(text.substr(2), bits)) {
        throw notReal();
    }
    return std::bit_cast<double>(bits);
}

Refusal notReal() {
    return Refusal("must be a number, null, \"inf\", \"-inf\" or bits as \"0x7ff8000000000123\"");
}

Refusal outOfRange() {
    return Refusal("is too large or too small for a double");
}

std::string bytesOf(const std::string& digits) {
    std::string bytes;
    for (std::size_t i = 0; i < digits.size(); i += 2) {
        std::uint8_t byte = 0;
        const std::string_view pair = std::string_view(digits).substr(i, 2);
        if (pair.size() < 2 || !readHex(pair, byte)) {
            throw Refusal("must be bytes of two hexadecimal digits each");
        }
        bytes += static_cast<char>(byte);
    }
    return bytes;
}

}  // namespace eqrecord
