// Coefficients slope across a detector by more than they scatter, and its odd and even pixels have
// levels of their own: held against all of its detector, a value that stands out among its
// neighbours is nothing special. So each is held against the median of its neighbours of the same
// parity, which an outlier can't move.

#include "tools/eqrecord/Outliers.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>

#include "tools/eqrecord/Median.h"

namespace eqrecord {

namespace {

/// The median absolute deviation of normally distributed values, times this, is their standard
/// deviation.
constexpr double sigmaPerDeviation = 1.4826;

/// Values in their order, of which one can be added or taken away. There are 25 of them, which are
/// moved faster than any tree is kept in balance.
class SortedWindow {
  public:
    void add(double value) {
        if (std::isfinite(value)) {
            values_.insert(std::ranges::upper_bound(values_, value), value);
        }
    }
    void remove(double value) {
        if (std::isfinite(value)) {
            values_.erase(std::ranges::lower_bound(values_, value));
        }
    }
    double median() const {
        if (values_.empty()) {
            return std::numeric_limits<double>::quiet_NaN();
        }
        const std::size_t size = values_.size();
        return std::midpoint(values_[(size - 1) / 2], values_[size / 2]);
    }

  private:
    std::vector<double> values_;
};

/// What to multiply the values by, so that the difference of two differences is a number.
double scaleOf(std::span<const double> values) {
    constexpr double safe = std::numeric_limits<double>::max() / 8;
    const bool isLarge = std::ranges::any_of(
        values, [](double value) { return std::isfinite(value) && std::abs(value) > safe; });
    return isLarge ? 0.125 : 1;
}

}  // namespace

// At the ends, with neighbours on one side only, a slope moves the median by half of what it rises
// within a window; of coefficients that is less than they scatter by.
std::vector<double> runningMediansOf(std::span<const double> values, std::size_t window) {
    std::vector<double> medians(values.size());
    const std::size_t reach = window / 2;  // in pixels of one parity
    for (std::size_t parity = 0; parity < std::min<std::size_t>(values.size(), 2); ++parity) {
        SortedWindow neighbours;
        const std::size_t count = (values.size() - parity + 1) / 2;
        const auto at = [&](std::size_t i) { return values[2 * i + parity]; };
        // Each value is in the window from the turn at which it comes near until it is left behind.
        std::size_t added = 0;
        for (std::size_t i = 0; i < count; ++i) {
            for (; added < count && added <= i + reach; ++added) {
                neighbours.add(at(added));
            }
            if (i > reach) {
                neighbours.remove(at(i - reach - 1));
            }
            medians[2 * i + parity] = neighbours.median();
        }
    }
    return medians;
}

std::vector<std::size_t> outliersOf(std::span<const double> values, const OutlierRule& rule) {
    const std::vector<double> medians = runningMediansOf(values, rule.window);
    const double scale = scaleOf(values);
    const auto distance = [&](std::size_t i) { return values[i] * scale - medians[i] * scale; };
    std::vector<double> distances;
    for (std::size_t i = 0; i < values.size(); ++i) {
        if (std::isfinite(values[i])) {
            distances.push_back(distance(i));
        }
    }
    // It may be infinite for a large sigma; then, as should be, no distance is beyond.
    const double limit =
        distances.empty() ? 0 : rule.sigma * sigmaPerDeviation * medianDeviationOf(distances);
    std::vector<std::size_t> outliers;
    for (std::size_t i = 0; i < values.size(); ++i) {
        if (std::isinf(values[i]) || (std::isfinite(values[i]) && std::abs(distance(i)) > limit)) {
            outliers.push_back(i);
        }
    }
    return outliers;
}

}  // namespace eqrecord
