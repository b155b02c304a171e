#pragma once

#include <ostream>

#include "tools/eqrecord/StatsReport.h"

namespace eqrecord {

/// For people: a table for each configuration, in which detectors share a line when all is the same
/// of them.
class StatsText : public StatsReport {
  public:
    /// The stream is not owned.
    StatsText(std::ostream& out, bool showsOutliers) : out_(out), showsOutliers_(showsOutliers) {}

    void write(const Block& block, const std::vector<VectorStats>& vectors) override;
    /// Says how many outliers there are.
    void end() override;

  private:
    std::ostream& out_;
    bool showsOutliers_;
    bool isFirst_ = true;
    std::size_t vectors_ = 0;  ///< that have values
    std::size_t outliers_ = 0;
    std::size_t struck_ = 0;  ///< vectors that have outliers
};

}  // namespace eqrecord
