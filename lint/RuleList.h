#pragma once

#include <iosfwd>

#include "lint/Rule.h"

namespace lint {

/// Writes a line for each rule, with its identifier, severity and summary, under headings.
void listRules(std::ostream& out);

/// Writes an array of objects with "id", "severity", "summary" and "effect", one for each rule.
void listRulesJson(std::ostream& out);

/// Writes all that there is to say of a rule, for a terminal of 80 columns.
void explain(const Rule& rule, std::ostream& out);

/// Writes docs/rules.md: all rules as Markdown.
void rulesPage(std::ostream& out);

}  // namespace lint
