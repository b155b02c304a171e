#pragma once

#include <string>
#include <string_view>

#include "markup/Result.h"

/// A result log takes records only while it is shorter than this, in bytes; the record that
/// crosses the limit is still written whole.
inline constexpr std::size_t resultLogLimit = 1000;

/// The record of a failed allocation, whole, since there may be no memory to make it.
inline constexpr std::string_view outOfMemoryResult =
    "<file_error msg=\"Cannot allocate memory\" n=\"12\"/>";

/// Appends to `log` the record `<name .../>` of a result, or amends the first record of that name.
/// Does nothing when the log is full or when the record to be amended is missing.
void x_AddResult(std::string& log, const Result& result);
inline void x_AddResult(std::string& log, TextArg name, TextArg value = nullptr, int resultCode = 0,
                        int number = -1, int number2 = -1) {
    x_AddResult(log, Result{name.view(), value, resultCode, number, number2});
}

namespace markup {

/// Renders a whole log as one line for people; of the parse errors only the first is shown.
std::string renderResults(const std::string& log);

}  // namespace markup
