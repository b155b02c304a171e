#pragma once

#include <string>
#include <string_view>

/// Compares `n` bytes of `a` and `b`; both must hold that many. With `ignoreCase`, two ASCII
/// letters that differ only in case are equal, but once a byte with the high bit set has been
/// passed (equal in both) later bytes are compared without folding: what follows may be part of a
/// multibyte character. Returns the difference of the first differing bytes, as signed 8-bit
/// values, or 0.
int x_StrNCmp(const char* a, const char* b, int n, bool ignoreCase);

/// The sum of the bytes of `text`, each a signed 8-bit value, as an unsigned 32-bit number modulo
/// `size`; 0 for an empty or null text and for a size below 1.
int x_Hash(const char* text, int size);

namespace markup {

/// Folds "A" to "Z"; what the locale takes for letters makes no difference.
constexpr char toLower(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

/// True when the two names are equal by the rule of `x_StrNCmp`.
bool namesEqual(std::string_view a, std::string_view b, bool ignoreCase);

/// Folds case as names are compared: up to the first byte with the high bit set. Two names are
/// equal by the rule of `x_StrNCmp` exactly when their folded forms are the same bytes.
std::string foldName(std::string_view name);

/// The sum that `x_Hash` takes over `name`, before the remainder; `foldCase` adds 32 to each "A" to
/// "Z". Names from a file may hold any byte, hence the signs matter.
constexpr unsigned byteSum(std::string_view name, bool foldCase) {
    unsigned sum = 0;
    for (const char c : name) {
        sum += static_cast<unsigned>(static_cast<signed char>(foldCase ? toLower(c) : c));
    }
    return sum;
}

}  // namespace markup
