// Pattern and text are walked over side by side. At a "*" the place of both is noted, and whenever
// something behind it does not fit, the walk goes back there and the "*" takes one byte more. Only
// the last "*" ever does so: whatever an earlier one could reach by giving way it reaches, too. So
// the time is the product of the two lengths at most, where trying all divisions of the text among
// the "*" would not end.

#include "base/fnmatch.h"

namespace vek {

namespace {

/// Outcome of one pattern element against one byte.
struct Step {
    const char* next;  // pattern behind the element
    bool matches;
};

class Matcher {
  public:
    Matcher(const char* string, int flags) : start_(string), flags_(flags) {}

    bool matches(const char* pattern) {
        const char* string = start_;
        const char* retryPattern = nullptr;  // behind the last "*", null when there is none
        const char* retryString = nullptr;   // first byte that this "*" does not cover
        for (;;) {
            if (*pattern == '*') {
                if (isLeadingPeriod(string)) {
                    return false;
                }
                retryPattern = ++pattern;
                retryString = string;
                continue;
            }
            if (*string == '\0' && *pattern == '\0') {
                return true;
            }
            const Step step = matchOne(pattern, string);
            if (step.matches) {
                pattern = step.next;
                ++string;
                continue;
            }
            // A "*" never takes a path separator, so none survives one.
            if (retryPattern == nullptr || *retryString == '\0' || isSeparator(*retryString)) {
                return false;
            }
            pattern = retryPattern;
            string = ++retryString;
        }
    }

  private:
    bool has(FnmatchFlag flag) const { return (flags_ & flag) != 0; }
    bool isSeparator(char c) const { return c == '/' && has(fnmatchPath); }
    bool isEscape(char c) const { return c == '\\' && !has(fnmatchNoEscape); }

    bool isLeadingPeriod(const char* string) const {
        return *string == '.' && has(fnmatchPeriod) &&
               (string == start_ || isSeparator(string[-1]));
    }

    /// Matches the element at `pattern`, no "*", against the byte at `string`; the end of either
    /// matches nothing.
    Step matchOne(const char* pattern, const char* string) {
        const char c = *string;
        if (c == '\0' || *pattern == '\0') {
            return {pattern, false};
        }
        const bool wildcardFits = !isSeparator(c) && !isLeadingPeriod(string);
        if (*pattern == '?') {
            return {pattern + 1, wildcardFits};
        }
        if (*pattern == '[' && (firstUnclosed_ == nullptr || pattern < firstUnclosed_)) {
            const Step step = matchSet(pattern + 1, static_cast<unsigned char>(c));
            if (step.next != nullptr) {
                return {step.next, step.matches && wildcardFits};
            }
            firstUnclosed_ = pattern;
        }
        if (isEscape(*pattern) && pattern[1] != '\0') {
            ++pattern;
        }
        return {pattern + 1, *pattern == c};
    }

    /// Takes one member of a set, with its escape, and moves `pattern` behind it.
    unsigned char takeMember(const char*& pattern) const {
        if (isEscape(*pattern) && pattern[1] != '\0') {
            ++pattern;
        }
        return static_cast<unsigned char>(*pattern++);
    }

    /// Matches the set whose inside begins at `pattern`. Without a closing "]" next is null.
    Step matchSet(const char* pattern, unsigned char c) const {
        const bool negated = *pattern == '!' || *pattern == '^';
        if (negated) {
            ++pattern;
        }
        bool found = false;
        const char* const first = pattern;  // a "]" here is a member
        while (*pattern != ']' || pattern == first) {
            if (*pattern == '\0') {
                return {nullptr, false};
            }
            const unsigned char low = takeMember(pattern);
            unsigned char high = low;
            // A "-" before the "]" begins no range: it is a member like any other.
            if (*pattern == '-' && pattern[1] != ']' && pattern[1] != '\0') {
                ++pattern;
                high = takeMember(pattern);
            }
            found = found || (low <= c && c <= high);
        }
        return {pattern + 1, found != negated};
    }

    const char* const start_;
    const int flags_;
    /// The first "[" found to lack its "]", null so far. None behind it has one, either, so that
    /// they need not be tried.
    const char* firstUnclosed_ = nullptr;
};

}  // namespace

int fnmatch(const char* pattern, const char* string, int flags) {
    if (flags < 0 || flags > (fnmatchPath | fnmatchNoEscape | fnmatchPeriod)) {
        return -1;
    }
    Matcher matcher(string == nullptr ? "" : string, flags);
    return matcher.matches(pattern == nullptr ? "" : pattern) ? 0 : 1;
}

}  // namespace vek
