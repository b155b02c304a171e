#pragma once

#include <cstdint>

namespace vek {

/// The sum of two counts, limited to their range.
inline std::int64_t saturatingAdd(std::int64_t a, std::int64_t b) {
    std::int64_t sum;
    if (__builtin_add_overflow(a, b, &sum)) {
        return b < 0 ? INT64_MIN : INT64_MAX;
    }
    return sum;
}

}  // namespace vek
