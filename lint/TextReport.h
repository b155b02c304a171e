#pragma once

#include <ostream>

#include "lint/Finding.h"

namespace lint {

/// Writes findings for people, each when it comes: the place, what it is, the rule, and the line
/// with a mark below it. Whatever the files hold, no control character gets out but line ends and,
/// if it is coloured, the sequences for that.
class TextReport : public Report {
  public:
    /// The stream is not owned.
    TextReport(std::ostream& out, bool isColoured) : out_(out), isColoured_(isColoured) {}

    void add(const Finding& finding) override;
    void end(const Counts& counts, const Conversion& conversion) override;

  private:
    void show(const Excerpt& excerpt);
    /// The sequence that begins a style of a terminal ("1;31"), "" without colours.
    std::string style(std::string_view code) const;

    std::ostream& out_;
    bool isColoured_;
};

}  // namespace lint
