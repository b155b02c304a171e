#pragma once

#include <span>

namespace eqrecord {

/// The median of values of which none is NaN, in the middle between the two in the middle of an
/// even number of them. Changes their order. Requires: !values.empty()
double medianOf(std::span<double> values);

/// The median absolute deviation: the median of the distances from the median. A distance may be
/// too large for a number, never the median of them. Changes the values. Requires the same.
double medianDeviationOf(std::span<double> values);

}  // namespace eqrecord
