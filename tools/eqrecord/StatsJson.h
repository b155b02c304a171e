#pragma once

#include <optional>
#include <ostream>

#include "tools/eqrecord/JsonWriter.h"
#include "tools/eqrecord/OpenRecord.h"
#include "tools/eqrecord/Outliers.h"
#include "tools/eqrecord/StatsReport.h"

namespace eqrecord {

/// One line of JSON, as docs/eqrecord-stats-1.schema.json says.
class StatsJson : public StatsReport {
  public:
    /// Neither the record nor the stream are owned. Outliers are told with a rule.
    StatsJson(const OpenRecord& record, const std::optional<OutlierRule>& rule, std::ostream& out);

    void write(const Block& block, const std::vector<VectorStats>& vectors) override;
    void end() override;

  private:
    void writeVector(const VectorStats& vector);
    void writeOutliers(const std::vector<Outlier>& outliers);

    std::ostream& out_;
    JsonWriter json_;
    bool showsOutliers_;
    std::size_t outliers_ = 0;
};

}  // namespace eqrecord
