#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "tools/eqrecord/BlockMatching.h"
#include "tools/eqrecord/ValueDifferences.h"

namespace eqrecord {

/// The value of a field: text, a number, the identifiers of a record's NUC tables, or nothing in a
/// record that ends before it.
using FieldValue =
    std::variant<std::monostate, std::string, std::int64_t, double, std::vector<std::int64_t>>;

/// A field that differs.
struct FieldDifference {
    std::string_view key;   ///< its name in JSON
    std::string_view name;  ///< its name for people
    FieldValue a;
    FieldValue b;
};

/// What was found in all.
struct DiffTotals {
    std::size_t fields = 0;  ///< that differ
    std::size_t compared = 0;
    std::size_t differing = 0;  ///< values, of so many compared
    struct Missing {
        std::size_t files = 0;
        std::size_t configurations = 0;
        bool isAny() const { return files > 0 || configurations > 0; }
    };
    Missing missingInA;
    Missing missingInB;

    bool isSame() const {
        return fields == 0 && differing == 0 && !missingInA.isAny() && !missingInB.isAny();
    }
};

/// Takes what two records differ in, one thing after the other.
class DiffReport {
  public:
    DiffReport() = default;
    DiffReport(const DiffReport&) = delete;
    DiffReport& operator=(const DiffReport&) = delete;
    virtual ~DiffReport() = default;

    /// A field that differs, of the records when `pair` is null.
    virtual void writeField(const BlockPair* pair, const FieldDifference& field) = 0;
    /// The values of a kind, 0 to 3, of configurations that both records have, also when none
    /// differs.
    virtual void writeVariable(const BlockPair& pair, int kind,
                               const ValueDifferences& differences) = 0;
    /// A file or a configuration that one record lacks.
    virtual void writeMissing(const BlockPair& pair) = 0;
    /// To be called when there is no more.
    virtual void end(const DiffTotals& totals) = 0;
};

}  // namespace eqrecord
