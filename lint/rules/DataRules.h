#pragma once

#include "lint/Rule.h"

namespace lint {

/// Rules EQ4xx: DATA and its fields.
inline constexpr Rule dataRules[] = {
    {
        "EQ401",
        Severity::warning,
        "DATA not found",
        "reads the file as one without fields and configurations",
        R"(DATA is not there or, in the first file, stands before SPECIFIC_HEADER. The converter
then looks for its fields in the element where it is, the SPECIFIC_HEADER of the first file or the
root element of a later one. As a rule it finds none there: band 0, epsilon 0, NUC table 0, no
configurations. Put DATA under the root element, behind the headers.)",
        R"(<Data>...</Data>)",
    },

    {
        "EQ402",
        Severity::warning,
        "BAND_ID, EPSILON, NUC_TABLE_ID or NB_OF_PIXELS not found",
        "takes 0 for it",
        R"(Elements are looked for forward only, and by the exact name: one that stands before the
field that it should follow is not found, and neither is one that differs in case or has a prefix.
The value is then 0, without a message. The order in DATA is BAND_ID, EPSILON, NUC_TABLE_ID,
COEFFICIENTS_LIST, and in COEFFICIENTS it is NB_OF_PIXELS, ON_BOARD_EQUALIZATION. Without
NB_OF_PIXELS any value in a vector of the detector ends the run (EQ703).)",
        R"(<EPSILON>0.5</EPSILON>
<BAND_ID>4</BAND_ID>)",
    },

    {
        "EQ403",
        Severity::warning,
        "more or other text than a number in BAND_ID, EPSILON or NUC_TABLE_ID",
        "takes the number at the start of the text, 0 when there is none",
        R"(The number ends at the first character that does not belong to it, and the rest is
ignored: "4x" is 4, and so is "4.9" for an integer, "1e3" is 1 there, and "0,5" is 0. Text is hidden
by child elements, so the value is 0 then. It is only a note when nothing but white space stands
around, or for "+4" and "-0". Write the plain number, with a point.)",
        R"(<EPSILON>0,5</EPSILON>)",
    },

    {
        "EQ404",
        Severity::warning,
        "BAND_ID outside 0 to 255, or NUC_TABLE_ID outside 0 to 65535",
        "keeps it modulo 256, or modulo 65536",
        R"(The record has 1 byte for the band and 2 for the NUC table. What does not fit is cut off:
band 260 is written as 4, and -1 as 255. One that is too large for 64 bits becomes 255 or 65535.
Correct the number.)",
        R"(<BAND_ID>260</BAND_ID>)",
    },

    {
        "EQ405",
        Severity::warning,
        "NUC_TABLE_ID from 32768 to 65535",
        "takes the next file for the first again: its identifier is not compared, and is written "
        "too",
        R"(The identifier is written as a signed integer of 2 bytes, and a negative one also stands
for "none known yet". So behind such a file the next one's identifier is written as well, whatever
it is, and nothing is compared; readers have to know that. The same happens when an identifier gets
into this range by being cut off (EQ404). Use identifiers up to 32767.)",
        R"(<NUC_TABLE_ID>40000</NUC_TABLE_ID>)",
    },

    {
        "EQ406",
        Severity::error,
        "NUC_TABLE_ID differs from that of the files before",
        "ends with status 255; nothing of this file is written",
        R"(The files of a record belong to one NUC table. The identifiers are compared as they are
written, so modulo 65536, and one that is missing or no number counts as 0. The record that is left
ends behind the file before and is not complete. Take the file out of the set, or correct its
NUC_TABLE_ID.)",
        R"(<NUC_TABLE_ID>8</NUC_TABLE_ID>   7 in the first file)",
    },

    {
        "EQ407",
        Severity::note,
        "single element twice",
        "takes the first",
        R"(HEADER, DATA, BAND_ID, NB_OF_PIXELS, ON_BOARD_EQUALIZATION and the like are expected once
in the element that holds them. Of two the first that comes in the right order is read, and the
other is ignored with all that it holds. Remove the one that does not count, when it is wrong, or
the first when that one is.)",
        R"(<EPSILON>0.5</EPSILON>
<EPSILON>0.6</EPSILON>)",
    },

    {
        "EQ408",
        Severity::warning,
        "more than 255 configurations",
        "writes all of them, and their number modulo 256",
        R"(The record has 1 byte for the number of COEFFICIENTS_LIST elements of a file: 300 are
written as 44. All 300 blocks follow, so a reader that trusts the number takes the 45th for the next
file. Split the file, or leave out configurations.)",
        R"(<COEFFICIENTS_LIST tdi_config="S299">   the 300th)",
    },

    {
        "EQ409",
        Severity::warning,
        "configuration before NUC_TABLE_ID",
        "does not read it",
        R"(Configurations are looked for behind NUC_TABLE_ID (or behind the last field before it
that was found). A COEFFICIENTS_LIST in front of it is passed over, is not counted, and leaves no
trace in the record. Move BAND_ID, EPSILON and NUC_TABLE_ID to the start of DATA.)",
        R"(<COEFFICIENTS_LIST tdi_config="ALL">...</COEFFICIENTS_LIST>
<NUC_TABLE_ID>7</NUC_TABLE_ID>)",
    },
};

}  // namespace lint
