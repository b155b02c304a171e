// What gnuplot gets of a vector. A picture is narrower than a vector is long; gnuplot would draw
// all points on top of each other, and a file of a megabyte would look like one of a hundred
// kilobytes. What is left out must not be missed: neither a value that stands out, nor a gap,
// however narrow.

#include "tools/eqrecord/PlotData.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>
#include <span>
#include <vector>

#include "tools/eqrecord/JsonWriter.h"

namespace eqrecord {

namespace {

std::string pointOf(std::size_t x, double value) {
    return std::to_string(x) + ' ' + decimalOf(value) + '\n';
}

/// The line of one detector. It is broken wherever something between two of its points is no
/// number, also when the thinning has left that out.
class Line {
  public:
    /// The first value is at `start`.
    Line(std::span<const double> values, std::size_t start) : values_(values), start_(start) {}

    /// Adds a finite value behind those that there are. The rest is where it goes to.
    void add(std::size_t index, PlotData& data, std::size_t parity, bool hasDots) {
        if (last_ && isBroken(*last_, index)) {
            end(data, parity, hasDots);
        }
        segment_ += pointOf(start_ + index, values_[index]);
        ++length_;
        last_ = index;
    }

    /// Ends the line, or a part of it. A part of one point is no line, and would not be seen.
    void end(PlotData& data, std::size_t parity, bool hasDots) {
        data.lines[parity] += length_ > 1 ? segment_ + '\n' : "";
        data.dots[parity] += hasDots || length_ == 1 ? segment_ : "";
        segment_.clear();
        length_ = 0;
    }

  private:
    bool isBroken(std::size_t first, std::size_t last) const {
        return !std::ranges::all_of(values_.subspan(first, last - first),
                                    [](double value) { return std::isfinite(value); });
    }

    std::span<const double> values_;
    std::size_t start_;
    std::string segment_;     ///< the points since the last break
    std::size_t length_ = 0;  ///< how many these are
    std::optional<std::size_t> last_;
};

/// The extremes of a column in the order in which they stand, so that the line never turns back.
void addLine(std::span<const double> values, const std::vector<PlotColumn>& columns,
             std::size_t start, std::size_t parity, bool hasDots, PlotData& data) {
    Line line(values, start);
    for (const PlotColumn& column : columns) {
        const auto [first, last] = std::minmax(column.least, column.greatest);
        if (column.hasFinite) {
            line.add(first, data, parity, hasDots);
        }
        if (column.hasFinite && first != last) {
            line.add(last, data, parity, hasDots);
        }
    }
    line.end(data, parity, hasDots);
}

/// Where a pixel's or a column's share of the axis begins: half a pixel before it.
std::string edgeAt(std::size_t x) {
    return decimalOf(static_cast<double>(x) - 0.5);
}

/// Columns side by side as one; of a column with a NaN all of it, as less could not be seen.
void addMissing(const std::vector<PlotColumn>& columns, std::size_t start, PlotData& data) {
    for (std::size_t i = 0; i < columns.size(); ++i) {
        const std::size_t first = i;
        while (i < columns.size() && columns[i].hasNan) {
            ++i;
        }
        if (i > first) {
            data.missing += edgeAt(start + columns[first].first) + ' ' +
                            edgeAt(start + columns[i - 1].end) + '\n';
        }
    }
}

/// In the middle of the column: where exactly does not show.
void addInfinite(const std::vector<PlotColumn>& columns, std::size_t start, PlotData& data) {
    for (const PlotColumn& column : columns) {
        for (std::size_t sign = 0; sign < column.hasInfinite.size(); ++sign) {
            const std::size_t middle = start + (column.first + column.end - 1) / 2;
            data.infinite[sign] += column.hasInfinite[sign] ? std::to_string(middle) + '\n' : "";
        }
    }
}

/// The values with NaN for all that are no outliers.
std::vector<double> outliersIn(const PlotPanel& panel) {
    std::vector<double> values(panel.values.size(), std::numeric_limits<double>::quiet_NaN());
    for (const std::size_t outlier : panel.outliers) {
        values[outlier] = panel.values[outlier];
    }
    return values;
}

/// Thinned as values are: where every second value is an outlier, there would be a mark for each.
void addOutliers(std::span<const double> outliers, std::size_t columns, std::size_t start,
                 PlotData& data) {
    const auto add = [&](std::size_t index) {
        data.outliers += pointOf(start + index, outliers[index]);
    };
    for (const PlotColumn& column : columnsOf(outliers, columns)) {
        if (column.hasFinite) {
            add(column.least);
        }
        if (column.hasFinite && column.least != column.greatest) {
            add(column.greatest);
        }
    }
}

}  // namespace

PlotData plotDataOf(const PlotPage& page, const PlotPanel& panel, std::size_t columns,
                    bool hasDots) {
    PlotData data;
    const std::vector<double> outliers = outliersIn(panel);
    // Columns of their own for each detector, so that none has values of two.
    const std::size_t share = columns / page.detectors.size();
    for (std::size_t i = 0; i < page.detectors.size(); ++i) {
        const auto values = page.valuesOf(panel, i);
        const auto divided = columnsOf(values, page.pixels > 2 * share ? share : page.pixels);
        const std::size_t start = i * page.pixels + page.firstPixel;
        addLine(values, divided, start, i % 2, hasDots, data);
        addMissing(divided, start, data);
        addInfinite(divided, start, data);
        addOutliers(std::span(outliers).subspan(i * page.pixels, page.pixels), divided.size(),
                    start, data);
    }
    return data;
}

}  // namespace eqrecord
