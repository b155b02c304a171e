#include "base/JulianDate.h"

#include <strings.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <limits>

namespace vek {

namespace {

constexpr std::int64_t epoch = 946684800;  // 2000-01-01T00:00:00 UTC in Unix time
constexpr std::int64_t perSecond = 1000000;
constexpr std::int64_t perDay = 86400 * perSecond;
constexpr int tmYearBase = 1900;  // tm_year counts from here

// The ends of a signed 32-bit Unix time stand for what cannot be converted: years below 1971
// become the lower one, all others the upper one.
constexpr std::int64_t lowerLimit = (INT32_MIN - epoch) * perSecond;
constexpr std::int64_t upperLimit = (INT32_MAX - epoch) * perSecond;
constexpr int firstUpperYear = 71;

constexpr int maxPrecision = 6;  // the count has no finer decimals
constexpr double powersOf10[maxPrecision + 1] = {1, 10, 100, 1000, 1e4, 1e5, 1e6};

int decimalsOf(int precision) {
    return std::min(precision < 0 ? JulianDate::d_precision : precision, maxPrecision);
}

// Whole seconds rounded down, also before 2000.
std::int64_t floorSeconds(std::int64_t microseconds) {
    return microseconds / perSecond - (microseconds % perSecond < 0 ? 1 : 0);
}

std::int64_t saturatingAdd(std::int64_t a, std::int64_t b) {
    std::int64_t sum;
    if (__builtin_add_overflow(a, b, &sum)) {
        return b < 0 ? INT64_MIN : INT64_MAX;
    }
    return sum;
}

// Whether `value` truncates to a 64-bit integer; false for NaN.
bool fitsInt64(double value) {
    return value >= -0x1p63 && value < 0x1p63;
}

// Broken-down UTC of a number of seconds since 2000; null when its year is no int.
const std::tm* fieldsOf(std::int64_t seconds, std::tm& storage) {
    const std::time_t time = seconds + epoch;
    return gmtime_r(&time, &storage);
}

// Microseconds since 2000 of UTC fields. False when there is no such time or it does not fit.
bool wholeMicroseconds(std::tm fields, std::int64_t& result) {
    fields.tm_isdst = 0;
    fields.tm_wday = -1;  // stays when the conversion fails; -1 as the time is a valid result
    const std::int64_t time = timegm(&fields);
    return fields.tm_wday >= 0 && !__builtin_mul_overflow(time - epoch, perSecond, &result);
}

// An instant rounded for printing: the seconds since 2000 and their calendar fields.
struct Rounded {
    double seconds;
    std::tm storage;
    const std::tm* fields;  // storage, or null

    Rounded(std::int64_t microseconds, int precision) {
        const int decimals = decimalsOf(precision);
        seconds =
            std::round(static_cast<double>(microseconds) / powersOf10[maxPrecision - decimals]) /
            powersOf10[decimals];
        // Truncated toward zero, as required, not rounded down.
        fields = fieldsOf(static_cast<std::int64_t>(seconds), storage);
    }
    Rounded(const Rounded&) = delete;
    Rounded& operator=(const Rounded&) = delete;
};

// The date layouts in the order in which they are tried.
enum DateLayout { noLayout, dayNameYear, yearMonthDay, compactDate, dayMonthYear };

// What the attempts to read a date have filled in. Deliberately, a failed attempt leaves its
// fields to the next one, and `monthName` stays once it is filled: verifyFill then accepts
// "2015-06-23" without its "T". In `fields` month and year are still as written.
struct DateText {
    std::tm fields{};
    char monthName[4] = "";
    int consumed = 0;
};

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

// Number 1 to 12 of a month abbreviation, 0 when there is no such month.
int monthNumber(const char* name) {
    for (int i = 0; i < 12; ++i) {
        if (::strcasecmp(name, JulianDate::months[i]) == 0) {
            return i + 1;
        }
    }
    return 0;
}

// Turns the year and month as written into what tm holds.
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
        const bool counts = *monthName != '\0' && fields.tm_mday != 0 && fields.tm_year != 0;
        const std::size_t length = std::min<std::size_t>(std::strlen(text), INT_MAX);
        consumed = counts ? static_cast<int>(length) : 0;
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
    microseconds = saturatingAdd(microseconds, days * perDay);
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
    std::tm fields;
    if (n != 0 && fieldsOf(floorSeconds(microseconds), fields) != nullptr) {
        // The sum can leave the range of int; its end is no time that the count holds, either.
        fields.tm_year = static_cast<int>(std::clamp(std::int64_t{fields.tm_year} + n,
                                                     std::int64_t{INT_MIN}, std::int64_t{INT_MAX}));
        moveTo(fields);
    }
    return *this;
}

JulianDate& JulianDate::addMonths(int n) {
    std::tm fields;
    if (n != 0 && fieldsOf(floorSeconds(microseconds), fields) != nullptr) {
        // Months are carried into the year here, so that a target out of range is limited to
        // the nearer end.
        const std::int64_t month = std::int64_t{fields.tm_mon} + n;
        const std::int64_t years = month / 12 - (month % 12 < 0 ? 1 : 0);
        fields.tm_year += static_cast<int>(years);
        fields.tm_mon = static_cast<int>(month - years * 12);
        moveTo(fields);
    }
    return *this;
}

String JulianDate::strIso(int precision, bool compact) const {
    const Rounded rounded(microseconds, precision);
    if (rounded.fields == nullptr) {
        return {};
    }
    char date[64];
    std::snprintf(date, sizeof(date), compact ? "%.4d%.2d%.2dT" : "%.4d-%.2d-%.2dT",
                  rounded.fields->tm_year + tmYearBase, rounded.fields->tm_mon + 1,
                  rounded.fields->tm_mday);
    return String(date) + timeStr(rounded.fields, rounded.seconds, precision, compact);
}

String JulianDate::str(int precision) const {
    const Rounded rounded(microseconds, precision);
    if (rounded.fields == nullptr) {
        return {};
    }
    return dateStr(rounded.fields) + " " +
           timeStr(rounded.fields, rounded.seconds, precision, false);
}

String JulianDate::timeStr(int precision, bool compact) const {
    const Rounded rounded(microseconds, precision);
    return timeStr(rounded.fields, rounded.seconds, precision, compact);
}

String JulianDate::dateStr() const {
    std::tm fields;
    return dateStr(fieldsOf(floorSeconds(microseconds), fields));
}

String JulianDate::monthStr() const {
    std::tm storage;
    const std::tm* fields = fieldsOf(floorSeconds(microseconds), storage);
    return fields == nullptr ? String() : String(months_fullname[fields->tm_mon]);
}

double JulianDate::julianDayD(int year) const {
    if (year == 2000) {
        return static_cast<double>(microseconds) / static_cast<double>(perDay);
    }
    std::tm fields{};
    fields.tm_mday = 1;
    fields.tm_year = std::max(year, INT_MIN + tmYearBase) - tmYearBase;
    const std::int64_t start = timegm(&fields) - epoch;
    return (static_cast<double>(microseconds) / static_cast<double>(perSecond) -
            static_cast<double>(start)) /
           86400;
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

// Sets the instant `fraction` seconds after the UTC `fields`, truncated toward zero; limits it
// and returns false when there is none.
bool JulianDate::convert(const std::tm& fields, double fraction) {
    std::int64_t whole;
    if (wholeMicroseconds(fields, whole)) {
        const double value = static_cast<double>(whole) + fraction * static_cast<double>(perSecond);
        if (fitsInt64(value)) {
            microseconds = static_cast<std::int64_t>(value);
            return true;
        }
    }
    limit(fields);
    return false;
}

// Sets the whole seconds to the UTC `fields`, with failure as in convert.
bool JulianDate::moveTo(const std::tm& fields) {
    const std::int64_t subSecond = microseconds - floorSeconds(microseconds) * perSecond;
    std::int64_t whole;
    if (wholeMicroseconds(fields, whole) &&
        !__builtin_add_overflow(whole, subSecond, &microseconds)) {
        return true;
    }
    limit(fields);
    return false;
}

void JulianDate::limit(const std::tm& fields) {
    microseconds = fields.tm_year < firstUpperYear ? lowerLimit : upperLimit;
}

}  // namespace vek
