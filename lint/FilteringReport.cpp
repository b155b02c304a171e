#include "lint/FilteringReport.h"

#include <algorithm>
#include <utility>

namespace lint {

namespace {

bool contains(const std::vector<const Rule*>& rules, const Rule& rule) {
    return std::any_of(rules.begin(), rules.end(),
                       [&](const Rule* one) { return one->id == rule.id; });
}

}  // namespace

bool Selection::has(const Rule& rule) const {
    return (only.empty() || contains(only, rule)) && !contains(disabled, rule);
}

FilteringReport::FilteringReport(Report& next, Selection selection)
    : next_(next), selection_(std::move(selection)) {}

void FilteringReport::add(const Finding& finding) {
    if (!selection_.has(*finding.rule)) {
        return;
    }
    switch (finding.severity) {
        case Severity::note:
            counts_.notes += finding.count;
            break;
        case Severity::warning:
            counts_.warnings += finding.count;
            break;
        case Severity::error:
            counts_.errors += finding.count;
            break;
    }
    next_.add(finding);
}

void FilteringReport::end(const Counts& counts, const Conversion& conversion) {
    next_.end(counts, conversion);
}

}  // namespace lint
