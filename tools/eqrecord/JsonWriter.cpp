// Numbers and what stands between them are written here, strings by the library: it writes NaN and
// infinities both as null, and a number of its own costs more than the shortest decimal.

#include "tools/eqrecord/JsonWriter.h"

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <nlohmann/json.hpp>

#include "record/Layout.h"

namespace eqrecord {

namespace {

/// Of a double: "-2.2250738585072014e-308".
constexpr std::size_t longestDecimal = 24;

}  // namespace

void JsonWriter::begin(char bracket) {
    raw({&bracket, 1});
    isFirst_ = true;
}

void JsonWriter::end(char bracket) {
    out_ << bracket;
    isFirst_ = false;
}

void JsonWriter::raw(std::string_view value) {
    separate();
    out_ << value;
}

/// Writes what stands before a key or value.
void JsonWriter::separate() {
    out_ << (isFirst_ ? "" : ",") << (breaksLine_ ? "\n" : isFirst_ ? "" : " ");
    isFirst_ = false;
    breaksLine_ = false;
}

void JsonWriter::key(std::string_view name) {
    separate();
    out_ << '"' << name << "\": ";
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
    separate();
    writeReals({&value, 1});
}

void JsonWriter::realArray(std::span<const double> values) {
    begin('[');
    writeReals(values);
    end(']');
}

/// Records are large and nearly all numbers, so these go to the stream by the page.
void JsonWriter::writeReals(std::span<const double> values) {
    constexpr std::ptrdiff_t longest = 32;  // with what separates it
    std::array<char, 4096> page;
    char* to = page.data();
    for (std::size_t i = 0; i < values.size(); ++i) {
        if (page.data() + page.size() - to < longest) {
            out_.write(page.data(), to - page.data());
            to = page.data();
        }
        if (i > 0) {
            *to++ = ',';
            *to++ = ' ';
        }
        to = write(values[i], to);
    }
    out_.write(page.data(), to - page.data());
}

char* JsonWriter::write(double value, char* to) const {
    const auto put = [&to](std::string_view text) { to = std::ranges::copy(text, to).out; };
    if (record::isFill(value)) {
        put("null");
    } else if (writesBits_ || std::isnan(value)) {
        put('"' + bitsOf(value) + '"');
    } else if (std::isinf(value)) {
        put(value < 0 ? "\"-inf\"" : "\"inf\"");
    } else {
        to = std::to_chars(to, to + longestDecimal, value).ptr;
        if (value == 0 && std::signbit(value)) {
            put(".0");  // -0 is an integer to many, and loses its sign
        }
    }
    return to;
}

std::string decimalOf(double value) {
    if (std::isnan(value)) {
        return "nan";
    }
    std::array<char, longestDecimal> text{};
    const auto result = std::to_chars(text.data(), text.data() + text.size(), value);
    return {text.data(), result.ptr};
}

std::string bitsOf(double value) {
    const std::string digits = hexNumber(std::bit_cast<std::uint64_t>(value)).substr(2);
    return "0x" + std::string(16 - digits.size(), '0') + digits;
}

std::string roundedOf(double value, int digits) {
    std::array<char, 32> text{};
    const auto result = std::to_chars(text.data(), text.data() + text.size(), value,
                                      std::chars_format::general, digits);
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
