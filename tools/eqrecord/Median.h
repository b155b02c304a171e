#pragma once

#include <span>

namespace eqrecord {

/// The median of values of which none is NaN, in the middle between the two in the middle of an
/// even number of them. Changes their order. Requires: !values.empty()
double medianOf(std::span<double> values);

/// The median absolute deviation: the median of the distances from the median. Changes the values.
/// Requires the same, and that no distance is beyond the largest number.
double medianDeviationOf(std::span<double> values);

}  // namespace eqrecord
