#include "converter/DecimalReader.h"

#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstring>

namespace decimal {

namespace {

// The way from w * 10^q to a double is that of D. Lemire, "Number Parsing at a Gigabyte per Second"
// (2021): multiply w, shifted up to 64 bits, by the leading 128 bits of 5^q, and round the leading
// bits of the product. Where the truncated product could round otherwise than the exact one, the
// number is refused.

__extension__ typedef unsigned __int128 Wide;  // of both compilers, not of the standard

/// Decimal exponents of the table. 5^55 is the largest power of five below 2^128.
constexpr int maxExponent = 55;
constexpr int minExponent = -55;
constexpr int maxDigits = 19;  // always fit into 64 bits

constexpr int mantissaBits = 52;
constexpr int exponentBias = 1023;
constexpr int infiniteExponent = 2047;

struct Power {
    std::uint64_t high;
    std::uint64_t low;
};

constexpr Power split(Wide value) {
    return {static_cast<std::uint64_t>(value >> 64), static_cast<std::uint64_t>(value)};
}

constexpr bool hasTopBit(Wide value) {
    return (value >> 127) != 0;
}

constexpr Wide powerOf5(int exponent) {
    Wide power = 1;
    for (; exponent > 0; --exponent) {
        power *= 5;
    }
    return power;
}

/// The leading 128 bits of 5^q, exact.
constexpr Power positivePower(int exponent) {
    Wide power = powerOf5(exponent);
    while (!hasTopBit(power)) {
        power <<= 1;
    }
    return split(power);
}

/// The leading 128 bits of 5^-q, rounded up: bit by bit the quotient of a power of two and 5^q.
constexpr Power negativePower(int exponent) {
    const Wide divisor = powerOf5(exponent);
    Wide quotient = 0;
    Wide rest = 1;
    while (!hasTopBit(quotient)) {
        const bool overflows = hasTopBit(rest);
        rest <<= 1;
        quotient <<= 1;
        if (overflows || rest >= divisor) {
            rest -= divisor;
            quotient |= 1;
        }
    }
    return split(quotient + 1);
}

constexpr auto powersOf5 = [] {
    std::array<Power, maxExponent - minExponent + 1> table{};
    for (int q = minExponent; q <= maxExponent; ++q) {
        table[static_cast<std::size_t>(q - minExponent)] =
            q < 0 ? negativePower(-q) : positivePower(q);
    }
    return table;
}();

constexpr std::array<double, 23> exactPowersOf10{1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                                 1e8,  1e9,  1e10, 1e11, 1e12, 1e13, 1e14, 1e15,
                                                 1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};

/// floor(log2(10^q)) + 63, for the exponents of the table.
constexpr int binaryExponent(int q) {
    return ((152170 + 65536) * q >> 16) + 63;
}

/// Rounds w * 10^q; false when it takes more than the truncated product to tell. Requires: w != 0
/// and q in the table.
bool roundProduct(std::uint64_t w, int q, double& value) {
    const int shift = std::countl_zero(w);
    w <<= shift;
    const Power& power = powersOf5[static_cast<std::size_t>(q - minExponent)];
    Wide product = static_cast<Wide>(w) * power.high;
    // Of the upper half, 9 bits lie below those that are kept and the one that rounds. Only when
    // all are set can a carry from the lower half of the power reach the bits that count.
    constexpr std::uint64_t belowRounding = 0x1FF;
    if ((static_cast<std::uint64_t>(product >> 64) & belowRounding) == belowRounding) {
        product += static_cast<Wide>(w) * power.low >> 64;
    }
    const auto upper = static_cast<std::uint64_t>(product >> 64);
    const auto lower = static_cast<std::uint64_t>(product);
    // Beyond these the power is not exact and the sum is a bound only.
    if (lower == ~std::uint64_t{0} && q < -27) {
        return false;
    }
    const int topBit = static_cast<int>(upper >> 63);
    const int dropped = topBit + 64 - mantissaBits - 3;
    std::uint64_t mantissa = upper >> dropped;  // with one bit more than is kept
    int exponent = binaryExponent(q) + topBit - shift + exponentBias;
    if (exponent <= 0) {
        return false;
    }
    // Exactly half way between two doubles, which only these exponents allow: to the even one.
    if (lower <= 1 && q >= -4 && q <= 23 && (mantissa & 3) == 1 && mantissa << dropped == upper) {
        mantissa &= ~std::uint64_t{1};
    }
    mantissa += mantissa & 1;
    mantissa >>= 1;
    if (mantissa >> (mantissaBits + 1) != 0) {
        mantissa >>= 1;
        ++exponent;
    }
    if (exponent >= infiniteExponent) {
        return false;
    }
    constexpr std::uint64_t mantissaMask = (std::uint64_t{1} << mantissaBits) - 1;
    value = std::bit_cast<double>((mantissa & mantissaMask) | static_cast<std::uint64_t>(exponent)
                                                                  << mantissaBits);
    return true;
}

/// w * 10^q; false when it is not for this reader.
bool toDouble(std::uint64_t w, int q, double& value) {
    constexpr std::uint64_t exactLimit = std::uint64_t{1} << (mantissaBits + 1);
    if (w < exactLimit && q >= -22 && q <= 22) {
        // Both are exact as doubles, so one operation rounds once.
        const auto exact = static_cast<double>(w);
        value = q < 0 ? exact / exactPowersOf10[static_cast<std::size_t>(-q)]
                      : exact * exactPowersOf10[static_cast<std::size_t>(q)];
        return true;
    }
    if (w == 0) {
        value = 0;
        return true;
    }
    return q >= minExponent && q <= maxExponent && roundProduct(w, q, value);
}

/// The first byte of a text is then the lowest of a word.
constexpr bool isLittleEndian = std::endian::native == std::endian::little;

constexpr bool isDigit(char c) {
    return static_cast<unsigned char>(c - '0') < 10;
}

constexpr std::uint64_t zeros = 0x3030303030303030;  // "00000000"

/// Bits in each of 8 bytes that is no digit; those behind the first such byte mean nothing.
constexpr std::uint64_t notDigits(std::uint64_t bytes) {
    constexpr std::uint64_t upperHalves = 0xF0F0F0F0F0F0F0F0;
    constexpr std::uint64_t sixes = 0x0606060606060606;  // carry ":" and above out of "0" to "9"
    return ((bytes & upperHalves) ^ zeros) | (((bytes + sixes) & upperHalves) ^ zeros);
}

/// The number that 8 digits, as values from 0 to 9, make, the first one in the lowest byte.
constexpr std::uint64_t eightDigits(std::uint64_t digits) {
    digits = digits * 10 + (digits >> 8);  // pairs in every other byte
    constexpr std::uint64_t mask = 0x000000FF000000FF;
    constexpr std::uint64_t ofPairs1And3 = 100 + (std::uint64_t{1000000} << 32);
    constexpr std::uint64_t ofPairs2And4 = 1 + (std::uint64_t{10000} << 32);
    return ((digits & mask) * ofPairs1And3 + ((digits >> 16) & mask) * ofPairs2And4) >> 32;
}

constexpr std::array<std::uint64_t, 9> smallPowersOf10{1,      10,      100,      1000,     10000,
                                                       100000, 1000000, 10000000, 100000000};

std::uint64_t load(const char* text) {
    std::uint64_t bytes;
    std::memcpy(&bytes, text, sizeof bytes);
    return bytes;
}

/// The number that the first `count` of 8 bytes make, 0 for none.
constexpr std::uint64_t leadingNumber(std::uint64_t bytes, unsigned count) {
    // In two steps, since 64 is too many for one.
    return eightDigits(((bytes - zeros) << (32 - 4 * count)) << (32 - 4 * count));
}

/// Whether the first `count` of 8 bytes are digits.
constexpr bool areDigits(std::uint64_t bytes, unsigned count) {
    return ((notDigits(bytes) << (32 - 4 * count)) << (32 - 4 * count)) == 0;
}

/// A number taken apart: w * 10^exponent, and its sign.
struct Parts {
    std::uint64_t w = 0;
    int exponent = 0;
    bool isNegative = false;
};

/// Cuts an exponent "e+dd" or "e-dd" off the end of a number and returns its value; 0 when the
/// number has none of this form.
int cutShortExponent(const char* text, const char*& end) {
    constexpr std::ptrdiff_t length = 4;
    if (end - text <= length || (end[-4] | 0x20) != 'e' || (end[-3] != '-' && end[-3] != '+') ||
        !isDigit(end[-2]) || !isDigit(end[-1])) {
        return 0;
    }
    const int size = (end[-2] - '0') * 10 + (end[-1] - '0');
    const bool isNegative = end[-3] == '-';
    end -= length;
    return isNegative ? -size : size;
}

/// Takes apart the numbers that files are full of: up to 3 digits, a point and up to 16 digits
/// more, an exponent of two digits. False for any other text. Where the text ends tells how many
/// digits there are, so that they are read by the word; numbers of one vector mostly have the same
/// form, which makes the branches free. Requires: text < end, and 21 bytes from `text` on that may
/// be read.
bool takeUsual(const char* text, const char* end, Parts& parts) {
    parts.isNegative = *text == '-';
    text += parts.isNegative ? 1 : 0;
    const int exponent = cutShortExponent(text, end);
    for (int i = 0; i < 3 && isDigit(*text); ++i, ++text) {
        parts.w = parts.w * 10 + static_cast<std::uint64_t>(*text - '0');
    }
    const std::ptrdiff_t digits = end - text - 1;
    if (*text != '.' || digits < 1 || digits > 16) {
        return false;
    }
    ++text;
    const auto firstCount = static_cast<unsigned>(digits < 8 ? digits : 8);
    const std::uint64_t first = load(text);
    if (!areDigits(first, firstCount)) {
        return false;
    }
    parts.w = parts.w * smallPowersOf10[firstCount] + leadingNumber(first, firstCount);
    if (digits > 8) {
        const auto secondCount = static_cast<unsigned>(digits) - 8;
        const std::uint64_t second = load(text + 8);
        if (!areDigits(second, secondCount)) {
            return false;
        }
        parts.w = parts.w * smallPowersOf10[secondCount] + leadingNumber(second, secondCount);
    }
    parts.exponent = exponent - static_cast<int>(digits);
    return true;
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

/// Takes any number of this reader apart, digit by digit.
bool takeAny(const char* text, const char* end, Parts& parts) {
    parts = {};
    parts.isNegative = text != end && *text == '-';
    text += parts.isNegative || (text != end && *text == '+') ? 1 : 0;
    const char* const start = text;
    text = readDigits(text, end, parts.w);
    auto digits = text - start;
    if (text != end && *text == '.') {
        const char* const fraction = ++text;
        text = readDigits(text, end, parts.w);
        digits += text - fraction;
        parts.exponent = -static_cast<int>(text - fraction);
    }
    if (text != end && (*text | 0x20) == 'e') {
        int written = 0;
        text = readExponent(text + 1, end, written);
        parts.exponent += written;
    }
    return text == end && digits != 0 && digits <= maxDigits;
}

}  // namespace

bool read(const char* text, const char* end, const char* readable, double& value) {
    constexpr std::ptrdiff_t usualBytes = 21;  // a sign, 3 digits, the point and two words
    Parts parts;
    const bool isUsual = isLittleEndian && text != end && readable - text >= usualBytes &&
                         takeUsual(text, end, parts);
    if (!isUsual && !takeAny(text, end, parts)) {
        return false;
    }
    double magnitude = 0;
    if (!toDouble(parts.w, parts.exponent, magnitude)) {
        return false;
    }
    value = std::copysign(magnitude, parts.isNegative ? -1.0 : 1.0);
    return true;
}

}  // namespace decimal
