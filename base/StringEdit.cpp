// The operations of vek::String that change the text. All that make it longer go through openGap():
// a new block with a gap in it, and the old one kept until the text that fills the gap is copied,
// which may lie there. Those that replace many pieces collect the result beside the string first,
// since a block of exact length for each piece would take quadratic time.

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <utility>

#include "base/String.h"

namespace vek {

namespace {

/// What one byte becomes in escape().
void appendEscaped(std::string& result, char c, bool controls) {
    constexpr std::string_view plain = "\n\r\t\\";
    constexpr std::string_view letters = "nrt\\";
    const auto special = plain.find(c);
    if (special != std::string_view::npos && (controls || c == '\\')) {
        result += '\\';
        result += letters[special];
    } else if (special != std::string_view::npos ||
               std::isprint(static_cast<unsigned char>(c)) != 0) {
        result += c;
    } else {
        char code[8];
        std::snprintf(code, sizeof(code), "\\d%.3u", unsigned{static_cast<unsigned char>(c)});
        result += code;
    }
}

char partnerOf(char open) {
    switch (open) {
        case '[':
            return ']';
        case '{':
            return '}';
        case '(':
            return ')';
        default:
            return open;
    }
}

}  // namespace

char* String::append(const char* text, int count) {
    if (text == nullptr && count <= 0) {
        return data_ ? data_.get() + length_ : nullptr;
    }
    const std::size_t added = count < 0 ? std::strlen(text) : static_cast<std::size_t>(count);
    std::unique_ptr<char[]> old;
    char* gap = openGap(length_, static_cast<std::int64_t>(added), old);
    if (text != nullptr) {
        std::copy_n(text, added, gap);
    } else {
        std::fill_n(gap, added, '\0');
    }
    return gap;
}

String& String::insert(int position, const char* text, int count) {
    if (text != nullptr) {
        const std::size_t added = count < 0 ? std::strlen(text) : static_cast<std::size_t>(count);
        std::unique_ptr<char[]> old;
        char* gap =
            openGap(std::clamp(position, 0, length_), static_cast<std::int64_t>(added), old);
        std::copy_n(text, added, gap);
    }
    return *this;
}

String& String::insert(int position, const String& text) {
    return insert(position, text.data_.get(), text.length_);
}

String& String::operator+=(const String& text) {
    append(text.data_.get(), text.length_);
    return *this;
}

String& String::operator+=(const char* text) {
    append(text);
    return *this;
}

String& String::operator+=(char c) {
    append(&c, 1);
    return *this;
}

String String::operator+(const String& text) const {
    String result(*this);
    result += text;
    return result;
}

String String::operator+(const char* text) const {
    String result(*this);
    result += text;
    return result;
}

String String::operator+(char c) const {
    String result(*this);
    result += c;
    return result;
}

String& String::operator<<(int value) {
    return *this << static_cast<long long>(value);
}

String& String::operator<<(long value) {
    return *this << static_cast<long long>(value);
}

String& String::operator<<(long long value) {
    return appendNumber(std::to_string(value).c_str());
}

String& String::operator<<(double value) {
    char digits[32];
    std::snprintf(digits, sizeof(digits), "%.15g", value);
    return appendNumber(digits);
}

String& String::fill(char c) {
    std::fill_n(data_.get(), length_, c);
    return *this;
}

String& String::swap(char from, char to) {
    if (to != '\0') {
        std::replace(data_.get(), data_.get() + length_, from, to);
    }
    return *this;
}

String& String::swap(const char* from, const char* to) {
    if (from == nullptr || *from == '\0' || to == nullptr) {
        return *this;
    }
    const int found = count(from);
    if (found <= 0) {
        return *this;
    }
    const std::size_t fromLength = std::strlen(from);
    const std::size_t toLength = std::strlen(to);
    // Both before any work: what is too long for a String can be longer than the memory.
    checkLength(toLength);
    const auto growth = static_cast<std::int64_t>(toLength) - static_cast<std::int64_t>(fromLength);
    checkLength(static_cast<std::size_t>(length_ + found * growth));
    std::string result;
    std::size_t done = 0;
    for (int at = find(from); at >= 0; at = find(from, static_cast<int>(done))) {
        result.append(view().substr(done, static_cast<std::size_t>(at) - done)).append(to);
        done = static_cast<std::size_t>(at) + fromLength;
    }
    assign(result.append(view().substr(done)));
    return *this;
}

String& String::uppercase() {
    std::transform(data_.get(), data_.get() + length_, data_.get(),
                   [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
    return *this;
}

String& String::lowercase() {
    std::transform(data_.get(), data_.get() + length_, data_.get(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return *this;
}

String& String::trim(char c) {
    const std::string_view blanks = c == '\0' ? std::string_view(" \t") : std::string_view(&c, 1);
    const std::string_view text = view();
    if (text.empty()) {
        return *this;
    }
    const std::size_t first = text.find_first_not_of(blanks);
    if (first == std::string_view::npos) {
        assign(text.substr(0, 1));  // required: blank text keeps one blank
    } else {
        assign(text.substr(first, text.find_last_not_of(blanks) - first + 1));
    }
    return *this;
}

String& String::escape(bool controls) {
    if (!isNull()) {
        std::string result;
        for (const char c : view()) {
            appendEscaped(result, c, controls);
            checkLength(result.size());
        }
        assign(result);
    }
    return *this;
}

String& String::quote(char open) {
    if (open != '\0') {
        std::string result(1, open);
        assign(result.append(view()) += partnerOf(open));
    }
    return *this;
}

String& String::pad(int width, const char* padding) {
    // In 64 bits, because the absolute value of INT_MIN is no int.
    const std::int64_t missing = std::abs(std::int64_t{width}) - length_;
    if (missing <= 0) {
        return *this;
    }
    const std::string_view unit = padding == nullptr || *padding == '\0' ? " " : padding;
    std::unique_ptr<char[]> old;
    char* gap = openGap(width > 0 ? 0 : length_, missing, old);
    for (std::size_t i = 0; i < static_cast<std::size_t>(missing); ++i) {
        gap[i] = unit[i % unit.size()];
    }
    return *this;
}

char* String::openGap(int position, std::int64_t added, std::unique_ptr<char[]>& keep) {
    const int behind = length_ - position;
    keep = reallocate(length_ + added);
    char* gap = std::copy_n(keep.get(), position, data_.get());
    std::copy_n(keep.get() + position, behind, gap + added);
    return gap;
}

String& String::appendNumber(const char* digits) {
    // find_last_not_of gives npos for "nothing but NULs", hence + 1 gives 0.
    const std::size_t kept = view().find_last_not_of('\0') + 1;
    String result(c_str(), static_cast<int>(kept));
    result += digits;
    return *this = std::move(result);
}

}  // namespace vek
