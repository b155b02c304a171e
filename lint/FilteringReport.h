#pragma once

#include <vector>

#include "lint/Finding.h"

namespace lint {

/// Which rules are told.
struct Selection {
    std::vector<const Rule*> only;      ///< no other than these; all when it is empty
    std::vector<const Rule*> disabled;  ///< none of these, whatever `only` says

    bool has(const Rule& rule) const;
};

/// Hands the findings of the selected rules on to another report, and counts them.
class FilteringReport : public Report {
  public:
    /// `next` is not owned and must outlive the object.
    FilteringReport(Report& next, Selection selection);

    void add(const Finding& finding) override;
    /// Hands on what it is given.
    void end(const Counts& counts, const Conversion& conversion) override;

    /// What has been handed on so far.
    const Counts& counts() const { return counts_; }

  private:
    Report& next_;
    Selection selection_;
    Counts counts_;
};

}  // namespace lint
