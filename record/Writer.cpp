// The writer keeps nothing: it knows neither which fields were written nor where the record stands,
// and each method is its group of fields in their forms. That the groups come in their order is the
// caller's business, which the order of its own work makes it.
//
// Raw values are the bytes that the machine has in memory. On one with another byte order the
// record has that order, and nothing in it says so.

#include "record/Writer.h"

#include <algorithm>
#include <array>
#include <string>
#include <type_traits>

#include "record/Layout.h"

namespace record {

namespace {

/// The bytes of values, in the machine's order.
template <class T>
std::string_view bytesOf(std::span<const T> values) {
    static_assert(std::is_arithmetic_v<T>);
    return {reinterpret_cast<const char*>(values.data()), values.size_bytes()};
}

template <class T>
std::string_view bytesOf(const T& value) {
    return bytesOf(std::span<const T>(&value, 1));
}

/// Fill values, to be written many at a time.
constexpr auto fillValues = [] {
    std::array<double, 512> values{};
    values.fill(fillValue);
    return values;
}();

}  // namespace

void Writer::begin(std::string_view type) {
    sink_.write(marker);                                         // 1
    number(fileTypePrefix.size() + type.size(), field(2).fill);  // 2
    sink_.write(fileTypePrefix);                                 // 3
    sink_.write(type);                                           // 3
}

void Writer::fileCount(std::size_t count) {
    number(count, field(7).fill);
}

void Writer::nucTableId(std::int16_t id) {
    sink_.write(bytesOf(id));
}

void Writer::file(std::uint8_t band, std::string_view name) {
    sink_.write(bytesOf(band));           // 9
    number(name.size(), field(10).fill);  // 10
    sink_.write(name);                    // 11
}

void Writer::configurationCount(std::uint8_t count) {
    sink_.write(bytesOf(count));
}

void Writer::configuration(std::string_view label, double epsilon) {
    number(label.size(), field(13).fill);  // 13
    sink_.write(label);                    // 14
    sink_.write(bytesOf(epsilon));         // 15
}

void Writer::pixels(std::int16_t pixels) {
    sink_.write(bytesOf(pixels));
}

void Writer::vector(std::span<const double> values, std::int16_t pixels) {
    const auto wanted = static_cast<std::size_t>(std::max<std::int16_t>(pixels, 0));
    const std::span<const double> kept = values.first(std::min(values.size(), wanted));
    sink_.write(bytesOf(kept));
    for (std::size_t missing = wanted - kept.size(); missing > 0;) {
        const std::size_t count = std::min(missing, fillValues.size());
        sink_.write(bytesOf(std::span<const double>(fillValues).first(count)));
        missing -= count;
    }
}

/// A number in decimal digits, filled up on the left; one that is wider takes the room it needs.
void Writer::number(std::size_t value, char fill) {
    std::string digits = std::to_string(value);
    digits.insert(0, numberWidth - std::min(numberWidth, digits.size()), fill);
    sink_.write(digits);
}

}  // namespace record
