// Sums of squares are those of the distances from the mean, so that what the values have in common
// takes no digits of what they differ in; where they differ in their last digits only, what the
// mean is rounded by counts, too. Values are scaled by a power of two, which changes no digit, to
// keep squares within the range of numbers; the medians need no sums and are those of the values as
// they are.

#include "tools/eqrecord/Figures.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "tools/eqrecord/Median.h"

namespace eqrecord {

namespace {

/// A sum that keeps what the additions round off: of a large number and a small one that is known
/// exactly.
class Sum {
  public:
    void add(double value) {
        const double sum = sum_ + value;
        rest_ += std::abs(sum_) < std::abs(value) ? (value - sum) + sum_ : (sum_ - sum) + value;
        sum_ = sum;
        ++count_;
    }
    std::size_t count() const { return count_; }
    double value() const { return sum_ + rest_; }
    double mean() const { return value() / static_cast<double>(count_); }

  private:
    double sum_ = 0;
    double rest_ = 0;
    std::size_t count_ = 0;
};

/// What sums tell of values.
struct Moments {
    double mean = 0;
    double deviation = 0;
    std::optional<double> oddLessEven;
};

/// Finite values, those of odd pixels first.
using ByParity = std::array<std::vector<double>, 2>;

/// The power of two that makes the largest absolute value one of 1 to 2.
double scaleFor(double largest) {
    // The factor for subnormal numbers, which are smaller still, would not be finite.
    constexpr int mostExponent = 1023;
    return largest > 0 ? std::ldexp(1, std::min(-std::ilogb(largest), mostExponent)) : 1;
}

Sum sumOf(std::span<const double> values) {
    Sum sum;
    for (const double value : values) {
        sum.add(value);
    }
    return sum;
}

/// Requires: a value.
Moments momentsOf(const ByParity& byParity, double largest) {
    const double scale = scaleFor(largest);
    std::vector<double> scaled;
    for (const auto& part : byParity) {
        std::ranges::transform(part, std::back_inserter(scaled),
                               [&](double value) { return value * scale; });
    }
    const double mean = sumOf(scaled).mean();
    std::array<Sum, 2> distances;
    Sum squares;
    for (std::size_t i = 0; i < scaled.size(); ++i) {
        const double distance = scaled[i] - mean;
        distances[i < byParity[0].size() ? 0 : 1].add(distance);
        squares.add(distance * distance);
    }
    // By so much the distances are too large, as the mean is rounded; without it they add up to 0.
    const double shift =
        (distances[0].value() + distances[1].value()) / static_cast<double>(scaled.size());
    Moments moments;
    moments.mean = mean / scale;
    moments.deviation = std::sqrt(std::max(0.0, squares.mean() - shift * shift)) / scale;
    if (distances[0].count() > 0 && distances[1].count() > 0) {
        // Not that of the two means, which are rounded to the digits that they have in common.
        moments.oddLessEven = (distances[0].mean() - distances[1].mean()) / scale;
    }
    return moments;
}

/// Counts values, and keeps those that are finite. Whether a pixel is odd goes by its number, also
/// where the values are not all of a vector.
ByParity countValues(std::span<const double> values, std::size_t firstPixel, Figures& figures) {
    ByParity byParity;
    for (std::size_t i = 0; i < values.size(); ++i) {
        const double value = values[i];
        if (std::isfinite(value)) {
            byParity[(firstPixel + i + 1) % 2].push_back(value);
        }
        figures.nan += std::isnan(value) ? 1U : 0U;
        figures.infinite += std::isinf(value) ? 1U : 0U;
        figures.length = std::isnan(value) ? figures.length : i + 1;
    }
    figures.values = byParity[0].size() + byParity[1].size();
    return byParity;
}

}  // namespace

Figures figuresOf(std::span<const double> values, std::size_t firstPixel) {
    Figures figures;
    const ByParity byParity = countValues(values, firstPixel, figures);
    if (figures.values == 0) {
        return figures;
    }
    std::vector<double> kept = byParity[0];
    kept.insert(kept.end(), byParity[1].begin(), byParity[1].end());
    const auto [min, max] = std::ranges::minmax(kept);
    const Moments moments = momentsOf(byParity, std::max(std::abs(min), std::abs(max)));
    // The order matters: the deviation changes the values.
    const double median = medianOf(kept);
    const double medianDeviation = medianDeviationOf(kept);
    figures.figures = {
        min, max, moments.mean, median, moments.deviation, medianDeviation, moments.oddLessEven};
    return figures;
}

}  // namespace eqrecord
