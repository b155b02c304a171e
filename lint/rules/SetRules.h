#pragma once

#include "lint/Rule.h"

namespace lint {

/// Rules EQ1xx: the files as a set.
inline constexpr Rule setRules[] = {
    {
        "EQ101",
        Severity::error,
        "first file unreadable, or the name of its root element shorter than 4 characters",
        "aborts with status 134; nothing is written",
        R"(The record begins with the file type, which is the name of the first file's root element
from its fifth character on. When that file is missing, empty or a folder, has no element, or has a
root element with a name of fewer than 4 bytes, there is no file type and the converter aborts
before it writes anything. Check the first path of the command line and the name of the root
element. The other files are checked as a set of their own, so that their findings are not held
back.)",
        R"(eqconvert missing.xml EQ_B4.xml > set.record)",
    },

    {
        "EQ102",
        Severity::error,
        "later file unreadable",
        "reads it as NUC table 0 and ends with status 255, or writes an empty block",
        R"(A file that is missing, empty or a folder, or has no element, reads as one without any
fields: its NUC_TABLE_ID is 0. That is a mismatch, and the run ends, unless the identifier known so
far is 0 or negative. In that case (a warning) the run goes on, and the record holds a block of band
0 without configurations for the file. Check the path, and whether the file was copied
completely.)",
        R"(eqconvert EQ_B4.xml missing.xml > set.record)",
    },

    {
        "EQ103",
        Severity::warning,
        "root element with another name than the first file's",
        "says so on standard error and converts the file all the same",
        R"(The name of the root element is the type of a file, and the record holds only that of the
first file. A file of another type is converted like the others, so it is probably in the set by
mistake. Take it out of the set, or give its root element the name that the others have.)",
        R"(<TEST_XX_TABLE>   after a first file with <TEST_EQ_TABLE>)",
    },

    {
        "EQ104",
        Severity::warning,
        "same file twice, or same band twice",
        "writes a block for each",
        R"(The record has a block for each argument, in their order, and nothing keeps a band from
coming twice; which of the two a program takes that looks for a band is up to it. Bands are kept
modulo 256, so 4 and 260 are the same band. Name each file once, for instance by a pattern that fits
no copies, and check BAND_ID in both files.)",
        R"(eqconvert EQ_B4.xml copy/EQ_B4.xml > set.record)",
    },

    {
        "EQ105",
        Severity::note,
        "base name twice, base name of 100 bytes or more, or 100 files or more",
        "writes the names and the number as they are",
        R"(The record names each file by the last part of its path only, so two files of one name
can't be told apart by it. Lengths and the number of files are written with two digits; with three,
a reader can only tell from what follows where the number ends. Nothing is lost. Short names that
differ, and fewer than 100 files, keep the record free of doubt.)",
        R"(eqconvert 2014/EQ_B4.xml 2015/EQ_B4.xml > set.record)",
    },
};

}  // namespace lint
