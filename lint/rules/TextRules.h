#pragma once

#include "lint/Rule.h"

namespace lint {

/// Rules EQ2xx: the text of a file and its mark-up.
inline constexpr Rule textRules[] = {
    {
        "EQ201",
        Severity::warning,
        "start tag without an end tag",
        "takes the element as empty; what it seemed to hold follows it on the same level",
        R"(An end tag of an outer element, or the end of the file, came first. The element keeps its
start tag only: its text is not read, and its children become its siblings, where the converter may
look for them in vain. A file that was cut short has one such finding for each element that was
open. Add the end tag, or get the whole file.)",
        R"(<BAND_ID>4
<EPSILON>0.5</EPSILON>)",
    },

    {
        "EQ202",
        Severity::warning,
        "end tag without a start tag",
        "passes over it",
        R"(No element that is open has this name. The tag is ignored, and the text before and behind
it counts as one. Often the name is misspelt or differs in case, which makes the element that was
meant one without an end tag (EQ201). Correct the name, or remove the tag.)",
        R"(<BAND_ID>4</BAND>)",
    },

    {
        "EQ203",
        Severity::warning,
        "\"<\" that begins no tag, comment, section or declaration",
        "passes over everything up to the next \">\", or to before the next \"<\"",
        R"(What follows the "<" is none of what may follow it. The piece is not read, and neither is
what the file wanted to say with it: in a vector that may be several numbers. A "<" in a text is
written &lt; in XML.)",
        R"(<COMMENT>gain < 1</COMMENT>)",
    },

    {
        "EQ204",
        Severity::warning,
        "tag, comment, section or declaration without its end",
        "ignores the rest of the file",
        R"(The ">", "-->", "]]>" or "?>" that must close it does not come before the end of the
file, often because a quote in a tag is not closed. All elements that are open there are without an
end tag then (EQ201), and nothing behind the place is read. Close it, or get the whole file.)",
        R"(<!-- delivered on Tuesday
<DATA>)",
    },

    {
        "EQ205",
        Severity::warning,
        "more than one root element",
        "reads the first one",
        R"(A file has one outermost element. Of several the first is read as the file, whatever it
is, and the others are ignored. Two files may have been written into one, or an end tag too many has
closed the root element early.)",
        R"(<TEST_EQ_TABLE>...</TEST_EQ_TABLE>
<TEST_EQ_TABLE>...</TEST_EQ_TABLE>)",
    },

    {
        "EQ206",
        Severity::warning,
        "no root element",
        "reads the file as one without any fields",
        R"(The file has text or comments, perhaps, but no element. EQ101 or EQ102 tells what becomes
of the run. Check whether this is a parameter file at all.)",
        R"(<?xml version="1.0" encoding="UTF-8"?>)",
    },

    {
        "EQ207",
        Severity::note,
        "byte-order mark, another encoding than UTF-8, or NUL characters",
        "converts the text to UTF-8 and leaves NUL characters out",
        R"(The file begins with a byte-order mark, or its XML declaration names another encoding,
and its text was converted. Labels are written to the record in UTF-8. Nothing needs to be done;
files in UTF-8 without a mark are read without this step. NUL characters come from damaged files, and
from UTF-16 without a byte-order mark; where a text had some, "1<NUL>2" reads as 12, and if other
programs refuse the file for that, EQ209 says so.)",
        R"(<?xml version="1.0" encoding="windows-1252"?>)",
    },

    {
        "EQ208",
        Severity::warning,
        "characters lost in the conversion",
        "reads \"?\" for each lost one",
        R"(Bytes that mean nothing in the encoding of the file become "?", which ends the number
that they stand in. Write the file again in UTF-8, and compare the
places with the original.)",
        R"(<COEFFICIENTS_LIST tdi_config="S?1">   a byte 0xB0 in a UTF-8 file)",
    },

    {
        "EQ209",
        Severity::warning,
        "encoding unknown, or contradicted by the mark or the bytes",
        "follows the mark; reads UTF-8 without a usable name; keeps the bytes when the name is "
        "unknown",
        R"(The XML declaration names an encoding that the system has no conversion for, or one that
the file is not in. A byte-order mark counts more than the declaration; a file that claims to be
UTF-16 or UTF-32 but has no mark is taken for UTF-8; the bytes of an unknown encoding are taken as
they are. Plain ASCII reads the same in all of these, other characters in labels may be wrong. Name
the encoding that the file has.)",
        R"(<?xml version="1.0" encoding="UTF-88"?>)",
    },

    {
        "EQ210",
        Severity::warning,
        "file of 2 GB or more",
        "refuses it as unreadable",
        R"(A file is held in memory as one text of at most 2,147,483,647 bytes, before and after its
conversion to UTF-8. A larger one counts as a file that can't be read: see EQ101 and EQ102. Split it
by band; white space between the elements can go.)",
        R"(eqconvert all-bands.xml > set.record)",
    },

    {
        "EQ211",
        Severity::note,
        "not well-formed XML, as a strict parser puts it (with --strict-xml only)",
        "reads on, as other rules tell",
        R"(Asked to be strict, eqlint also gives every file to a parser that follows the XML
standard to the letter, and tells in its words where that one gives up. The converter is more
tolerant; what it makes of the place is told by another rule. Mend the file so that all programs
read the same.)",
        R"(eqlint --strict-xml EQ_B4.xml)",
    },

    {
        "EQ212",
        Severity::warning,
        "not well-formed XML in a way that the converter takes no notice of",
        "reads on",
        R"(An entity that is not declared, an attribute twice in one tag, a "<" in an attribute, a
character that XML forbids, a prefix without a namespace, white space before the XML declaration and
the like: the converter reads on (an unknown entity stays as written, of two attributes the first
counts), but programs that follow the XML standard refuse the file as a whole. Mend the place.)",
        R"(<COEFFICIENTS detector_id="1" detector_id="2">)",
    },

    {
        "EQ213",
        Severity::note,
        "elements in a namespace",
        "compares the names as written",
        R"(The file declares a default namespace, or its root element has a prefix. The converter
knows no namespaces: it looks for the names as they are written, so all is found, and the prefix of a
root element becomes a part of the file type. Programs that follow namespaces look for the names
in that namespace, or find nothing. Remove the xmlns attribute unless somebody needs it.)",
        R"(<TEST_EQ_TABLE xmlns="http://example.org/eq">)",
    },
};

}  // namespace lint
