#pragma once

#include "lint/Rule.h"

namespace lint {

/// Rules EQ7xx: the values of vectors.
inline constexpr Rule vectorRules[] = {
    {
        "EQ701",
        Severity::warning,
        "further space in a vector",
        "takes the nothing between two spaces for a value, 0",
        R"(The text of a vector is cut at each single space, and each piece is a value. Two spaces
in a row, or one at the start, make an empty piece, which reads as 0: a 1, two spaces and a 3 are 1,
0 and 3. The values behind it move by one pixel, and the number of values can be right by chance, so
that there is no message. Leave one space between two numbers.)",
        R"(<COEFF_A1>1  3</COEFF_A1>)",
    },

    {
        "EQ702",
        Severity::warning,
        "piece of a vector that is no plain number",
        "takes the number at the start of the piece, 0 when there is none",
        R"(A piece between two spaces is one value, and what stands behind its number is ignored:
"5,5" is 5, and "x" is 0. Tabs and line ends do not separate values, so of two numbers on two lines
only the first is read. Write plain numbers, with a point, and one space between two of them, all on
one line.)",
        R"(<COEFF_ZS>5,5 5.5 5.5</COEFF_ZS>)",
    },

    {
        "EQ703",
        Severity::error,
        "number of values differs from NB_OF_PIXELS",
        "ends with status 255 in the middle of the configuration",
        R"(Each vector must have as many values as its detector has pixels. At the first one that
has not, the run ends with the message "Found ... pixels instead of ..."; the record is not
complete. Spaces that are too many add values (EQ701), tabs and line ends between numbers take some
away (EQ702); the finding says when such places are a likely cause. Otherwise correct NB_OF_PIXELS
or the values.)",
        R"(<NB_OF_PIXELS>3</NB_OF_PIXELS>
...
<COEFF_A1>1 2</COEFF_A1>)",
    },

    {
        "EQ704",
        Severity::note,
        "hexadecimal number, infinity, NaN, or number out of the range of a double",
        "takes the value as the C library reads it",
        R"(Besides plain decimals the converter reads 0x10, inf, infinity, nan and nan(0x12). A
number too large for a double becomes infinity, one too small 0 or a number with fewer digits. NaN
also stands for values that are not there, so a reader can't tell the two apart. Check whether the
value is meant.)",
        R"(<COEFF_D>1.5 nan 1e400</COEFF_D>)",
    },

    {
        "EQ705",
        Severity::note,
        "one space behind the last value of a vector",
        "ignores it",
        R"(A single space at the end does not begin another value, so nothing changes; a second one
would make a value 0 (EQ701). Programs that cut the text in the usual way may count one value more.
Remove the space.)",
        R"(<COEFF_A1>1 2 3 </COEFF_A1>)",
    },

    {
        "EQ706",
        Severity::note,
        "references or CDATA sections in a text that is read",
        "reads the characters that are meant",
        R"(The text of the field is written in a roundabout way, as &#50; for 2 or in a CDATA
section. The converter reads it as XML has it, so nothing is lost. Programs that search files as
plain text will not find the value. Write the characters themselves.)",
        R"(<BAND_ID><![CDATA[4]]></BAND_ID>)",
    },

    {
        "EQ707",
        Severity::warning,
        "part of a text that is not read",
        "reads the text without it",
        R"(In an element with child elements no text is read at all. White space that fills the
whole gap between two comments, processing instructions or CDATA sections is dropped, so that the
numbers on either side of the gap run together: "1", a comment, a space, a comment and "2" is 12.
Take the comments and elements out of the text.)",
        R"(<COEFF_A1>1<!-- odd --> <!-- even -->2</COEFF_A1>)",
    },
};

}  // namespace lint
