#include "markup/PathPos.h"

#include <algorithm>

#include "markup/text/CharClass.h"

namespace {

constexpr bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

std::size_t nameEnd(std::string_view text, std::size_t pos) {
    while (pos < text.size() && !markup::isClass(text[pos], ClassPathName)) {
        ++pos;
    }
    return pos;
}

}  // namespace

bool PathPos::ParsePath() {
    type = PathAny;
    offset = 0;
    attributeOffset = 0;
    nameStart = 0;
    firstName_ = {};
    if (text_.empty()) {
        return true;
    }
    type = text_.starts_with("//") ? PathAnywhere : at('/') ? PathAbsolute : PathRelative;
    nameStart = static_cast<std::size_t>(type) - 1;
    offset = nameStart;
    if (!parseSegments()) {
        type = PathInvalid;
        return false;
    }
    offset = nameStart;
    firstName_ = text_.substr(nameStart, nameEnd(text_, nameStart) - nameStart);
    mayNameTag_ = std::none_of(firstName_.begin(), firstName_.end(),
                               [](char c) { return markup::isClass(c, ClassName); });
    return true;
}

bool PathPos::parseSegments() {
    while (skipName()) {
        while (at('[')) {
            if (!parsePredicate()) {
                return false;
            }
        }
        if (offset == text_.size()) {
            return true;
        }
        if (!at('/')) {
            return false;
        }
        ++offset;
        if (at('@')) {
            attributeOffset = ++offset;
            return skipName() && offset == text_.size();
        }
        if (type == PathAnywhere) {
            return false;
        }
    }
    return false;
}

/// Passes over a name; false when it is empty.
bool PathPos::skipName() {
    const std::size_t start = offset;
    offset = nameEnd(text_, start);
    return offset > start;
}

/// Passes over one predicate with its brackets. Requires: at('[').
bool PathPos::parsePredicate() {
    ++offset;
    if (offset < text_.size() && isDigit(text_[offset])) {
        if (at('0')) {
            return false;
        }
        while (offset < text_.size() && isDigit(text_[offset])) {
            ++offset;
        }
    } else if (at('@')) {
        ++offset;
        if (!skipName()) {
            return false;
        }
        if (at('=')) {
            ++offset;
            std::string_view value;
            if (!GetValAndInc(value)) {
                return false;
            }
        }
    } else if (!skipName()) {
        return false;
    }
    if (!at(']')) {
        return false;
    }
    ++offset;
    return true;
}

bool PathPos::GetValAndInc(std::string_view& value) {
    const bool quoted = at('"') || at('\'');
    const std::size_t start = quoted ? offset + 1 : offset;
    const std::size_t end = text_.find(quoted ? text_[offset] : ']', start);
    if (end == std::string_view::npos || (!quoted && end == start)) {
        return false;
    }
    value = text_.substr(start, end - start);
    offset = quoted ? end + 1 : end;
    return true;
}
