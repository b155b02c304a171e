#include "lint/Teller.h"

#include <algorithm>
#include <utility>

#include "lint/Printable.h"

namespace lint {

namespace {

constexpr int screenWidth = 72;  // with what stands before the excerpt it fits 80 columns
constexpr std::size_t longestQuote = 40;

}  // namespace

std::string shortened(std::string_view text) {
    std::size_t end = std::min(text.size(), longestQuote);
    while (end < text.size() && end > 0 &&
           (static_cast<unsigned char>(text[end]) & 0xC0U) == 0x80U) {
        --end;  // not within a character
    }
    return printable(text.substr(0, end)) + (end < text.size() ? "..." : "");
}

std::string inQuotes(std::string_view text) {
    return '"' + shortened(text) + '"';
}

void Teller::setFile(std::string_view path, const MarkupDocument* document) {
    isFileReached_ = !isStopped_;
    path_ = path;
    document_ = document;
    locator_ = Locator(document == nullptr ? std::string_view() : document->GetDoc());
}

Range Teller::startTag(int elem) const {
    if (document_ == nullptr || elem <= 0) {
        return {};
    }
    return {static_cast<std::size_t>(document_->record(elem).start),
            static_cast<std::size_t>(document_->startTagLength(elem))};
}

void Teller::tell(std::string_view id, Severity severity, Range range, int elem,
                  std::string message, std::string value) {
    if (isInGroup_ && isOnlyCounted(id)) {
        return;
    }
    Finding finding;
    finding.rule = &ruleOf(id);
    finding.severity = severity;
    finding.path = path_;
    // The text of a file is read as a whole, wherever in it the run ends.
    finding.isReached = id.starts_with("EQ2") ? isFileReached_ : !isStopped_;
    finding.message = std::move(message);
    finding.value = std::move(value);
    if (document_ != nullptr && (elem != 0 || range.length != 0)) {
        finding.place = locator_.place(range.offset, range.length);
        finding.where = withPaths_ ? document_->x_GetPath(elem) : std::string();
        if (withExcerpts_) {
            finding.excerpt = locator_.excerpt(range.offset, range.length, screenWidth);
        }
    }
    if (isInGroup_ && ++group_[id].count > maxPerGroup_) {
        group_[id].firstLeftOut = std::move(finding);
    } else {
        report(std::move(finding));
    }
}

void Teller::tell(std::string_view id, Severity severity, int elem, std::string message,
                  std::string value) {
    tell(id, severity, startTag(elem), elem, std::move(message), std::move(value));
}

void Teller::report(Finding&& finding) {
    last_ = finding.place;
    report_.add(finding);
}

bool Teller::isOnlyCounted(std::string_view id) {
    const auto found = group_.find(id);
    const bool isMore = found != group_.end() && found->second.count > maxPerGroup_;
    if (isMore) {
        ++found->second.count;
    }
    return isMore;
}

long Teller::inGroup(std::string_view id) const {
    const auto found = group_.find(id);
    return found == group_.end() ? 0 : found->second.count;
}

void Teller::endGroup() {
    for (auto& [id, member] : group_) {
        const long leftOut = member.count - maxPerGroup_;
        if (leftOut == 1) {
            report(std::move(member.firstLeftOut));
        } else if (leftOut > 1) {
            Finding& rest = member.firstLeftOut;
            rest.count = leftOut;
            rest.message = "and " + std::to_string(leftOut) + " more like this in " + groupName_;
            rest.value.clear();
            rest.excerpt = {};
            report(std::move(rest));
        }
    }
    group_.clear();
    isInGroup_ = false;
}

void Teller::stop() {
    if (!isStopped_) {
        isStopped_ = true;
        stoppedPath_ = path_;
        stoppedPlace_ = last_;
    }
}

}  // namespace lint
