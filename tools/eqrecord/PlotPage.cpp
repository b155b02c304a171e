// A mean over pixels would hide the very ones that are looked for, so a column keeps its least and
// greatest value and nothing else. Columns are as equal as whole pixels allow: their borders are
// those of equal parts, rounded down.

#include "tools/eqrecord/PlotPage.h"

#include <algorithm>
#include <cmath>

namespace eqrecord {

namespace {

/// Of equal values the first one is taken.
PlotColumn columnOf(std::span<const double> values, std::size_t first, std::size_t end) {
    PlotColumn column{first, end};
    for (std::size_t i = first; i < end; ++i) {
        column.hasNan = column.hasNan || std::isnan(values[i]);
        if (std::isinf(values[i])) {
            column.hasInfinite[values[i] > 0 ? 1 : 0] = true;
        }
        if (!std::isfinite(values[i])) {
            continue;
        }
        if (!column.hasFinite || values[i] < values[column.least]) {
            column.least = i;
        }
        if (!column.hasFinite || values[i] > values[column.greatest]) {
            column.greatest = i;
        }
        column.hasFinite = true;
    }
    return column;
}

}  // namespace

PlotAxes::PlotAxes(const PlotPage& page, int mostTicks) {
    for (const PlotPanel& panel : page.panels) {
        std::optional<PlotAxis>& axis = axes.emplace_back();
        if (panel.finite == 0) {
            continue;
        }
        axis.emplace(panel.least, panel.greatest, mostTicks);
        for (const PlotAxis::Tick& tick : axis->ticks()) {
            longestLabel = std::max(longestLabel, tick.label.size());
        }
    }
}

std::vector<PlotColumn> columnsOf(std::span<const double> values, std::size_t count) {
    count = std::min(count, values.size());
    std::vector<PlotColumn> columns;
    columns.reserve(count);
    for (std::size_t i = 0; i < count; ++i) {
        columns.push_back(
            columnOf(values, i * values.size() / count, (i + 1) * values.size() / count));
    }
    return columns;
}

PixelTicks pixelTicksOf(const PlotPage& page, double most) {
    if (page.pixels == 0 || most <= 0) {
        return {};
    }
    const RoundStep round = roundStep(std::max(1.0L, static_cast<long double>(page.pixels) / most));
    const auto step =
        static_cast<std::size_t>(std::llround(round.factor * std::pow(10.0L, round.exponent)));
    const std::size_t first = (page.firstPixel + step - 1) / step * step;
    const std::size_t end = page.firstPixel + page.pixels;
    if (first >= end) {
        return {};
    }
    std::size_t count = (end - 1 - first) / step + 1;
    // The last one may come too close to the first one of the next detector.
    const std::size_t toNext = page.pixels - (count - 1) * step;
    if (page.detectors.size() > 1 && toNext * 10 < step * 9) {
        --count;
    }
    return {first, step, count};
}

}  // namespace eqrecord
