#pragma once

#include "lint/Rule.h"

namespace lint {

/// Rules EQ6xx: detectors, and which vectors they have.
inline constexpr Rule detectorRules[] = {
    {
        "EQ601",
        Severity::error,
        "vector of a detector outside 1 to 12",
        "ends with status 255 in the middle of the configuration",
        R"(A configuration has room for the detectors 1 to 12. At the first vector of any other one
the run ends, with a message; the record is not complete, its last piece being the label and epsilon
of this configuration. A detector_id that is missing or no number is 0, and so outside as well.
Correct detector_id.)",
        R"(<COEFFICIENTS detector_id="13">)",
    },

    {
        "EQ602",
        Severity::warning,
        "detector_id missing, no plain number, or outside 1 to 12 without vectors",
        "takes the number at the start of its text, 0 when there is none, with its low 32 bits",
        R"(Text behind the number is ignored, so "2x" and "2.5" are detector 2, and 4294967297 is
detector 1. If the number is right by chance, all is well in the record, but it may be that of
another detector. Without vectors a number outside 1 to 12 does no harm but for its NB_OF_PIXELS,
which counts for P; with vectors it ends the run (EQ601). It is only a note for white space around
the number and for a "+". Write the plain number.)",
        R"(<COEFFICIENTS detector_id="2x">)",
    },

    {
        "EQ603",
        Severity::warning,
        "detector twice in a configuration, or a vector twice in a detector",
        "appends the values to those that are there",
        R"(A second vector of the same detector and kind goes on where the first one ended, and only
then the number of values is compared with NB_OF_PIXELS. So the run nearly always ends there
(EQ703); it goes on when the second NB_OF_PIXELS is the sum, or when a vector is empty. Correct
detector_id, or remove one of the two.)",
        R"(<COEFFICIENTS detector_id="1">...</COEFFICIENTS>
<COEFFICIENTS detector_id="1">...</COEFFICIENTS>)",
    },

    {
        "EQ604",
        Severity::error,
        "NB_OF_PIXELS above 32767",
        "ends with status 255 in the middle of the configuration",
        R"(The record has 2 bytes, signed, for the number of pixels. Rather than cut the number off,
the converter ends the run at this detector, with a message; the record is not complete. Correct the
number, or leave out the pixels that are too many.)",
        R"(<NB_OF_PIXELS>40000</NB_OF_PIXELS>)",
    },

    {
        "EQ605",
        Severity::warning,
        "NB_OF_PIXELS negative or no plain number",
        "takes the number at the start of its text, 0 when there is none, with its low 16 bits",
        R"(Text behind the number is ignored: "3 px" is 3, and "2e3" is 2. A negative number is kept
as one, or becomes another when it is below -32768, and as no vector has fewer than 0 values it ends
the run at the first vector (EQ703) unless it becomes the right number by chance. It is only a note
for white space around the number, for "+3" and for "-0". Write the plain number.)",
        R"(<NB_OF_PIXELS>3 px</NB_OF_PIXELS>)",
    },

    {
        "EQ606",
        Severity::warning,
        "no ON_BOARD_EQUALIZATION behind NB_OF_PIXELS",
        "writes NaN for all four vectors of the detector",
        R"(The vectors of a detector are looked for in its ON_BOARD_EQUALIZATION, and that behind
its NB_OF_PIXELS. Without it the detector is passed over without a message; its NB_OF_PIXELS still
counts for P. Put the element behind NB_OF_PIXELS, under this name, or remove the detector when it
has no coefficients.)",
        R"(<COEFFICIENTS detector_id="3">
  <NB_OF_PIXELS>2592</NB_OF_PIXELS>
</COEFFICIENTS>)",
    },

    {
        "EQ607",
        Severity::warning,
        "neither NB_OF_PIXELS nor ON_BOARD_EQUALIZATION in a detector",
        "reads neither the rest of this configuration nor the later ones",
        R"(The converter goes into the elements that it looks for and out again, without asking
whether it has found them. Where a detector has neither, it ends up one level too high: the
detectors that follow are lost, and so are all later configurations of the file. They are counted
but not written, and the run still ends with status 0. Give the detector both elements, or remove
it.)",
        R"(<COEFFICIENTS detector_id="1"/>)",
    },

    {
        "EQ608",
        Severity::warning,
        "vector before APPLICABILITY_DATE",
        "does not read it",
        R"(Vectors are looked for behind the APPLICABILITY_DATE of ON_BOARD_EQUALIZATION. One in
front of it is passed over without a message, and NaN is written unless another of its kind follows.
Move APPLICABILITY_DATE to the start of the element.)",
        R"(<COEFF_A1>1 2 3</COEFF_A1>
<APPLICABILITY_DATE>2015-07-01T00:00:00</APPLICABILITY_DATE>)",
    },

    {
        "EQ609",
        Severity::warning,
        "another element among the vectors",
        "ends the detector there; vectors behind it are not read",
        R"(Behind APPLICABILITY_DATE the first element that is not COEFF_A1, COEFF_A2, COEFF_ZS or
COEFF_D ends the detector, also one whose name is only misspelt or in lower case. What lies behind
it is ignored without a message, and NaN is written for it. It is only a note when all four vectors
have come before. Move the element behind the last vector or, better, out of
ON_BOARD_EQUALIZATION.)",
        R"(<COEFF_A1>1 2 3</COEFF_A1>
<COMMENT>provisional</COMMENT>
<COEFF_A2>0 0 0</COEFF_A2>)",
    },

    {
        "EQ610",
        Severity::warning,
        "kind of vector missing in a detector",
        "writes NaN for it",
        R"(A detector has one each of COEFF_A1, COEFF_A2, COEFF_ZS and COEFF_D, in any order. For a
kind that is not there, or is not read (EQ608, EQ609), the record has NaN for all pixels, and there
is no message. Add the vector; when there are no values, nan for each pixel says so.)",
        R"(<COEFF_A1>1 2 3</COEFF_A1>
<COEFF_A2>0 0 0</COEFF_A2>
<COEFF_D>1.5 1.5 1.5</COEFF_D>)",
    },

    {
        "EQ611",
        Severity::note,
        "fewer pixels than another detector of the configuration has",
        "fills its vectors up with NaN",
        R"(All vectors of a configuration have the same length in the record, P, which is the
largest NB_OF_PIXELS of its detectors. A shorter one ends in NaN. Nothing is lost, and it may be
meant so; when all detectors should have as many pixels, check NB_OF_PIXELS.)",
        R"(<NB_OF_PIXELS>2590</NB_OF_PIXELS>   2592 in the other detectors)",
    },

    {
        "EQ612",
        Severity::note,
        "no APPLICABILITY_DATE in front of the vectors",
        "reads the vectors all the same",
        R"(The APPLICABILITY_DATE in ON_BOARD_EQUALIZATION only marks the place behind which the
vectors are looked for; its text is never read. Without it they are looked for from the start of the
element on, so that nothing is lost. Programs that check files by their description may refuse the
file; add the date for them.)",
        R"(<ON_BOARD_EQUALIZATION>
  <COEFF_A1>1 2 3</COEFF_A1>)",
    },
};

}  // namespace lint
