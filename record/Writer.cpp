// The writer keeps nothing: it knows neither which fields were written nor where the record stands,
// and each method is its group of fields in their forms. That the groups come in their order is the
// caller's business, which the order of its own work makes it.
//
// Raw values are the bytes that the machine has in memory, and nothing in the record says so. Only
// who puts a record of another machine together again asks for another order.

#include "record/Writer.h"

#include <algorithm>
#include <array>
#include <bit>
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

constexpr std::size_t pieceLength = 512;

/// Fill values, to be written many at a time.
constexpr auto fillValues = [] {
    std::array<double, pieceLength> values{};
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
    int16(id);
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
    reals({&epsilon, 1});                  // 15
}

void Writer::pixels(std::int16_t pixels) {
    int16(pixels);
}

void Writer::vector(std::span<const double> values, std::int16_t pixels) {
    const auto wanted = static_cast<std::size_t>(std::max<std::int16_t>(pixels, 0));
    const std::span<const double> kept = values.first(std::min(values.size(), wanted));
    reals(kept);
    for (std::size_t missing = wanted - kept.size(); missing > 0;) {
        const std::size_t count = std::min(missing, fillValues.size());
        reals(std::span<const double>(fillValues).first(count));
        missing -= count;
    }
}

/// A number in decimal digits, filled up on the left; one that is wider takes the room it needs.
void Writer::number(std::size_t value, char fill) {
    std::string digits = std::to_string(value);
    digits.insert(0, numberWidth - std::min(numberWidth, digits.size()), fill);
    sink_.write(digits);
}

void Writer::int16(std::int16_t value) {
    const auto bits = static_cast<std::uint16_t>(value);
    sink_.write(bytesOf(order_ == machineOrder ? bits : swapped(bits)));
}

void Writer::reals(std::span<const double> values) {
    if (order_ == machineOrder) {
        sink_.write(bytesOf(values));
        return;
    }
    std::array<std::uint64_t, pieceLength> piece{};
    while (!values.empty()) {
        const std::size_t count = std::min(values.size(), piece.size());
        std::ranges::transform(values.first(count), piece.begin(), [](double value) {
            return swapped(std::bit_cast<std::uint64_t>(value));
        });
        sink_.write(bytesOf(std::span<const std::uint64_t>(piece).first(count)));
        values = values.subspan(count);
    }
}

}  // namespace record
