#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "tools/eqrecord/PlotAxis.h"

namespace eqrecord {

/// The values of one kind: what one panel shows.
struct PlotPanel {
    std::string_view name;  ///< of the kind, which lives as long as the program
    std::vector<double>
        values;  ///< detector after detector, as many of each as the page has pixels
    std::vector<std::size_t> outliers;  ///< indices into `values`, ascending
    std::size_t finite = 0;             ///< how many values are
    std::size_t infinite = 0;
    double least = 0;  ///< of the finite values, if there are any
    double greatest = 0;

    std::size_t missing() const { return values.size() - finite - infinite; }
    /// What is said in place of values when none of them is finite.
    const char* emptiness() const { return infinite > 0 ? "no finite values" : "no values"; }
};

/// One picture: the coefficients of one configuration, detectors side by side. Texts are safe to
/// show.
struct PlotPage {
    std::string title;
    std::string subtitle;
    std::vector<int> detectors;  ///< by their numbers, in their order
    std::size_t firstPixel = 1;
    std::size_t pixels = 0;  ///< of each detector, from the first on
    std::vector<PlotPanel> panels;

    /// A panel's values of the detector with this index.
    std::span<const double> valuesOf(const PlotPanel& panel, std::size_t detector) const {
        return std::span(panel.values).subspan(detector * pixels, pixels);
    }
};

/// The axes of a page's panels; none for a panel without finite values.
struct PlotAxes {
    std::vector<std::optional<PlotAxis>> axes;
    std::size_t longestLabel = 0;  ///< in characters

    PlotAxes(const PlotPage& page, int mostTicks);
};

/// Neighbouring pixels that a picture can't show apart.
struct PlotColumn {
    std::size_t first = 0;  ///< index of the first one
    std::size_t end = 0;    ///< and behind the last one
    bool hasFinite = false;
    std::size_t least = 0;  ///< indices of the least and the greatest finite value, if there is one
    std::size_t greatest = 0;
    bool hasNan = false;
    std::array<bool, 2> hasInfinite{};  ///< a negative one, a positive one
};

/// Divides values into at most `count` columns of about the same width.
std::vector<PlotColumn> columnsOf(std::span<const double> values, std::size_t count);

/// Labels of a pixel axis, which repeats for each detector.
struct PixelTicks {
    std::size_t first = 0;  ///< pixel, not index
    std::size_t step = 0;
    std::size_t count = 0;  ///< of each detector; may be 0
};

/// Ticks at whole multiples of a round step. `most`, which may be less than 1, is the number of
/// labels that fit side by side within a detector.
PixelTicks pixelTicksOf(const PlotPage& page, double most);

}  // namespace eqrecord
