// The calendar is worked out here and not by gmtime and timegm: where the zone of the process
// counts leap seconds ("right/UTC") these do so, too. A count becomes a day and a second of the
// day, and the day a date of the Gregorian calendar, also before its introduction; years of any
// size are brought into one cycle of 400, in which <chrono> knows the dates.
//
// Reading takes sscanf and printing snprintf, with the formats that define the layouts.

#include "base/JulianDate.h"

#include <strings.h>

#include <algorithm>
#include <chrono>
#include <climits>
#include <cmath>
#include <cstdio>
#include <cstring>

#include "base/SaturatingAdd.h"

namespace vek {

namespace {

constexpr std::int64_t epoch = 946684800;  // 2000-01-01T00:00:00 UTC in Unix time
constexpr std::int64_t perSecond = 1000000;
constexpr std::int64_t daySeconds = 86400;
constexpr std::int64_t perDay = daySeconds * perSecond;
constexpr int tmYearBase = 1900;  // tm_year counts from here

// The cycle, from 2000 on: the years of <chrono> have only 16 bits.
constexpr int cycleYears = 400;
constexpr std::int64_t cycleDays = 146097;
constexpr std::chrono::sys_days firstDay{std::chrono::year(2000) / 1 / 1};

// The ends of a signed 32-bit Unix time stand for what cannot be converted: years below 1971
// become the lower one, all others the upper one.
constexpr std::int64_t lowerLimit = (INT32_MIN - epoch) * perSecond;
constexpr std::int64_t upperLimit = (INT32_MAX - epoch) * perSecond;
constexpr int firstUpperYear = 71;

constexpr int maxPrecision = 6;  // the count has no finer decimals
constexpr std::int64_t powersOf10[maxPrecision + 1] = {1, 10, 100, 1000, 10000, 100000, 1000000};

int decimalsOf(int precision) {
    return std::min(precision < 0 ? JulianDate::d_precision : precision, maxPrecision);
}

/// Division rounded down, also below 0.
constexpr std::int64_t floorDivide(std::int64_t a, std::int64_t b) {
    return a / b - (a % b < 0 ? 1 : 0);
}

/// Whether `value` truncates to a 64-bit integer; false for NaN.
bool fitsInt64(double value) {
    return value >= -0x1p63 && value < 0x1p63;
}

/// Broken-down UTC of a number of seconds since 2000 that comes from a count of microseconds.
std::tm fieldsOf(std::int64_t seconds) {
    const std::int64_t day = floorDivide(seconds, daySeconds);
    const std::int64_t cycle = floorDivide(day, cycleDays);
    const std::chrono::year_month_day date{firstDay + std::chrono::days(day - cycle * cycleDays)};
    const int second = static_cast<int>(seconds - day * daySeconds);
    std::tm fields{};
    fields.tm_year = int{date.year()} - tmYearBase + static_cast<int>(cycle) * cycleYears;
    fields.tm_mon = static_cast<int>(unsigned{date.month()}) - 1;
    fields.tm_mday = static_cast<int>(unsigned{date.day()});
    fields.tm_hour = second / 3600;
    fields.tm_min = second / 60 % 60;
    fields.tm_sec = second % 60;
    return fields;
}

/// Seconds from 2000 to the start of a month of a year of any size.
std::int64_t startOf(std::int64_t year, unsigned month) {
    const std::int64_t cycle = floorDivide(year - 2000, cycleYears);
    const std::chrono::year inCycle{static_cast<int>(year - cycle * cycleYears)};
    const std::chrono::sys_days date{inCycle / std::chrono::month(month) / 1};
    return (cycle * cycleDays + (date - firstDay).count()) * daySeconds;
}

/// Seconds since 2000 of UTC fields, out-of-range ones carried over.
std::int64_t secondsOf(const std::tm& fields) {
    const std::int64_t carried = floorDivide(fields.tm_mon, 12);
    const auto month = static_cast<unsigned>(fields.tm_mon - carried * 12 + 1);
    return startOf(tmYearBase + carried + fields.tm_year, month) +
           (fields.tm_mday - std::int64_t{1}) * daySeconds + fields.tm_hour * std::int64_t{3600} +
           fields.tm_min * std::int64_t{60} + fields.tm_sec;
}

/// The number of steps of 10^-decimals seconds, rounded half away from zero.
std::int64_t roundedSteps(std::int64_t microseconds, int decimals) {
    const std::int64_t step = powersOf10[maxPrecision - decimals];
    const std::int64_t steps = microseconds / step;
    const std::int64_t rest = microseconds % step;
    if (rest > 0) {
        return steps + (rest >= step - rest ? 1 : 0);
    }
    return steps - (rest < 0 && -rest >= step + rest ? 1 : 0);
}

/// An instant rounded for printing: the seconds since 2000 and their calendar fields.
struct Rounded {
    double seconds;
    std::tm fields;

    Rounded(std::int64_t microseconds, int precision)
        : seconds(static_cast<double>(roundedSteps(microseconds, decimalsOf(precision))) /
                  static_cast<double>(powersOf10[decimalsOf(precision)])) {
        // Truncated toward zero, as required, not rounded down.
        fields = fieldsOf(static_cast<std::int64_t>(seconds));
    }
};

/// The date layouts in the order in which they are tried.
enum DateLayout { noLayout, dayNameYear, yearMonthDay, compactDate, dayMonthYear };

/// What the attempts to read a date have filled in. Deliberately, a failed attempt leaves its
/// fields to the next one, and `monthName` stays once it is filled: verifyFill then accepts
/// "2015-06-23" without its "T". In `fields` month and year are still as written.
struct DateText {
    std::tm fields{};
    char monthName[4] = "";
    int consumed = 0;
};

/// Fills in what `text` has of one layout. The length comes from the "%n" at its end, and stays 0
/// where the text differs before that.
void readLayout(const char* text, DateLayout layout, DateText& date) {
    int* const day = &date.fields.tm_mday;
    int* const month = &date.fields.tm_mon;
    int* const year = &date.fields.tm_year;
    int* const consumed = &date.consumed;
    *consumed = 0;
    switch (layout) {
        case dayNameYear:
            std::sscanf(text, "%d-%3s-%d %n", day, date.monthName, year, consumed);
            break;
        case yearMonthDay:
            std::sscanf(text, "%d-%d-%dT%n", year, month, day, consumed);
            break;
        case compactDate:
            std::sscanf(text, "%4d%2d%2dT%n", year, month, day, consumed);
            break;
        default:
            std::sscanf(text, "%d/%d/%d %n", day, month, year, consumed);
    }
}

/// Fills `date` in by the first layout that counts; without any it is 2000-01-01.
DateLayout readDate(const char* text, DateText& date) {
    for (const DateLayout layout : {dayNameYear, yearMonthDay, compactDate, dayMonthYear}) {
        readLayout(text, layout, date);
        if (verifyFill(text, date.fields, date.monthName, date.consumed) > 0) {
            return layout;
        }
    }
    date.fields.tm_year = 2000;
    date.fields.tm_mon = 1;
    date.fields.tm_mday = 1;
    return noLayout;
}

/// Number 1 to 12 of a month abbreviation, 0 when there is no such month.
int monthNumber(const char* name) {
    for (int i = 0; i < 12; ++i) {
        if (::strcasecmp(name, JulianDate::months[i]) == 0) {
            return i + 1;
        }
    }
    return 0;
}

/// Turns the year and month as written into what tm holds.
void normalise(std::tm& fields) {
    if (fields.tm_year < 70) {
        fields.tm_year += 2000;
    } else if (fields.tm_year <= 99) {
        fields.tm_year += 1900;
    }
    fields.tm_year -= tmYearBase;
    // The least int is as far outside the calendar as its successor.
    fields.tm_mon = std::max(fields.tm_mon, INT_MIN + 1) - 1;
}

}  // namespace

const char* const JulianDate::months[12] = {"JAN", "FEB", "MAR", "APR", "MAY", "JUN",
                                            "JUL", "AUG", "SEP", "OCT", "NOV", "DEC"};
const char* const JulianDate::months_fullname[12] = {
    "January", "February", "March",     "April",   "May",      "June",
    "July",    "August",   "September", "October", "November", "December"};

int verifyFill(const char* text, std::tm fields, const char* monthName, int& consumed) {
    if (consumed <= 0) {
        const bool hasMonth = monthName != nullptr && *monthName != '\0';
        const bool counts = hasMonth && fields.tm_mday != 0 && fields.tm_year != 0;
        const std::size_t length = text == nullptr ? 0 : std::strlen(text);
        consumed = counts ? static_cast<int>(std::min<std::size_t>(length, INT_MAX)) : 0;
    }
    return consumed;
}

void JulianDate::init() {
    microseconds = (std::time(nullptr) - epoch) * perSecond;
}

bool JulianDate::init(const char* text) {
    const char* const source = text == nullptr ? "" : text;
    DateText date;
    const DateLayout layout = readDate(source, date);
    if (layout == dayNameYear) {
        date.fields.tm_mon = monthNumber(date.monthName);
        if (date.fields.tm_mon == 0) {
            return false;
        }
    }
    normalise(date.fields);

    const char* const rest = source + date.consumed;
    double seconds = 0;
    if (*rest != '\0') {
        const char* const format = layout == compactDate ? "%2d%2d%lf" : "%d:%d:%lf";
        if (std::sscanf(rest, format, &date.fields.tm_hour, &date.fields.tm_min, &seconds) < 2) {
            return false;
        }
    }
    const double whole = std::floor(seconds);
    if (!(whole >= INT_MIN && whole <= INT_MAX)) {  // NaN is in no range
        limit(date.fields);
        return false;
    }
    date.fields.tm_sec = static_cast<int>(whole);
    return convert(date.fields, seconds - whole);
}

int JulianDate::update(const std::tm* fields) {
    return fields != nullptr && moveTo(*fields) ? 1 : 0;
}

JulianDate& JulianDate::operator+=(int days) {
    // In steps, because not every int of days fits into the count.
    constexpr auto most = static_cast<int>(INT64_MAX / perDay);
    for (int rest = days; rest != 0;) {
        const int step = std::clamp(rest, -most, most);
        microseconds = saturatingAdd(microseconds, step * perDay);
        rest -= step;
    }
    return *this;
}

JulianDate& JulianDate::operator+=(double seconds) {
    const double added = seconds * static_cast<double>(perSecond);
    if (fitsInt64(added)) {
        microseconds = saturatingAdd(microseconds, static_cast<std::int64_t>(added));
    } else if (!std::isnan(added)) {
        microseconds = added < 0 ? INT64_MIN : INT64_MAX;
    }
    return *this;
}

JulianDate& JulianDate::addYears(int n) {
    if (n != 0) {
        std::tm fields = fieldsOf(floorDivide(microseconds, perSecond));
        // The sum can leave the range of int; its end is no time that the count holds, either.
        fields.tm_year = static_cast<int>(std::clamp(std::int64_t{fields.tm_year} + n,
                                                     std::int64_t{INT_MIN}, std::int64_t{INT_MAX}));
        moveTo(fields);
    }
    return *this;
}

JulianDate& JulianDate::addMonths(int n) {
    if (n != 0) {
        std::tm fields = fieldsOf(floorDivide(microseconds, perSecond));
        // Months are carried into the year here, so that a target out of range is limited to
        // the nearer end.
        const std::int64_t month = std::int64_t{fields.tm_mon} + n;
        const std::int64_t years = floorDivide(month, 12);
        fields.tm_year += static_cast<int>(years);
        fields.tm_mon = static_cast<int>(month - years * 12);
        moveTo(fields);
    }
    return *this;
}

String JulianDate::strIso(int precision, bool compact) const {
    const Rounded rounded(microseconds, precision);
    char date[64];
    std::snprintf(date, sizeof(date), compact ? "%.4d%.2d%.2dT" : "%.4d-%.2d-%.2dT",
                  rounded.fields.tm_year + tmYearBase, rounded.fields.tm_mon + 1,
                  rounded.fields.tm_mday);
    return String(date) + timeStr(&rounded.fields, rounded.seconds, precision, compact);
}

String JulianDate::str(int precision) const {
    const Rounded rounded(microseconds, precision);
    return dateStr(&rounded.fields) + " " +
           timeStr(&rounded.fields, rounded.seconds, precision, false);
}

String JulianDate::timeStr(int precision, bool compact) const {
    const Rounded rounded(microseconds, precision);
    return timeStr(&rounded.fields, rounded.seconds, precision, compact);
}

String JulianDate::dateStr() const {
    const std::tm fields = fieldsOf(floorDivide(microseconds, perSecond));
    return dateStr(&fields);
}

String JulianDate::monthStr() const {
    return String(months_fullname[fieldsOf(floorDivide(microseconds, perSecond)).tm_mon]);
}

double JulianDate::julianDayD(int year) const {
    // One division here and two below, which may differ in the last bit: both are required.
    if (year == 2000) {
        return static_cast<double>(microseconds) / static_cast<double>(perDay);
    }
    return (static_cast<double>(microseconds) / static_cast<double>(perSecond) -
            static_cast<double>(startOf(year, 1))) /
           static_cast<double>(daySeconds);
}

String JulianDate::dateStr(const std::tm* fields) {
    if (fields == nullptr || fields->tm_mon < 0 || fields->tm_mon > 11) {
        return {};
    }
    char text[64];
    std::snprintf(text, sizeof(text), "%.2d-%s-%.4lld", fields->tm_mday, months[fields->tm_mon],
                  static_cast<long long>(fields->tm_year) + tmYearBase);
    return String(text);
}

String JulianDate::timeStr(const std::tm* fields, double seconds, int precision, bool compact) {
    if (fields == nullptr) {
        return {};
    }
    const int decimals = decimalsOf(precision);
    const int width = decimals == 0 ? 2 : decimals + 3;
    char text[64];
    std::snprintf(text, sizeof(text), compact ? "%.2d%.2d%0*.*lf" : "%.2d:%.2d:%0*.*lf",
                  fields->tm_hour, fields->tm_min, width, decimals,
                  fields->tm_sec + (seconds - std::floor(seconds)));
    return String(text);
}

/// Sets the instant `fraction` seconds after the UTC `fields`, truncated toward zero; limits it
/// and returns false when the count cannot hold it.
bool JulianDate::convert(const std::tm& fields, double fraction) {
    // In a double, as the fraction comes in one: it holds every microsecond up to 285 years from
    // 2000, and beyond fewer and fewer of them.
    constexpr auto scale = static_cast<double>(perSecond);
    const double value = static_cast<double>(secondsOf(fields)) * scale + fraction * scale;
    if (!fitsInt64(value)) {
        limit(fields);
        return false;
    }
    microseconds = static_cast<std::int64_t>(value);
    return true;
}

/// Sets the whole seconds to the UTC `fields`, with failure as in convert.
bool JulianDate::moveTo(const std::tm& fields) {
    std::int64_t seconds = secondsOf(fields);
    std::int64_t subSecond = microseconds % perSecond;
    subSecond += subSecond < 0 ? perSecond : 0;
    if (seconds < 0 && subSecond > 0) {
        // Back from the next second: the earliest instants have no whole second in the count.
        ++seconds;
        subSecond -= perSecond;
    }
    std::int64_t whole;
    if (__builtin_mul_overflow(seconds, perSecond, &whole) ||
        __builtin_add_overflow(whole, subSecond, &whole)) {
        limit(fields);
        return false;
    }
    microseconds = whole;
    return true;
}

void JulianDate::limit(const std::tm& fields) {
    microseconds = fields.tm_year < firstUpperYear ? lowerLimit : upperLimit;
}

}  // namespace vek
