#pragma once

#include <algorithm>
#include <bitset>
#include <string>

#include "base/fnmatch.h"

/// Matches a shell pattern by trying everything; flags as for vek::fnmatch.
class SlowMatcher {
  public:
    SlowMatcher(const std::string& pattern, const std::string& text, int flags)
        : pattern_(pattern), text_(text), flags_(flags) {}

    bool matches(std::size_t p, std::size_t t) const {
        if (p == pattern_.size()) {
            return t == text_.size();
        }
        const bool isWildcardsByte = t < text_.size() && !isSlash(t) && !isLeadingPeriod(t);
        if (pattern_[p] == '*') {
            return (!isLeadingPeriod(t) && matches(p + 1, t)) ||
                   (isWildcardsByte && matches(p, t + 1));
        }
        if (t == text_.size()) {
            return false;
        }
        std::bitset<256> set;
        const std::size_t end = pattern_[p] == '[' ? readSet(p + 1, set) : 0;
        if (end != 0 || pattern_[p] == '?') {
            const bool fits = end == 0 || set[static_cast<unsigned char>(text_[t])];
            return isWildcardsByte && fits && matches(std::max(end, p + 1), t + 1);
        }
        return pattern_[literal(p)] == text_[t] && matches(literal(p) + 1, t + 1);
    }

  private:
    bool isSlash(std::size_t t) const {
        return text_[t] == '/' && (flags_ & vek::fnmatchPath) != 0;
    }
    bool isLeadingPeriod(std::size_t t) const {
        return text_[t] == '.' && (flags_ & vek::fnmatchPeriod) != 0 && (t == 0 || isSlash(t - 1));
    }
    /// Where the byte is that stands at `p`, behind its backslash if it has one.
    std::size_t literal(std::size_t p) const {
        const bool isEscaped = pattern_[p] == '\\' && (flags_ & vek::fnmatchNoEscape) == 0;
        return isEscaped && p + 1 < pattern_.size() ? p + 1 : p;
    }
    /// Returns the place behind the set, 0 for one without end.
    std::size_t readSet(std::size_t p, std::bitset<256>& set) const {
        const bool isNegated = p < pattern_.size() && (pattern_[p] == '!' || pattern_[p] == '^');
        const std::size_t first = p + (isNegated ? 1 : 0);
        for (p = first; p < pattern_.size() && (pattern_[p] != ']' || p == first);) {
            const std::size_t low = literal(p);
            std::size_t high = low;
            if (low + 2 < pattern_.size() && pattern_[low + 1] == '-' && pattern_[low + 2] != ']') {
                high = literal(low + 2);
            }
            for (int c = static_cast<unsigned char>(pattern_[low]);
                 c <= static_cast<unsigned char>(pattern_[high]); ++c) {
                set.set(static_cast<std::size_t>(c));
            }
            p = high + 1;
        }
        set = isNegated ? ~set : set;
        return p < pattern_.size() ? p + 1 : 0;
    }

    const std::string& pattern_;
    const std::string& text_;
    const int flags_;
};
