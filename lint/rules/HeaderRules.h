#pragma once

#include "lint/Rule.h"

namespace lint {

/// Rules EQ3xx: headers and their dates.
inline constexpr Rule headerRules[] = {
    {
        "EQ301",
        Severity::warning,
        "HEADER or SPECIFIC_HEADER not found in the first file",
        "looks in the wrong place from there on; without HEADER nearly always finds nothing",
        R"(The converter looks for HEADER, then behind it for SPECIFIC_HEADER, and goes on from
where it is when one is not there. Without HEADER it looks for all that follows in the wrong place,
so the record gets 2000-01-01 for the three dates, NUC table 0, band 0 and no configurations.
Without SPECIFIC_HEADER it looks for the two applicability dates in HEADER, and DATA is read as
usual. Put both elements under the root element, in this order and in front of DATA.)",
        R"(<TEST_EQ_TABLE>
  <SPECIFIC_HEADER>...</SPECIFIC_HEADER>
  <HEADER>...</HEADER>)",
    },

    {
        "EQ302",
        Severity::warning,
        "date missing or empty",
        "writes 2000-01-01T00:00:00",
        R"(The element with the date is not there, stands in front of one that it has to follow, or
is empty. The record then has 2000-01-01T00:00:00, without a message. Write the date, as
2015-06-23T10:00:00; in SPECIFIC_HEADER, APPLICABILITY_DATE comes before APPLICABILITY_END_DATE.)",
        R"(<PRODUCTION_DATE></PRODUCTION_DATE>)",
    },

    {
        "EQ303",
        Severity::warning,
        "text that is no date",
        "writes the date before it again, or 2000-01-01T00:00:00, and says so on standard error",
        R"(The text begins like no date that the converter knows, its month has no known name, or
its time has fewer than two parts. The three dates of the header share one place, so the one before
is written again: a wrong end of the applicability becomes its start. When there is none before it,
it becomes 2000-01-01T00:00:00. Write the date as 2015-06-23T10:00:00.)",
        R"(<APPLICABILITY_END_DATE>never</APPLICABILITY_END_DATE>)",
    },

    {
        "EQ304",
        Severity::warning,
        "date that the converter can't hold",
        "writes 1901-12-13T20:45:52 or 2038-01-19T03:14:07, and says so on standard error; of a "
        "year without four digits, all of them",
        R"(Instants are counted in microseconds from 2000, which reaches some 290,000 years to
either side. A date beyond becomes one of two fixed dates: the earlier one for years before 1971,
the later one for all others. A year of five digits or more is written whole: the date has more than
19 characters then, and every field behind it stands elsewhere than its readers expect. Look for a digit too many, in the year or in the seconds.)",
        R"(<PRODUCTION_DATE>999999-06-23T10:00:00</PRODUCTION_DATE>)",
    },

    {
        "EQ305",
        Severity::warning,
        "text that is read as another date than it says",
        "writes the date that it has read",
        R"(Fields that are too large are carried over (30 February is 2 March, month 13 the next
January, 24:00 the next day), a year below 70 counts from 2000 and one of 70 to 99 from 1900, a zone
behind the time is ignored, and so is other text there; parts that are missing count as 0, or are
made up. The message has the date that is written. Write it as 2015-06-23T10:00:00, in UTC, without
a zone.)",
        R"(<APPLICABILITY_DATE>2015-06-23T10:00:00+02:00</APPLICABILITY_DATE>)",
    },

    {
        "EQ306",
        Severity::note,
        "date in another layout, or with seconds that are rounded",
        "writes the same instant as YYYY-MM-DDTHH:MM:SS",
        R"(The converter knows 23-JUN-2015 10:00:00, 20150623T100000 and 23/06/2015 10:00:00 as
well, takes a time without seconds, and passes over white space around a date and a "Z" behind it.
The record has the one layout with whole seconds, rounded. Nothing needs to be done, unless other
programs do not know these layouts.)",
        R"(<PRODUCTION_DATE>23-JUN-2015 10:00:00</PRODUCTION_DATE>)",
    },

    {
        "EQ307",
        Severity::note,
        "applicability start after its end",
        "writes both dates as they are",
        R"(The period of applicability in the first file's SPECIFIC_HEADER ends before it begins, as
far as the dates that are written tell. The converter does not compare them, but no instant lies in
such a period. Check both dates, the year first.)",
        R"(<APPLICABILITY_DATE>2030-07-01T00:00:00</APPLICABILITY_DATE>
<APPLICABILITY_END_DATE>2015-12-31T23:59:59</APPLICABILITY_END_DATE>)",
    },

    {
        "EQ308",
        Severity::note,
        "dates of a later file differ from the first's, are missing or can't be read",
        "does not look at them; the record has the dates of the first file",
        R"(The record has one set of dates for all files, and the converter takes it from the first
one. Where another file of the set says something else, that is not in the record. Check whether the
files belong together, and whether the first one has the dates that are meant.)",
        R"(<PRODUCTION_DATE>2014-06-23T10:00:00</PRODUCTION_DATE>   the first: 2015)",
    },
};

}  // namespace lint
