#pragma once

#include <cstdint>
#include <ctime>

#include "base/String.h"

namespace vek {

/// An instant, as microseconds since 2000-01-01T00:00:00 UTC. Texts are read and printed as UTC
/// whatever the time zone of the process. A plain value; years beyond the range of the count
/// (about 292,000 years to either side) cannot be held.
class JulianDate {
  public:
    /// Decimals of the seconds where a precision argument is negative.
    static constexpr int d_precision = 2;
    /// Month abbreviations, as dateStr prints and init reads them.
    static const char* const months[12];
    /// Month names, as monthStr prints them.
    static const char* const months_fullname[12];

    /// Signed count since 2000-01-01T00:00:00 UTC.
    std::int64_t microseconds = 0;

    /// Sets the current time, in whole seconds.
    void init();
    /// Reads a date with an optional time, in one of the layouts "23-JUN-2015 10:00:00",
    /// "2015-06-23T10:00:00", "20150623T100000", "23/06/2015 10:00:00"; the seconds may have
    /// decimals or be absent. Years below 70 count from 2000, 70 to 99 from 1900. A text that
    /// begins like no layout is 2000-01-01 followed by a time; "" (or null) is 2000-01-01.
    /// Returns false and keeps the value for an unknown month name or a time of fewer than two
    /// fields; returns false with the value at 1901-12-13T20:45:52 (years below 1971) or
    /// 2038-01-19T03:14:07 when the fields are no instant that the count can hold.
    bool init(const char* text);
    /// Sets the whole seconds from broken-down UTC fields, out-of-range ones carried over, and
    /// keeps the sub-second part. Returns 1; 0 after limiting the value as init does; 0 for
    /// null, without a change.
    int update(const std::tm* fields);

    /// Adds days; limited to the range of the count.
    JulianDate& operator+=(int days);
    /// Adds seconds, truncated toward zero to microseconds; limited to the range of the count. A
    /// NaN adds nothing.
    JulianDate& operator+=(double seconds);
    /// Moves by calendar years or months, keeping day, time and sub-second part; a day that the
    /// target month lacks runs over into the next. Limits the value as init does when the
    /// target cannot be held.
    JulianDate& addYears(int n);
    JulianDate& addMonths(int n);

    /// "2015-06-23T10:00:00.00", compact "20150623T100000.00", rounded to `precision` decimals
    /// of the second (none: no "."; at most 6; negative: d_precision). Half a unit is rounded away
    /// from zero.
    String strIso(int precision = -1, bool compact = false) const;
    /// "23-JUN-2015 10:00:00.00"; precision as in strIso.
    String str(int precision = -1) const;
    /// The part of strIso behind the "T".
    String timeStr(int precision = -1, bool compact = false) const;
    /// "23-JUN-2015", not rounded.
    String dateStr() const;
    /// "June", not rounded.
    String monthStr() const;
    /// Days, with fraction, since 1 January 00:00 UTC of `year`.
    double julianDayD(int year) const;

    /// "23-JUN-2015" of `fields`; null for null fields or a month outside 0 to 11.
    static String dateStr(const std::tm* fields);
    /// "10:00:00.00" (compact "100000.00") of the time in `fields` and the fraction of
    /// `seconds`; null for null fields. Precision as in strIso.
    static String timeStr(const std::tm* fields, double seconds, int precision, bool compact);

  private:
    bool convert(const std::tm& fields, double fraction);
    bool moveTo(const std::tm& fields);
    void limit(const std::tm& fields);
};

/// Decides whether one attempt to read a date counts. `consumed` is the length that the attempt
/// used up, 0 when its layout was not matched to the end; in that case it becomes the length of
/// `text` if `monthName` is not empty and day and year of `fields` are not 0 (null: ""). Returns
/// `consumed`: above 0 when the attempt counts.
int verifyFill(const char* text, std::tm fields, const char* monthName, int& consumed);

}  // namespace vek
