// One function for each rule of the grammar, which takes what it can from the scan offset on and
// tells whether that was whole. There is nothing to go back to: the next byte always decides.
//
// All of a path is checked, but only its first name is ever used. A path whose rest is wrong finds
// nothing; one whose rest is right finds what its first name finds. Callers rely on both.

#include "markup/PathPos.h"

#include "markup/text/CharClass.h"

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
    // Types count the slashes that paths begin with, from 1 for none.
    nameStart = static_cast<std::size_t>(type) - 1;
    offset = nameStart;
    if (!parseSegments()) {
        type = PathInvalid;
        return false;
    }
    // The rest was only to be checked.
    offset = nameStart;
    const std::size_t nameEnd = markup::findClass(text_, nameStart, ClassPathName);
    firstName_ = text_.substr(nameStart, nameEnd - nameStart);
    mayNameTag_ = markup::findClass(firstName_, 0, ClassName) == firstName_.size();
    return true;
}

bool PathPos::parseSegments() {
    do {
        if (!parseSegment()) {
            return false;
        }
        if (offset == text_.size()) {
            return true;
        }
        if (!take('/')) {
            return false;
        }
        if (take('@')) {
            attributeOffset = offset;
            return skipName() && offset == text_.size();
        }
    } while (type != PathAnywhere);
    return false;
}

bool PathPos::parseSegment() {
    bool isValid = skipName();
    while (isValid && take('[')) {
        isValid = parsePredicate() && take(']');
    }
    return isValid;
}

/// Passes over what stands between the brackets of a predicate.
bool PathPos::parsePredicate() {
    if (take('@')) {
        std::string_view value;
        return skipName() && (!take('=') || GetValAndInc(value));
    }
    if (!isDigitNext()) {
        return skipName();
    }
    const bool isPosition = !at('0');  // positions count from 1 and have no leading zeros
    while (isDigitNext()) {
        ++offset;
    }
    return isPosition;
}

/// Passes over a name; false when it is empty.
bool PathPos::skipName() {
    const std::size_t start = offset;
    offset = markup::findClass(text_, start, ClassPathName);
    return offset > start;
}

/// Passes over `c` where it comes next.
bool PathPos::take(char c) {
    const bool isNext = at(c);
    offset += isNext ? 1 : 0;
    return isNext;
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
