#pragma once

#include <iostream>
#include <stdexcept>
#include <string>
#include <string_view>

#include "tests/Escaping.h"

/// Throws, and tells why, unless the rule holds: to a test that is a failure, to a fuzzer a
/// finding.
inline void require(bool holds, std::string_view rule, std::string_view detail = {}) {
    if (!holds) {
        const std::string broken = script::escape(std::string(rule).append(" ").append(detail));
        std::cerr << "broken: " << broken << std::endl;
        throw std::logic_error(broken);
    }
}

inline void requireSame(std::string_view a, std::string_view b, std::string_view rule) {
    require(a == b, rule, a == b ? "" : std::string(a).append(" | ").append(b));
}
