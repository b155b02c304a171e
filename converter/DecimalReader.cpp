#include "converter/DecimalReader.h"

#include <cmath>
#include <cstdint>

#include "converter/DecimalScale.h"

namespace decimal {

namespace {

constexpr int maxDigits = 19;  // always fit into 64 bits

constexpr bool isDigit(char c) {
    return static_cast<unsigned char>(c - '0') < 10;
}

/// Adds the digits at `text` to `w` and returns the place behind them. `w` wraps around beyond 64
/// bits; the caller counts the digits.
const char* readDigits(const char* text, const char* end, std::uint64_t& w) {
    for (; text != end && isDigit(*text); ++text) {
        w = w * 10 + static_cast<std::uint64_t>(*text - '0');
    }
    return text;
}

/// Reads an exponent behind its "e" into `exponent`; null when there is none or it is a long one.
const char* readExponent(const char* text, const char* end, int& exponent) {
    const bool isNegative = text != end && *text == '-';
    text += isNegative || (text != end && *text == '+') ? 1 : 0;
    constexpr int mostDigits = 4;
    std::uint64_t size = 0;
    const char* const behind = readDigits(text, end, size);
    if (behind == text || behind - text > mostDigits) {
        return nullptr;
    }
    exponent = isNegative ? -static_cast<int>(size) : static_cast<int>(size);
    return behind;
}

}  // namespace

bool read(const char* text, const char* end, double& value) {
    const bool isNegative = text != end && *text == '-';
    text += isNegative || (text != end && *text == '+') ? 1 : 0;
    std::uint64_t w = 0;
    int exponent = 0;
    const char* const start = text;
    text = readDigits(text, end, w);
    auto digits = text - start;
    if (text != end && *text == '.') {
        const char* const fraction = ++text;
        text = readDigits(text, end, w);
        digits += text - fraction;
        exponent = -static_cast<int>(text - fraction);
    }
    if (text != end && (*text | 0x20) == 'e') {
        int written = 0;
        text = readExponent(text + 1, end, written);
        exponent += written;
    }
    double magnitude = 0;
    if (text != end || digits == 0 || digits > maxDigits || !scale(w, exponent, magnitude)) {
        return false;
    }
    value = std::copysign(magnitude, isNegative ? -1.0 : 1.0);
    return true;
}

}  // namespace decimal
