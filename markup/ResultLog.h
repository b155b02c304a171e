#pragma once

#include <string>
#include <string_view>

#include "markup/text/TextArg.h"

/// Says which attributes a result record carries; bits are combined. The number goes into
/// "offset" and the value text into "tagname" when no bit chooses another attribute.
enum ResultCode : int {
    RESULT_COUNT = 1,     ///< the number is a "count"
    RESULT_TYPE = 2,      ///< the value text is a "type"
    RESULT_NUMBER = 4,    ///< the number is "n"
    RESULT_ENCODING = 8,  ///< the value text is an "encoding"
    RESULT_LENGTH = 16,   ///< the number is a "length"
    RESULT_MODIFY = 32,   ///< amends the first record of this name instead of adding one
    RESULT_MSG = 64,      ///< the value text is a "msg"
};

/// A result log takes records only while it is shorter than this, in bytes; the record that
/// crosses the limit is still written whole.
inline constexpr std::size_t resultLogLimit = 1000;

/// The record of a failed allocation, whole, since there may be no memory to make it.
inline constexpr std::string_view outOfMemoryResult =
    "<file_error msg=\"Cannot allocate memory\" n=\"12\"/>";

/// Appends to `log` the record `<name .../>`, or amends the first record of that name, with the
/// attributes that `resultCode` chooses. A null `value` gives no text attribute. A `number` of -1
/// gives no "offset", but "n", "count" and "length" are written even then; a `number2` of -1 gives
/// no "offset2". Does nothing when the log is full or when the record to be amended is missing.
void x_AddResult(std::string& log, TextArg name, TextArg value = nullptr, int resultCode = 0,
                 int number = -1, int number2 = -1);

namespace markup {

/// Renders a whole log as one line for people; of the parse errors only the first is shown.
std::string renderResults(const std::string& log);

}  // namespace markup
