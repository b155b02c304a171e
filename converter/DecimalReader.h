#pragma once

/// Reads plain decimal numbers much faster than strtod, and to the same bits.
///
/// Plain is: an optional sign; digits with at most one "."; an optional exponent. Up to 19
/// significant digits and decimal exponents of moderate size are read here, everything else is left
/// to strtod: more digits, hexadecimal, infinities, NaN, leading white space, results that overflow
/// or are subnormal.
namespace decimal {

/// Reads the number that is the whole text from `text` to `end`, which no digit follows. False when
/// it is not one for this reader; `value` is set only otherwise. Up to `readable` memory may be
/// looked at. Requires: text <= end <= readable.
bool read(const char* text, const char* end, const char* readable, double& value);

}  // namespace decimal
