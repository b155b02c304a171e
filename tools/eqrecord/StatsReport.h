#pragma once

#include <cstddef>
#include <vector>

#include "tools/eqrecord/Figures.h"
#include "tools/eqrecord/Selection.h"

namespace eqrecord {

/// A value that stands out.
struct Outlier {
    std::size_t pixel = 0;  ///< from 1
    double value = 0;
    double median = 0;  ///< of its neighbours; NaN when an infinite value has none
};

/// What is told of the selected pixels of one vector.
struct VectorStats {
    int kind = 0;      ///< from 0
    int detector = 0;  ///< from 1
    Figures figures;
    std::vector<Outlier> outliers;
};

/// Takes what is told of a record, one configuration after the other.
class StatsReport {
  public:
    StatsReport() = default;
    StatsReport(const StatsReport&) = delete;
    StatsReport& operator=(const StatsReport&) = delete;
    virtual ~StatsReport() = default;

    /// The selected vectors of a configuration, kind by kind.
    virtual void write(const Block& block, const std::vector<VectorStats>& vectors) = 0;
    /// To be called when there are no more.
    virtual void end() = 0;
};

}  // namespace eqrecord
