#pragma once

#include <bit>
#include <concepts>
#include <cstddef>

namespace record {

enum class ByteOrder { little, big };

inline constexpr ByteOrder machineOrder =
    std::endian::native == std::endian::little ? ByteOrder::little : ByteOrder::big;

/// The bytes of an integer from the last to the first.
template <std::unsigned_integral Integer>
constexpr Integer swapped(Integer value) {
    Integer result = 0;
    for (std::size_t i = 0; i < sizeof value; ++i, value = static_cast<Integer>(value >> 8)) {
        result = static_cast<Integer>(result << 8 | (value & 0xFF));
    }
    return result;
}

}  // namespace record
