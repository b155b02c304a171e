// The operations of vek::String that search, compare, test and convert the text. Those that take a
// text to search for see only what stands before the first NUL, as the C library's functions do by
// which they are defined; those that take one character see the whole text. Numbers are converted
// by the C library, in the "C" locale that no program of this project ever leaves.

#include <strings.h>

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <cstring>

#include "base/String.h"
#include "base/fnmatch.h"

namespace vek {

namespace {

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

std::string_view withoutSign(std::string_view text) {
    const bool hasSign = !text.empty() && (text.front() == '+' || text.front() == '-');
    return text.substr(hasSign ? 1 : 0);
}

}  // namespace

int String::find(char c, int start, bool reverse) const {
    if (isNull() || start < 0) {
        return -1;
    }
    if (!reverse && start > length_) {
        return start;  // required, see the header
    }
    const auto from = static_cast<std::size_t>(start);
    const std::size_t at = reverse ? view().rfind(c, from) : view().find(c, from);
    return at == std::string_view::npos ? -1 : static_cast<int>(at);
}

int String::find(const char* text, int start) const {
    const int from = std::max(start, 0);
    if (text == nullptr || from >= length_) {
        return -1;
    }
    const char* at = std::strstr(data_.get() + from, text);
    return at == nullptr ? -1 : static_cast<int>(at - data_.get());
}

int String::count(const char* text) const {
    if (text == nullptr || *text == '\0') {
        return -1;
    }
    const std::size_t textLength = std::strlen(text);
    int found = 0;
    for (int at = find(text); at >= 0;
         at = find(text, static_cast<int>(static_cast<std::size_t>(at) + textLength))) {
        ++found;
    }
    return found;
}

bool String::match(const char* pattern) const {
    if (isNull()) {
        return pattern == nullptr;
    }
    return fnmatch(pattern == nullptr ? "*" : pattern, c_str(), 0) == 0;
}

int String::cmp(const char* other, int n) const {
    if (other == nullptr) {
        return isNull() ? 0 : -1;
    }
    if (isNull()) {
        return 1;
    }
    return n < 0 ? std::strcmp(c_str(), other)
                 : std::strncmp(c_str(), other, static_cast<std::size_t>(n));
}

int String::casecmp(const char* other, int n) const {
    if (other == nullptr || isNull()) {
        return cmp(other, n);
    }
    return n < 0 ? ::strcasecmp(c_str(), other)
                 : ::strncasecmp(c_str(), other, static_cast<std::size_t>(n));
}

bool String::isInteger() const {
    return isNumber() == 2;
}

int String::isNumber() const {
    const std::string_view digits = withoutSign(view());
    const auto points = std::count(digits.begin(), digits.end(), '.');
    const auto others = static_cast<std::ptrdiff_t>(digits.size()) - points -
                        std::count_if(digits.begin(), digits.end(), isDigit);
    if (length_ == 0 || others > 0 || points > 1) {
        return 0;
    }
    return points == 0 ? 2 : 1;
}

bool String::isAlpha() const {
    const std::string_view text = view();
    return std::all_of(text.begin(), text.end(), [](unsigned char c) { return std::isalnum(c); });
}

int String::toInt() const {
    return static_cast<int>(toLong());
}

long String::toLong() const {
    return std::strtol(c_str(), nullptr, 10);
}

long long String::toLLong() const {
    return std::strtoll(c_str(), nullptr, 10);
}

double String::toDouble() const {
    return std::strtod(c_str(), nullptr);
}

double String::toSmartDouble() const {
    char* end = nullptr;
    const double value = std::strtod(c_str(), &end);
    return length_ > 0 && end == c_str() + length_ ? value : nan;
}

}  // namespace vek
