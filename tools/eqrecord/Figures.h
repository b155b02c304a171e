#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <span>
#include <string_view>

namespace eqrecord {

/// What is told of some values, pixels of one vector that follow each other. NaN and infinities are
/// counted and left out of all else.
struct Figures {
    std::size_t values = 0;  ///< numbers that are finite
    std::size_t nan = 0;
    std::size_t infinite = 0;
    std::size_t length = 0;  ///< pixels without the NaN at the end

    /// What `figures` has, by the name that it has in JSON.
    static constexpr std::array<std::string_view, 7> names{
        "min", "max", "mean", "median", "standard_deviation", "mad", "odd_less_even"};
    /// The standard deviation divides by the number of values; "mad" is the median absolute
    /// deviation, "odd_less_even" the mean of odd pixels less that of even ones, which alone may be
    /// too large for a number and infinite then. What there are no values for is not there.
    std::array<std::optional<double>, names.size()> figures;

    bool operator==(const Figures&) const = default;
};

/// The figures of values, of which the first is that of pixel `firstPixel`, counted from 1. They
/// are as exact as the values: neither a large offset nor a large exponent harms them.
Figures figuresOf(std::span<const double> values, std::size_t firstPixel);

}  // namespace eqrecord
