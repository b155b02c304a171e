#include "lint/TextForm.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdlib>

namespace lint {

namespace {

constexpr std::string_view whiteSpace = " \t\n\v\f\r";

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

/// Takes what `matches` from the front and returns how much.
template <class Predicate>
std::size_t take(std::string_view& text, Predicate matches) {
    const auto end = std::find_if_not(text.begin(), text.end(), matches);
    const auto length = static_cast<std::size_t>(end - text.begin());
    text.remove_prefix(length);
    return length;
}

bool takeOneOf(std::string_view& text, std::string_view characters) {
    const bool isThere = !text.empty() && characters.find(text.front()) != std::string_view::npos;
    text.remove_prefix(isThere ? 1 : 0);
    return isThere;
}

}  // namespace

std::string_view trimmed(std::string_view text) {
    const std::size_t first = std::min(text.find_first_not_of(whiteSpace), text.size());
    text.remove_prefix(first);
    const std::size_t last = text.find_last_not_of(whiteSpace);
    return last == std::string_view::npos ? std::string_view() : text.substr(0, last + 1);
}

Form integerForm(std::string_view text) {
    std::string_view digits = trimmed(text);
    const bool hasSign = takeOneOf(digits, "+-");
    const bool isNumber = take(digits, isDigit) > 0 && digits.empty();
    if (!isNumber) {
        return Form::ignored;
    }
    return hasSign || trimmed(text).size() != text.size() ? Form::loose : Form::plain;
}

bool isPlainNumber(std::string_view text) {
    takeOneOf(text, "+-");
    std::size_t digits = take(text, isDigit);
    if (takeOneOf(text, ".")) {
        digits += take(text, isDigit);
    }
    if (digits == 0) {
        return false;
    }
    if (takeOneOf(text, "eE")) {
        takeOneOf(text, "+-");
        return take(text, isDigit) > 0 && text.empty();
    }
    return text.empty();
}

Form numberForm(std::string_view text) {
    if (isPlainNumber(text)) {
        return Form::plain;
    }
    const std::string number(trimmed(text));
    char* end = nullptr;
    std::strtod(number.c_str(), &end);
    const bool isNumber = !number.empty() && end == number.c_str() + number.size();
    return isNumber ? Form::loose : Form::ignored;
}

bool isWrittenAsZero(std::string_view number) {
    const std::string_view digits = number.substr(0, number.find_first_of("eE"));
    return digits.find_first_of("123456789") == std::string_view::npos;
}

bool isUsual(double value) {
    return std::isfinite(value) && std::fpclassify(value) != FP_SUBNORMAL;
}

std::string shortest(double value) {
    std::array<char, 32> text{};
    const auto result = std::to_chars(text.data(), text.data() + text.size(), value);
    return {text.data(), result.ptr};
}

}  // namespace lint
