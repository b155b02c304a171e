// Ticks are whole multiples of a round step, and their labels are made from these whole numbers: as
// exact as a label can be, and told apart also where the values differ in their last digits only.
// All of it in long double, in which the distance of two doubles never overflows and a subnormal
// one has all its digits.

#include "tools/eqrecord/PlotAxis.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>

namespace eqrecord {

namespace {

/// Values that differ by less, compared to their size, count as one: rounding alone.
constexpr long double leastRelativeSpan = 1e-14L;

static_assert(std::numeric_limits<long double>::max_exponent >
              std::numeric_limits<double>::max_exponent);

/// The same with no more digits than a double has, so that whoever computes in doubles finds the
/// same places.
long double rounded(long double value) {
    int exponent = 0;
    const auto mantissa = static_cast<double>(std::frexp(value, &exponent));
    return std::ldexp(static_cast<long double>(mantissa), exponent);
}

/// The exponent that all labels of an axis get: 0 while plain numbers stay short, else a multiple
/// of 3. `most` is the greatest multiple of 10^exponent among the ticks.
int commonExponent(long long most, int exponent) {
    const int top = exponent + static_cast<int>(std::to_string(most).size()) - 1;
    if (most == 0 || (top >= -3 && top < 6)) {
        return 0;
    }
    return (top >= 0 ? top / 3 : (top - 2) / 3) * 3;
}

/// `number` * 10^exponent as a multiple of 10^common.
std::string labelOf(long long number, int exponent, int common) {
    std::string digits = std::to_string(std::llabs(number));
    const int shift = exponent - common;
    if (shift < 0) {
        const auto decimals = static_cast<std::size_t>(-shift);
        if (digits.size() <= decimals) {
            digits.insert(0, decimals + 1 - digits.size(), '0');
        }
        digits.insert(digits.size() - decimals, 1, '.');
    } else if (number != 0) {
        digits.append(static_cast<std::size_t>(shift), '0');
    }
    if (number == 0 && common != 0) {
        return "0";
    }
    return (number < 0 ? "-" : "") + digits + (common == 0 ? "" : "e" + std::to_string(common));
}

}  // namespace

RoundStep roundStep(long double least) {
    int exponent = static_cast<int>(std::floor(std::log10(least)));
    for (;; ++exponent) {
        for (const int factor : {1, 2, 5}) {
            // Not quite, as neither the quotient nor the power is exact.
            if (factor * std::pow(10.0L, exponent) >= least * (1 - 1e-9L)) {
                return {factor, exponent};
            }
        }
    }
}

PlotAxis::PlotAxis(double least, double greatest, int mostTicks) : low_(least), high_(greatest) {
    const long double span = high_ - low_;
    long double margin = span / 20;
    if (span <= size() * leastRelativeSpan) {
        margin = size() > 0 ? size() / 10 : 1;
    }
    low_ = rounded(low_ - margin);
    high_ = rounded(high_ + margin);
    makeTicks(mostTicks);
}

double PlotAxis::position(double value) const {
    return static_cast<double>((value - low_) / (high_ - low_));
}

long double PlotAxis::size() const {
    return std::max(std::fabs(low_), std::fabs(high_));
}

bool PlotAxis::isPlain() const {
    return size() < 1e30L && size() > 1e-30L && high_ - low_ > size() * 1e-6L;
}

int PlotAxis::exponent() const {
    // Neither 2 to the power of 1024, by which the smallest ones would be multiplied, nor that of
    // -1024 is a double that programs can be trusted with.
    return isPlain() ? 0 : std::clamp(std::ilogb(size()), -1000, 1000);
}

double PlotAxis::scaledLow() const {
    return static_cast<double>(std::ldexp(low_, -exponent()));
}

double PlotAxis::scaledHigh() const {
    return static_cast<double>(std::ldexp(high_, -exponent()));
}

void PlotAxis::makeTicks(int mostTicks) {
    const RoundStep round = roundStep((high_ - low_) / mostTicks);
    const long double step = round.factor * std::pow(10.0L, round.exponent);
    const auto first = static_cast<long long>(std::ceil(low_ / step));
    const auto last = static_cast<long long>(std::floor(high_ / step));
    const long long most = std::max(std::llabs(first), std::llabs(last)) * round.factor;
    const int common = commonExponent(most, round.exponent);
    for (long long number = first; number <= last; ++number) {
        const auto position =
            static_cast<double>((static_cast<long double>(number) * step - low_) / (high_ - low_));
        ticks_.push_back({position, labelOf(number * round.factor, round.exponent, common)});
    }
}

}  // namespace eqrecord
