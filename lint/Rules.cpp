// The rows stand in a header for each hundred, so that a rule is found by its number; here they
// become one table. Findings keep pointers to its rows, so it lives as long as the program.

#include <algorithm>
#include <array>
#include <cstddef>

#include "lint/Rule.h"
#include "lint/rules/ComparisonRules.h"
#include "lint/rules/ConfigurationRules.h"
#include "lint/rules/DataRules.h"
#include "lint/rules/DetectorRules.h"
#include "lint/rules/HeaderRules.h"
#include "lint/rules/SetRules.h"
#include "lint/rules/TextRules.h"
#include "lint/rules/VectorRules.h"

namespace lint {

namespace {

template <std::size_t... sizes>
consteval auto joined(const Rule (&... hundreds)[sizes]) {
    std::array<Rule, (sizes + ...)> rows{};
    auto end = rows.begin();
    ((end = std::copy(std::begin(hundreds), std::end(hundreds), end)), ...);
    return rows;
}

constexpr auto table = joined(setRules, textRules, headerRules, dataRules, configurationRules,
                              detectorRules, vectorRules, comparisonRules);

consteval bool isInOrder() {
    return std::ranges::adjacent_find(table, std::ranges::greater_equal{}, &Rule::id) ==
           table.end();
}
static_assert(isInOrder(), "identifiers are sorted, and none comes twice");

}  // namespace

std::span<const Rule> rules() {
    return table;
}

const Rule* findRule(std::string_view id) {
    const auto found = std::ranges::lower_bound(table, id, {}, &Rule::id);
    return found != table.end() && found->id == id ? &*found : nullptr;
}

const Rule& ruleOf(std::string_view id) {
    return *findRule(id);
}

}  // namespace lint
