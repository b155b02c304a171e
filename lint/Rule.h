#pragma once

#include <span>
#include <string_view>

#include "lint/Severity.h"

namespace lint {

/// What is looked for, and what is told of it beside the place: the row of a table.
struct Rule {
    std::string_view id;       ///< "EQ" and three digits, never used again for something else
    Severity severity;         ///< the usual one, and the highest
    std::string_view summary;  ///< when it is told, in a few words without a full stop
    std::string_view effect;   ///< what the converter does then, likewise
    /// A paragraph: what it means, and how to mend it. Its line ends count as spaces.
    std::string_view explanation;
    std::string_view example;  ///< a piece of a file that shows it, without a line end behind it
};

/// All rules, in the order of their identifiers.
std::span<const Rule> rules();

/// The rule with this identifier; null when there is none.
const Rule* findRule(std::string_view id);

/// The rule with this identifier. Requires: there is one.
const Rule& ruleOf(std::string_view id);

}  // namespace lint
