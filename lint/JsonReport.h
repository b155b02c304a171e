#pragma once

#include <ostream>

#include "lint/Finding.h"

namespace lint {

/// Writes findings as one JSON object, "eqlint-1", each when it comes and on a line of its own.
/// All is ASCII; a byte that is no UTF-8 becomes U+FFFD.
class JsonReport : public Report {
  public:
    /// The stream is not owned.
    explicit JsonReport(std::ostream& out) : out_(out) {}

    void add(const Finding& finding) override;
    void end(const Counts& counts, const Conversion& conversion) override;

  private:
    std::ostream& out_;
    bool isFirst_ = true;
};

}  // namespace lint
