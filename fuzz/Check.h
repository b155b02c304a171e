#pragma once

#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

/// A text on one line, whatever bytes it holds.
inline std::string shown(std::string_view text) {
    std::string line;
    for (const char c : text) {
        char code[8];
        std::snprintf(code, sizeof code, c >= ' ' && c <= '~' ? "%c" : "\\x%02X",
                      static_cast<unsigned char>(c));
        line += code;
    }
    return line;
}

/// Ends the process, which is a finding, unless the rule holds.
inline void check(bool holds, std::string_view rule, std::string_view detail = {}) {
    if (!holds) {
        std::fprintf(stderr, "broken: %s %s\n", shown(rule).c_str(), shown(detail).c_str());
        std::abort();
    }
}

/// check(a == b) on texts, that shows both.
inline void checkSame(std::string_view a, std::string_view b, std::string_view rule) {
    check(a == b, rule,
          a == b ? std::string() : "\"" + std::string(a) + "\" \"" + std::string(b) + "\"");
}
