#pragma once

#include <array>
#include <cstddef>
#include <string>

#include "tools/eqrecord/PlotPage.h"

namespace eqrecord {

/// What is drawn in a panel, as the lines of gnuplot's data blocks. x counts pixels as if those of
/// all detectors stood in one row: pixel + pixels of the page * index of the detector.
struct PlotData {
    // Detectors of even and of odd index, so that neighbours can be told from each other.
    std::array<std::string, 2> lines;     ///< "x value", and a blank line where the line is broken
    std::array<std::string, 2> dots;      ///< "x value"
    std::string missing;                  ///< "x x", from where to where there are NaN
    std::array<std::string, 2> infinite;  ///< "x" of the negative and of the positive infinities
    std::string outliers;                 ///< "x value", of those that are finite
};

/// Of a detector with more than twice as many pixels as it has columns, of the given number for
/// all detectors, the least and the greatest value of each column are kept, and outlier; else all.
/// With `hasDots` each value also gets a dot, else those without a neighbour, of which a line shows
/// nothing.
PlotData plotDataOf(const PlotPage& page, const PlotPanel& panel, std::size_t columns,
                    bool hasDots);

}  // namespace eqrecord
