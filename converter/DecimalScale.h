#pragma once

#include <array>
#include <cstdint>

/// The last step of reading a decimal number: from w * 10^q to the nearest double.
namespace decimal {

/// The powers of ten that a double holds exactly.
inline constexpr std::array<double, 23> exactPowersOf10{
    1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,  1e8,  1e9,  1e10, 1e11,
    1e12, 1e13, 1e14, 1e15, 1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};

/// Sets `value` to w * 10^q, rounded to the nearest double, half way to the even one. False, with
/// `value` as it was, when q is outside -55 to 55, the result is subnormal, or the product of 128
/// bits does not tell where to round.
bool scaleByProduct(std::uint64_t w, int q, double& value);

/// Whether both w and 10^|q| are exact as doubles, so that one operation rounds once.
inline bool isExact(std::uint64_t w, int q) {
    constexpr int most = static_cast<int>(exactPowersOf10.size()) - 1;
    return w >> 53 == 0 && q >= -most && q <= most;
}

/// w * 10^q, rounded to the nearest double. Requires: isExact(w, q).
inline double scaleExact(std::uint64_t w, int q) {
    const auto exact = static_cast<double>(static_cast<std::int64_t>(w));
    return q < 0 ? exact / exactPowersOf10[static_cast<std::size_t>(-q)]
                 : exact * exactPowersOf10[static_cast<std::size_t>(q)];
}

}  // namespace decimal
