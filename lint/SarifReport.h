#pragma once

#include <array>
#include <ostream>
#include <string>
#include <vector>

#include "lint/Threshold.h"

namespace lint {

/// Writes findings as SARIF 2.1.0, which code hosts and editors show, all at the end. They refuse
/// long lists: no more than `limit` are kept, the worst first, and it is said how many are not.
class SarifReport : public Report {
  public:
    static constexpr std::size_t limit = 5000;

    /// `version` is that of the program; the threshold decides the exit status that is told. The
    /// stream is not owned.
    SarifReport(std::ostream& out, std::string version, Threshold threshold);

    void add(const Finding& finding) override;
    void end(const Counts& counts, const Conversion& conversion) override;

  private:
    std::ostream& out_;
    std::string version_;
    Threshold threshold_;
    /// By severity, the least first: results as they will be written, the first `limit`.
    std::array<std::vector<std::string>, 3> results_;
    std::size_t total_ = 0;  ///< of the results that came
};

/// The path as the reference of a URI, or as one with the scheme "file" when it is absolute.
std::string uriOf(std::string_view path);

/// Tells a finding from others in later runs, wherever it has moved to in its file: 16 hexadecimal
/// digits.
std::string fingerprintOf(const Finding& finding);

}  // namespace lint
