#include "lint/TextReport.h"

#include <algorithm>
#include <string>

#include "lint/Printable.h"

namespace lint {

namespace {

constexpr std::string_view bold = "1";
constexpr std::string_view boldGreen = "1;32";

/// The styles that compilers have made usual.
std::string_view styleOf(Severity severity) {
    constexpr std::string_view styles[] = {"1;36", "1;35", "1;31"};
    return styles[static_cast<int>(severity)];
}

/// "1 error", "2 errors".
std::string counted(long long count, std::string_view what) {
    return std::to_string(count) + ' ' + std::string(what) + (count == 1 ? "" : "s");
}

std::string summaryOf(const Counts& counts) {
    std::string summary;
    const auto append = [&](long count, Severity severity) {
        if (count > 0) {
            summary += (summary.empty() ? "" : ", ") + counted(count, nameOf(severity));
        }
    };
    append(counts.errors, Severity::error);
    append(counts.warnings, Severity::warning);
    append(counts.notes, Severity::note);
    return summary.empty() ? "no findings" : summary;
}

std::string outcomeOf(const Conversion& conversion) {
    const std::string status = std::to_string(conversion.status);
    const std::string end = conversion.status == Conversion::aborted
                                ? "abort (status " + status + ')'
                                : "end with status " + status;
    return "eqconvert would " + end + "; record of " + counted(conversion.recordBytes, "byte") +
           (conversion.isComplete ? ", complete" : ", incomplete");
}

}  // namespace

std::string TextReport::style(std::string_view code) const {
    return isColoured_ ? "\x1b[" + std::string(code) + 'm' : std::string();
}

void TextReport::add(const Finding& finding) {
    std::string line = style(bold) + printable(finding.path);
    line.append(":").append(std::to_string(finding.place.line)).append(":");
    line.append(std::to_string(finding.place.column)).append(": ").append(style(""));
    line.append(style(styleOf(finding.severity))).append(nameOf(finding.severity)).append(": ");
    line.append(style("")).append(printable(finding.message));
    line.append(finding.isReached ? "" : " (not reached)").append(" [");
    line.append(finding.rule->id).append("]\n");
    out_ << line;
    if (!finding.excerpt.line.empty()) {
        show(finding.excerpt);
    }
}

void TextReport::show(const Excerpt& excerpt) {
    const std::string_view line = excerpt.line;
    const std::size_t cut = std::min(line.find_first_not_of(' '), excerpt.begin);
    const std::string before = masked(line.substr(cut, excerpt.begin - cut));
    const std::string meant = masked(line.substr(excerpt.begin, excerpt.length));
    std::string shown = "   " + before + meant;
    shown.append(masked(line.substr(excerpt.begin + excerpt.length)));
    shown.append("\n   ").append(cellsOf(before), ' ').append(style(boldGreen)).append("^");
    shown.append(std::max<std::size_t>(cellsOf(meant), 1) - 1, '~').append(style(""));
    out_ << shown.append("\n");
}

void TextReport::end(const Counts& counts, const Conversion& conversion) {
    out_ << summaryOf(counts) << ". " << outcomeOf(conversion) << '\n';
}

}  // namespace lint
