#pragma once

#include <ostream>

#include "tools/eqrecord/StatsReport.h"

namespace eqrecord {

/// Rows of CSV (RFC 4180, lines end with LF), one a vector; a figure that is not there is empty.
class StatsCsv : public StatsReport {
  public:
    /// The stream is not owned.
    StatsCsv(std::ostream& out, bool showsOutliers);

    void write(const Block& block, const std::vector<VectorStats>& vectors) override;
    void end() override {}

  private:
    std::ostream& out_;
    bool showsOutliers_;
};

}  // namespace eqrecord
