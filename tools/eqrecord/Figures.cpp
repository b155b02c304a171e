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

/// A sum that keeps what the additions round off.
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

struct Moments {
    double mean = 0;
    double deviation = 0;
    std::optional<double> oddLessEven;
};

/// Of finite values, at least one of which is not 0, split into those of odd and even pixels.
Moments momentsOf(const std::array<std::vector<double>, 2>& byParity, double largest) {
    const double scale = std::ldexp(1, std::min(-std::ilogb(largest), 1023));
    std::vector<double> scaled;
    for (const auto& part : byParity) {
        std::ranges::transform(part, std::back_inserter(scaled),
                               [&](double value) { return value * scale; });
    }
    Sum sum;
    for (const double value : scaled) {
        sum.add(value);
    }
    const double mean = sum.mean();
    std::array<Sum, 2> distances;
    Sum squares;
    for (std::size_t i = 0; i < scaled.size(); ++i) {
        const double distance = scaled[i] - mean;
        distances[i < byParity[0].size() ? 0 : 1].add(distance);
        squares.add(distance * distance);
    }
    const auto count = static_cast<double>(scaled.size());
    // What the mean is rounded by.
    const double shift = (distances[0].value() + distances[1].value()) / count;
    Moments moments;
    moments.mean = mean / scale;
    moments.deviation = std::sqrt(std::max(0.0, squares.mean() - shift * shift)) / scale;
    if (distances[0].count() > 0 && distances[1].count() > 0) {
        moments.oddLessEven = (distances[0].mean() - distances[1].mean()) / scale;
    }
    return moments;
}

}  // namespace

Figures figuresOf(std::span<const double> values, std::size_t firstPixel) {
    Figures figures;
    std::array<std::vector<double>, 2> byParity;  // those of odd pixels first
    for (std::size_t i = 0; i < values.size(); ++i) {
        const double value = values[i];
        if (std::isfinite(value)) {
            byParity[(firstPixel + i + 1) % 2].push_back(value);
        }
        figures.nan += std::isnan(value) ? 1U : 0U;
        figures.infinite += std::isinf(value) ? 1U : 0U;
        figures.length = std::isnan(value) ? figures.length : i + 1;
    }
    std::vector<double> kept = byParity[0];
    kept.insert(kept.end(), byParity[1].begin(), byParity[1].end());
    figures.values = kept.size();
    if (kept.empty()) {
        return figures;
    }
    const auto [min, max] = std::ranges::minmax(kept);
    const double largest = std::max(std::abs(min), std::abs(max));
    Moments moments;
    if (largest > 0) {
        moments = momentsOf(byParity, largest);
    } else if (!byParity[0].empty() && !byParity[1].empty()) {
        moments.oddLessEven = 0;
    }
    const double median = medianOf(kept);
    figures.figures = {min,
                       max,
                       moments.mean,
                       median,
                       moments.deviation,
                       medianDeviationOf(kept),
                       moments.oddLessEven};
    return figures;
}

}  // namespace eqrecord
