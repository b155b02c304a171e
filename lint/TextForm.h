#pragma once

#include <string>
#include <string_view>

namespace lint {

/// How a text writes a number.
enum class Form {
    plain,   ///< as everybody reads it
    loose,   ///< the same number for strtol and strtod: white space around it, or another notation
    ignored  ///< no number, or something that is ignored stands behind it
};

/// An integer: plain is digits alone, loose has a sign or white space.
Form integerForm(std::string_view text);

/// A number with decimals: plain is "-12.5e3" and the like, of which either side of the point may
/// be empty. Loose are hexadecimal ones, "inf", "nan", and white space.
Form numberForm(std::string_view text);

/// Whether a text is a plain number, as `numberForm` says.
bool isPlainNumber(std::string_view text);

/// Whether a plain number is 0 as it is written.
bool isWrittenAsZero(std::string_view number);

/// Whether a value is neither infinite nor NaN nor so small that it lost digits.
bool isUsual(double value);

/// A text without the white space around it.
std::string_view trimmed(std::string_view text);

/// A number as short as it can be written for it to be read as the same again.
std::string shortest(double value);

}  // namespace lint
