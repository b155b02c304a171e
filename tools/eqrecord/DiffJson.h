#pragma once

#include <ostream>
#include <string>
#include <vector>

#include "tools/eqrecord/DiffReport.h"
#include "tools/eqrecord/JsonWriter.h"
#include "tools/eqrecord/RecordDiff.h"

namespace eqrecord {

/// One line of JSON, as docs/eqrecord-diff-1.schema.json says.
class DiffJson : public DiffReport {
  public:
    /// The stream is not owned.
    DiffJson(const OpenRecord& a, const OpenRecord& b, const DiffOptions& options,
             std::ostream& out);

    void writeField(const BlockPair* pair, const FieldDifference& field) override;
    void writeVariable(const BlockPair& pair, int kind,
                       const ValueDifferences& differences) override;
    void writeMissing(const BlockPair& pair) override;
    void end(const DiffTotals& totals) override;

  private:
    void writeRecord(std::string_view key, const OpenRecord& record);
    void writeTolerance(const Tolerance& tolerance);
    void writeKind(const BlockPair& pair, int kind, const ValueDifferences& differences);
    void writePair(const BlockPair& pair);
    void writeBlock(std::string_view key, const std::optional<Block>& block);
    void writeGreatest(std::string_view key, const std::optional<GreatestDistance>& greatest);
    void writeValues(const ValuePair& pair);
    void writeFields();

    /// What comes while variables are written, and has to wait for their end.
    struct Field {
        std::optional<BlockPair> pair;
        FieldDifference difference;
    };

    DiffOptions options_;
    std::ostream& out_;
    JsonWriter json_;
    std::vector<Field> fields_;
    std::vector<BlockPair> missing_;
};

}  // namespace eqrecord
