#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "markup/Result.h"

// A result log is a text of empty elements, one per event, with nothing between or around them:
//
//     <bom/><read encoding="UTF-8" length="5120"/><lone_end_tag tagname="item" offset="812"/>

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

/// Adds the result of a failed allocation whatever the limit; in the place of the others where
/// there is no memory for more than `log` has had before.
void addOutOfMemory(std::string& log) noexcept;

/// Where the records of a log begin, in order: the elements that lie in no other. Any text may be
/// given: tags are paired as in a document, and what lies in an element that is never ended counts
/// as its sibling.
std::vector<int> findResults(std::string_view log);
/// The name of the record that begins at `start`.
std::string_view resultName(std::string_view log, int start);
/// The unescaped value of an attribute of the record that begins at `start`; "" when it is missing.
std::string resultAttribute(std::string_view log, int start, TextArg name);

}  // namespace markup
