#pragma once

#include <cstddef>
#include <span>
#include <vector>

namespace eqrecord {

/// What makes a value an outlier.
struct OutlierRule {
    /// So many standard deviations, as the median deviation gives them for noise.
    double sigma = 6;
    /// How far away a pixel's neighbours are at most, in pixels.
    std::size_t window = 24;
};

/// For each value the median of itself and its neighbours: those at an even distance of at most
/// `window`, as odd and even pixels are read out apart. Towards the ends there are neighbours on
/// one side only. Those that are NaN or infinite don't count; NaN where none is left.
std::vector<double> runningMediansOf(std::span<const double> values, std::size_t window);

/// Indices of values, from 0, that are outliers, in their order. An outlier is further from its
/// running median than `sigma` times 1.4826 times the median absolute deviation of all these
/// distances; when that is 0, any distance but 0 is too far. An infinity always is an outlier, and
/// NaN never. Nothing overflows.
std::vector<std::size_t> outliersOf(std::span<const double> values, const OutlierRule& rule);

}  // namespace eqrecord
