#pragma once

#include <bit>
#include <cstdint>
#include <optional>

namespace eqrecord {

/// How far two values may be apart and still be equal; when nothing is given, not at all. It is
/// enough that one of the bounds is kept.
struct Tolerance {
    /// Together one bound, |a-b| <= absolute + relative * max(|a|, |b|), where what is not given is
    /// 0. Finite and not negative. Both sides are rounded to doubles: what is beyond the bound by
    /// less than that may count as within.
    std::optional<double> absolute;
    std::optional<double> relative;
    /// So many steps from one representable number to the next; 0 and -0 are the same number.
    std::optional<std::uint64_t> ulp;
    /// Whether two NaN of different bits differ.
    bool nanDiffers = false;
};

/// areEqual for values of different bits.
bool areNear(double a, double b, const Tolerance& tolerance);

/// The one test of equality: verdicts, what is listed and what is counted all come from here.
/// Whatever the tolerance, values of the same bits are equal, NaN is equal to NaN only, and an
/// infinity only to itself. It does not matter which one is a.
inline bool areEqual(double a, double b, const Tolerance& tolerance) {
    return std::bit_cast<std::uint64_t>(a) == std::bit_cast<std::uint64_t>(b) ||
           areNear(a, b, tolerance);
}

/// |a-b|; infinite when it is too large for a number.
double distanceOf(double a, double b);
/// |a-b| / max(|a|, |b|), at most 2; 0 for two zeros. Infinite when a or b is. Neither is NaN.
double relativeDistanceOf(double a, double b);

}  // namespace eqrecord
