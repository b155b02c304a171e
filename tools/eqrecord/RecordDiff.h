#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "tools/eqrecord/DiffReport.h"
#include "tools/eqrecord/Equality.h"
#include "tools/eqrecord/OpenRecord.h"
#include "tools/eqrecord/Selection.h"

namespace eqrecord {

/// What is compared, and how.
struct DiffOptions {
    Tolerance tolerance;
    Selection selection;
    std::vector<std::string> ignored;  ///< fields, by the names that they have in JSON
    Match match = Match::band;
    std::size_t mostPairs = 20;  ///< of differing values that are kept of a variable
    bool stopsEarly = false;     ///< at the first difference

    bool takes(std::string_view field) const;
    /// Whether values of a kind, 0 to 3, are compared.
    bool takesKind(int kind) const;
};

/// The names of fields that can be ignored, those of the kinds of coefficient among them.
std::span<const std::string_view> comparedFields();

/// Compares two records.
class RecordDiff {
  public:
    /// Nothing is owned.
    RecordDiff(OpenRecord& a, OpenRecord& b, const DiffOptions& options, DiffReport& report)
        : a_(a), b_(b), options_(options), report_(report) {}

    /// Reports all that differs and returns what was found.
    DiffTotals run();

  private:
    bool isDone() const { return options_.stopsEarly && !totals_.isSame(); }
    void compareRecords();
    void comparePair(const BlockPair& pair);
    void compareFiles(const BlockPair& pair);
    void compareConfigurations(const BlockPair& pair);
    void compareVectors(const BlockPair& pair, int kind);
    void compareField(const BlockPair* pair, std::string_view key, FieldValue a, FieldValue b);
    void addMissing(const BlockPair& pair);

    OpenRecord& a_;
    OpenRecord& b_;
    const DiffOptions& options_;
    DiffReport& report_;
    DiffTotals totals_;
    std::vector<double> valuesOfA_;
    std::vector<double> valuesOfB_;
};

}  // namespace eqrecord
