// The distance of two numbers may be too large for a number, and a share of a subnormal one is
// rounded to far fewer digits. Very large and very small numbers are therefore scaled by a power of
// two, which changes none of their digits.

#include "tools/eqrecord/Equality.h"

#include <algorithm>
#include <cmath>

namespace eqrecord {

namespace {

/// The larger absolute value.
double largerOf(double a, double b) {
    return std::max(std::abs(a), std::abs(b));
}

/// What to multiply numbers by, of which this is the larger. An absolute bound is scaled with them,
/// and may become infinite: no distance is beyond it then, as is true of it.
double scaleFor(double larger) {
    return larger > 0x1p1000 ? 0x1p-2 : larger < 0x1p-900 ? 0x1p100 : 1;
}

bool isWithin(double a, double b, double absolute, double relative) {
    const double larger = largerOf(a, b);
    const double scale = scaleFor(larger);
    return std::abs(a * scale - b * scale) <= absolute * scale + relative * (larger * scale);
}

/// Numbers in their order, without gaps.
std::int64_t rankOf(double value) {
    const auto magnitude = std::bit_cast<std::int64_t>(std::abs(value));
    return std::signbit(value) ? -magnitude : magnitude;
}

/// From the least number to the greatest there are more steps than a signed integer counts.
std::uint64_t stepsBetween(double a, double b) {
    const auto [low, high] = std::minmax({rankOf(a), rankOf(b)});
    return static_cast<std::uint64_t>(high) - static_cast<std::uint64_t>(low);
}

}  // namespace

bool areNear(double a, double b, const Tolerance& tolerance) {
    if (std::isnan(a) || std::isnan(b)) {
        return std::isnan(a) && std::isnan(b) && !tolerance.nanDiffers;
    }
    // To no bound is an infinity near a number: relative to it, every distance would be small.
    if (std::isinf(a) || std::isinf(b)) {
        return false;
    }
    if (tolerance.ulp && stepsBetween(a, b) <= *tolerance.ulp) {
        return true;
    }
    return (tolerance.absolute || tolerance.relative) &&
           isWithin(a, b, tolerance.absolute.value_or(0), tolerance.relative.value_or(0));
}

double distanceOf(double a, double b) {
    return std::abs(a - b);
}

double relativeDistanceOf(double a, double b) {
    const double larger = largerOf(a, b);
    if (larger == 0 || std::isinf(larger)) {
        return larger;
    }
    const double scale = scaleFor(larger);
    return std::abs(a * scale - b * scale) / (larger * scale);
}

}  // namespace eqrecord
