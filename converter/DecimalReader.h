#pragma once

/// Reads plain decimal numbers much faster than strtod, and to the same bits.
///
/// Plain is: an optional sign; digits with at most one "."; an optional exponent. Up to 19
/// significant digits and decimal exponents of moderate size are read here, everything else is left
/// to strtod: more digits, hexadecimal, infinities, NaN, leading white space, results that overflow
/// or are subnormal.
namespace decimal {

/// Reads the number that is the whole text from `text` to `end`, digit by digit. False when it is
/// not one for this reader; `value` is set only otherwise. Requires: text <= end.
bool read(const char* text, const char* end, double& value);

}  // namespace decimal
