#pragma once

#include <ostream>
#include <string>

#include "tools/eqrecord/DiffReport.h"
#include "tools/eqrecord/RecordDiff.h"

namespace eqrecord {

/// For people: a line for each field and variable that differs, and some of its values below it.
/// Nothing when the records are the same.
class DiffText : public DiffReport {
  public:
    /// The stream is not owned. Notes what is to be known of the records beside what they hold.
    DiffText(OpenRecord& a, OpenRecord& b, const DiffOptions& options, std::ostream& out);

    void writeField(const BlockPair* pair, const FieldDifference& field) override;
    void writeVariable(const BlockPair& pair, int kind,
                       const ValueDifferences& differences) override;
    void writeMissing(const BlockPair& pair) override;
    /// Says how much differs.
    void end(const DiffTotals& totals) override;

  private:
    std::string placeOf(const BlockPair& pair) const;

    Match match_;
    std::ostream& out_;
};

}  // namespace eqrecord
