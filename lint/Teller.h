#pragma once

#include <map>
#include <string>
#include <string_view>
#include <utility>

#include "lint/CheckOptions.h"
#include "lint/Finding.h"
#include "lint/Locator.h"
#include "markup/Markup.h"

namespace lint {

/// A piece of a document's text, in bytes.
struct Range {
    std::size_t offset = 0;
    std::size_t length = 0;
};

/// Makes findings of what the checks have to tell: adds the file, the place and the element, and
/// whether the run gets there at all. Of a long run of findings of one kind it tells the first ones
/// and counts the rest.
class Teller {
  public:
    /// The report is not owned. Of the findings of one rule in one group at most as many as the
    /// options say for a vector are told one by one.
    Teller(Report& report, const CheckOptions& options)
        : report_(report),
          maxPerGroup_(options.maxPerVector),
          withExcerpts_(options.withExcerpts),
          withPaths_(options.withPaths) {}

    /// What is told from now on is about this file. The document, null when there is none, is not
    /// owned; it must live until the next call.
    void setFile(std::string_view path, const MarkupDocument* document);

    /// Tells a finding on a piece of the text; `elem` is the element that it belongs to, 0 for
    /// none. `value` is what is used instead of what is written.
    void tell(std::string_view id, Severity severity, Range range, int elem, std::string message,
              std::string value = {});
    /// The same on the start tag of an element, or on the whole file for 0.
    void tell(std::string_view id, Severity severity, int elem, std::string message,
              std::string value = {});

    /// Until `endGroup` all belongs to one group, of which not everything is told. `name` is what
    /// they have in common.
    void beginGroup(std::string name) {
        isInGroup_ = true;
        groupName_ = std::move(name);
    }
    void endGroup();
    /// Whether a finding of this rule would only be counted; then it is. So that one who has many
    /// need not put each into words.
    bool isOnlyCounted(std::string_view id);
    /// How many findings of this rule the group has so far.
    long inGroup(std::string_view id) const;

    /// The run ends at what was told last: what follows is not reached.
    void stop();
    bool isStopped() const { return isStopped_; }
    std::string_view stoppedPath() const { return stoppedPath_; }
    const Place& stoppedPlace() const { return stoppedPlace_; }

    /// The start tag of an element.
    Range startTag(int elem) const;

  private:
    /// The findings of a rule in a group.
    struct Member {
        long count = 0;
        Finding firstLeftOut;
    };

    void report(Finding&& finding);

    Report& report_;
    long maxPerGroup_;
    bool withExcerpts_;
    bool withPaths_;
    std::string_view path_;
    const MarkupDocument* document_ = nullptr;
    Locator locator_{std::string_view()};
    bool isFileReached_ = true;
    bool isInGroup_ = false;
    std::string groupName_;
    std::map<std::string_view, Member> group_;  ///< by rule
    Place last_;                                ///< of the finding told last
    bool isStopped_ = false;
    std::string_view stoppedPath_;
    Place stoppedPlace_;
};

/// The first 40 bytes of a text of a file, for messages, with control characters as escapes.
std::string shortened(std::string_view text);
/// The same in quotes.
std::string inQuotes(std::string_view text);

}  // namespace lint
