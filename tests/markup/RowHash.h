#pragma once

#include <cstdint>
#include <string>

/// FNV-1a of "name=number". The sum over all rows of a table is a fingerprint of its content that
/// does not depend on the order of the rows; the expected sums were computed outside of the project
/// from the published lists.
inline std::uint64_t rowHash(std::string name, int number) {
    std::uint64_t hash = 14695981039346656037U;
    for (const char c : name.append("=").append(std::to_string(number))) {
        hash = (hash ^ static_cast<unsigned char>(c)) * 1099511628211U;
    }
    return hash;
}
