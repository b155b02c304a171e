#pragma once

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

/// True when the two names are equal by the rule of `x_StrNCmp`.
bool namesEqual(std::string_view a, std::string_view b, bool ignoreCase);

/// The sum that `x_Hash` takes over `name`, before the remainder; `foldCase` adds 32 to each "A" to
/// "Z".
unsigned byteSum(std::string_view name, bool foldCase);

}  // namespace markup
