#pragma once

#include "lint/Rule.h"

namespace lint {

/// Rules EQ8xx: files compared with one another, and with what is expected of them.
inline constexpr Rule comparisonRules[] = {
    {
        "EQ801",
        Severity::note,
        "label that only some files of the set have",
        "writes each file's own configurations",
        R"(The bands of a set usually have the same configurations. This file lacks one that others
have, or has one that they lack; the record then has blocks for some of the bands only. It may be
meant so. Otherwise check tdi_config for a misspelt label, and whether the file is whole.)",
        R"(<COEFFICIENTS_LIST tdi_config="AL">   "ALL" in the other files)",
    },

    {
        "EQ802",
        Severity::note,
        "detector that only some files of the set have",
        "writes NaN for detectors that a configuration lacks",
        R"(The configurations of a set usually have the same detectors. Here one is missing that
others have, or is there that they lack. The record has room for all 12 in any case, so a missing
one looks like one without values. It may be meant so. Otherwise check detector_id.)",
        R"(<COEFFICIENTS detector_id="11">   the other files have 1 to 10)",
    },

    {
        "EQ803",
        Severity::note,
        "pixel counts differ",
        "writes each configuration with the largest count that its detectors have",
        R"(The largest NB_OF_PIXELS of a configuration is another than that of the first
configuration of the same file. Bands may well have different resolutions, so that files are not
compared. Within one band a difference is rather a mistake: check NB_OF_PIXELS and whether values
were lost from the vectors.)",
        R"(<NB_OF_PIXELS>2591</NB_OF_PIXELS>   2592 in the first configuration)",
    },

    {
        "EQ811",
        Severity::error,
        "another NUC table than --expect asks for",
        "knows nothing of it",
        R"(The file given with --expect says which NUC table the set has to be of, as
"nuc_table_id". This file is of another one, as the converter reads it. The set was put together
wrongly, or the expectation is out of date.)",
        R"({"nuc_table_id": 7})",
    },

    {
        "EQ812",
        Severity::error,
        "other bands than --expect asks for",
        "knows nothing of it",
        R"(The file given with --expect lists the bands of the set, as "bands", in any order. A band
is missing, comes more often than it is listed, or is not listed. Check which files were given, and
their BAND_ID.)",
        R"({"bands": [1, 2, 3, 4]})",
    },

    {
        "EQ813",
        Severity::error,
        "other labels than --expect asks for",
        "knows nothing of it",
        R"(The file given with --expect lists the labels of each file's configurations, as "labels",
in any order. This file has others, as the converter reads it; configurations that are lost on the
way (EQ409, EQ607) are missing here too. Check tdi_config, and other findings on the file first.)",
        R"({"labels": ["S1", "S2", "ALL"]})",
    },

    {
        "EQ814",
        Severity::error,
        "other detectors or pixel counts than --expect asks for",
        "knows nothing of it",
        R"(The file given with --expect lists the detectors of each configuration, as "detectors",
and for bands the number of pixels of each detector, as "pixels". This configuration has others, as
the converter reads it. Check detector_id and NB_OF_PIXELS, and other findings on the file first.)",
        R"({"detectors": [1, 2, 3], "pixels": {"4": 2592, "11": 1296}})",
    },
};

}  // namespace lint
