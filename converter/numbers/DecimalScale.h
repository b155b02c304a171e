#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>

/// The last step of reading a decimal number: from w * 10^q to the nearest double.
namespace decimal {

/// The powers of ten that a double holds exactly.
inline constexpr std::array<double, 23> exactPowersOf10{
    1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,  1e8,  1e9,  1e10, 1e11,
    1e12, 1e13, 1e14, 1e15, 1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};

/// The way of large numbers, which is that of D. Lemire, "Number Parsing at a Gigabyte per Second"
/// (2021): multiply w, shifted up to 64 bits, by the leading 128 bits of 5^q, and round the leading
/// bits of the product. Where the truncated product could round otherwise than the exact one, the
/// number is refused.
namespace product {

__extension__ typedef unsigned __int128 Wide;  // of both compilers, not of the standard

/// Decimal exponents of the table. 5^55 is the largest power of five below 2^128.
inline constexpr int maxExponent = 55;
inline constexpr int minExponent = -55;

inline constexpr int mantissaBits = 52;
inline constexpr int exponentBias = 1023;
inline constexpr int infiniteExponent = 2047;

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

inline constexpr auto powersOf5 = [] {
    std::array<Power, maxExponent - minExponent + 1> table{};
    for (int q = minExponent; q <= maxExponent; ++q) {
        table[static_cast<std::size_t>(q - minExponent)] =
            q < 0 ? negativePower(-q) : positivePower(q);
    }
    return table;
}();

/// floor(log2(10^q)) + 63, for the exponents of the table.
constexpr int binaryExponent(int q) {
    return ((152170 + 65536) * q >> 16) + 63;
}

/// The leading bits of `w` times a power: as many as can tell how to round. Requires: the top bit
/// of `w` is set.
constexpr Wide leadingProduct(std::uint64_t w, const Power& power) {
    Wide product = static_cast<Wide>(w) * power.high;
    // Of the upper half, 9 bits lie below those that are kept and the one that rounds. Only when
    // all are set can a carry from the lower half of the power reach the bits that count.
    constexpr std::uint64_t belowRounding = 0x1FF;
    if ((static_cast<std::uint64_t>(product >> 64) & belowRounding) == belowRounding) {
        product += static_cast<Wide>(w) * power.low >> 64;
    }
    return product;
}

/// w * 10^q by the product of w and a power of five; as `scale`. Requires: w != 0.
inline bool scaleByProduct(std::uint64_t w, int q, double& value) {
    if (q < minExponent || q > maxExponent) {
        return false;
    }
    const int shift = std::countl_zero(w);
    const Wide product =
        leadingProduct(w << shift, powersOf5[static_cast<std::size_t>(q - minExponent)]);
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

}  // namespace product

/// Sets `value` to w * 10^q, rounded to the nearest double, half way to the even one. False, with
/// `value` as it was, when the result is subnormal, when q is far from 0 and when the product of
/// 128 bits does not tell where to round.
inline bool scale(std::uint64_t w, int q, double& value) {
    constexpr int most = static_cast<int>(exactPowersOf10.size()) - 1;
    const bool isExact = w >> 53 == 0 && q >= -most && q <= most;
    if (isExact && q <= 0) {
        // Both numbers are exact as doubles, so that one operation rounds once.
        value = static_cast<double>(static_cast<std::int64_t>(w)) /
                exactPowersOf10[static_cast<std::size_t>(-q)];
        return true;
    }
    if (isExact || w == 0) {
        value = static_cast<double>(w) * exactPowersOf10[w == 0 ? 0 : static_cast<std::size_t>(q)];
        return true;
    }
    return product::scaleByProduct(w, q, value);
}

}  // namespace decimal
