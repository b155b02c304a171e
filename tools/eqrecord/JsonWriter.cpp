// Numbers and what stands between them are written here, strings by the library: it writes NaN and
// infinities both as null, and a number of its own costs more than the shortest decimal.

#include "tools/eqrecord/JsonWriter.h"

#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <nlohmann/json.hpp>

#include "record/Layout.h"

namespace eqrecord {

void JsonWriter::begin(char bracket) {
    raw({&bracket, 1});
    isFirst_ = true;
}

void JsonWriter::end(char bracket) {
    out_ << bracket;
    isFirst_ = false;
}

void JsonWriter::raw(std::string_view value) {
    out_ << (isFirst_ ? "" : ", ") << value;
    isFirst_ = false;
}

void JsonWriter::key(std::string_view name) {
    out_ << (isFirst_ ? "\"" : ", \"") << name << "\": ";
    isFirst_ = true;  // no comma before the value
}

void JsonWriter::text(std::string_view value) {
    std::string quoted;
    try {
        quoted = nlohmann::json(value).dump(-1, ' ', true);
    } catch (const nlohmann::json::type_error&) {
        quoted = "{\"hex\": \"" + hexOf(value) + "\"}";
    }
    raw(quoted);
}

void JsonWriter::real(double value) {
    const auto bits = std::bit_cast<std::uint64_t>(value);
    if (bits == std::bit_cast<std::uint64_t>(record::fillValue)) {
        raw("null");
    } else if (std::isnan(value)) {
        raw('"' + hexNumber(bits) + '"');
    } else if (std::isinf(value)) {
        raw('"' + decimalOf(value) + '"');
    } else if (value == 0 && std::signbit(value)) {
        raw("-0.0");  // -0 is an integer to many, and loses its sign
    } else {
        raw(decimalOf(value));
    }
}

std::string decimalOf(double value) {
    if (std::isnan(value)) {
        return "nan";
    }
    std::array<char, 32> text{};
    const auto result = std::to_chars(text.data(), text.data() + text.size(), value);
    return {text.data(), result.ptr};
}

std::string hexOf(std::string_view bytes, std::string_view between) {
    constexpr std::string_view digits = "0123456789abcdef";
    std::string result;
    for (const char c : bytes) {
        const auto byte = static_cast<unsigned char>(c);
        result += result.empty() ? "" : between;
        result += digits[byte >> 4];
        result += digits[byte & 15];
    }
    return result;
}

std::string hexNumber(std::uint64_t value) {
    std::array<char, 16> text{};
    const auto result = std::to_chars(text.data(), text.data() + text.size(), value, 16);
    return "0x" + std::string(text.data(), result.ptr);
}

}  // namespace eqrecord
