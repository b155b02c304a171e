#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace eqrecord {

/// The range of an axis of values and its ticks. Works for all finite doubles, also for those whose
/// difference is none.
class PlotAxis {
  public:
    struct Tick {
        double position = 0;  ///< as below
        std::string label;
    };

    /// An axis from a little below the least to a little above the greatest value, with at most
    /// `mostTicks` + 1 ticks. Requires: both finite, least <= greatest, mostTicks > 0.
    PlotAxis(double least, double greatest, int mostTicks);

    /// Where a finite value stands: 0 at the lower end, 1 at the upper one.
    double position(double value) const;
    /// From below. A label is a number that gives the tick's value.
    const std::vector<Tick>& ticks() const { return ticks_; }

    /// Whether other programs may be trusted with the values: they are neither huge nor tiny, and
    /// differ by more than rounding.
    bool isPlain() const;
    /// The power of two by which values and ends are divided to become plain numbers.
    int exponent() const;
    /// The ends, divided by it.
    double scaledLow() const;
    double scaledHigh() const;

  private:
    void makeTicks(int mostTicks);
    long double size() const;

    long double low_;
    long double high_;
    std::vector<Tick> ticks_;
};

/// The step of the form 1, 2 or 5 times a power of ten that is at least `least`, which is positive.
struct RoundStep {
    int factor = 1;    ///< 1, 2 or 5
    int exponent = 0;  ///< of the power of ten
};
RoundStep roundStep(long double least);

}  // namespace eqrecord
