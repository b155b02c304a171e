#include <chrono>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <gtest/gtest.h>
#include <limits>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "base/JulianDate.h"

using vek::JulianDate;

namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();

JulianDate at(long long microseconds) {
    JulianDate date;
    date.microseconds = microseconds;
    return date;
}

JulianDate parsed(const std::string& text) {
    JulianDate date;
    EXPECT_TRUE(date.init(text.c_str())) << text;
    return date;
}

// Days since 2000-01-01, from the standard library's calendar.
long long daysOf(int year, unsigned month, unsigned day) {
    using namespace std::chrono;
    const sys_days date{std::chrono::year(year) / std::chrono::month(month) /
                        std::chrono::day(day)};
    return (date - sys_days{2000y / 1 / 1}).count();
}

}  // namespace

TEST(JulianDate, ReadsEveryLayout) {
    // "!" marks a failure; what is there then is the value before or a limit.
    const std::pair<const char*, std::vector<const char*>> rows[] = {
        {"2000-01-01T00:00:00.00", {nullptr, ""}},
        {"2000-01-01T10:20:30.00", {"10:20:30"}},
        {"2015-06-23T00:00:00.00",
         {"23-jun-2015", "15-06-23T", "2015-06-23", "2015-06-23 10:00:00", "23/06/15"}},
        {"2015-06-23T10:00:00.00", {"2015-06-23T10:00", "23/06/2015 10:00", "20150623T1000"}},
        {"2015-06-23T10:00:30.25",
         {"2015-06-23T10:00:30.25", "23-JUN-2015   10:0:30.25", "20150623T100030.25"}},
        {"2069-01-01T00:00:00.00", {"69-01-01T"}},
        {"1970-01-01T00:00:00.00", {"70-01-01T"}},
        {"1999-01-01T00:00:00.00", {"99-01-01T", "1999-01-01T", "01-JAN-99"}},
        {"2015-06-22T23:59:59.75", {"2015-06-23T0:0:-0.25"}},
        {"2022-12-23T00:00:00.00", {"23-JUN"}},
        {"2015-03-03T02:02:01.00", {"2015-02-30T25:61:61"}},
        {"!2011-11-11T11:11:11.00",
         {"23-JUX-2015", "23-JUN-2015 10", "2015-06-23T10", "20150623", "garbage"}},
        {"!2038-01-19T03:14:07.00",
         {"2015-01-01T1:1:nan", "2015-01-01T1:1:1e10", "999999-01-01T", "2147483647-01-01T",
          "2147483647-13-2147483647T", "2015--2147483648-01T", "294277-01-09T04:00:54.9"}},
        {"!1901-12-13T20:45:52.00", {"-999999-01-01T", "1970-01-01T1:1:inf"}},
    };
    for (const auto& [expected, texts] : rows) {
        for (const char* text : texts) {
            JulianDate date = parsed("2011-11-11T11:11:11");
            const std::string mark = date.init(text) ? "" : "!";
            EXPECT_EQ(mark + date.strIso().c_str(), expected) << (text ? text : "null");
        }
    }
}

TEST(JulianDate, AgreesWithTheCalendarInEveryZone) {
    std::mt19937 engine(2);
    const auto random = [&](unsigned limit) { return static_cast<unsigned>(engine()) % limit; };
    for (const char* zone : {"UTC", "Africa/Casablanca", "Europe/Moscow", "Europe/Dublin",
                             "Europe/Lisbon", "Pacific/Apia", "America/Caracas"}) {
        setenv("TZ", zone, 1);
        tzset();
        for (int round = 0; round < 500; ++round) {
            const int year = static_cast<int>(1600 + random(800)),
                      second = static_cast<int>(random(86400));
            const unsigned month = random(12) + 1, day = random(28) + 1;
            const long long days = daysOf(year, month, day);
            const long long expected = (days * 86400 + second) * 1000000;
            char time[32], date[32], slashed[32];
            std::snprintf(time, sizeof(time), "%.2d:%.2d:%.2d", second / 3600 % 24,
                          second / 60 % 60, second % 60);
            std::snprintf(date, sizeof(date), "%.4d-%.2u-%.2uT", year, month, day);
            std::snprintf(slashed, sizeof(slashed), "%u/%u/%d ", day, month, year);
            const JulianDate value = at(expected);
            ASSERT_EQ(value.strIso(0).c_str(), std::string(date) + time) << zone;
            for (const std::string& text :
                 {std::string(date) + time, std::string(slashed) + time,
                  std::string(value.strIso(0, true).c_str()), std::string(value.str(6).c_str())}) {
                ASSERT_EQ(parsed(text).microseconds, expected) << text << " " << zone;
            }
            const double inYear = static_cast<double>(days - daysOf(year, 1, 1)) + second / 86400.0;
            ASSERT_NEAR(value.julianDayD(year), inYear, 1e-9) << date << zone;
        }
    }
    unsetenv("TZ");
    tzset();
}

TEST(JulianDate, Prints) {
    const JulianDate late = parsed("2015-06-23T10:00:59.6"), before = at(-1500000);
    std::tm odd{};
    odd.tm_mon = 12;
    std::tm far{};
    far.tm_year = INT_MAX;
    std::string all;
    // Rounding is half away from zero; the fields are those of the seconds truncated toward zero,
    // which before 2000 puts a fraction into the next second.
    for (const auto& text : {late.strIso(0), late.strIso(), late.strIso(1, true), late.str(),
                             late.timeStr(9), late.timeStr(0, true), late.dateStr(),
                             late.monthStr(), before.strIso(0), before.strIso(1), before.str(1),
                             at(0).strIso(0), at(LLONG_MAX).strIso(0), at(LLONG_MIN).dateStr(),
                             JulianDate::dateStr(&far), JulianDate::timeStr(&odd, 0.5, 1, false)}) {
        all += std::string(text.c_str()) + "~";
    }
    EXPECT_EQ(
        all,
        "2015-06-23T10:01:00~2015-06-23T10:00:59.60~20150623T100059.6~23-JUN-2015 10:00:59.60~"
        "10:00:59.600000~100100~23-JUN-2015~June~1999-12-31T23:59:58~"
        "1999-12-31T23:59:59.5~31-DEC-1999 23:59:59.5~2000-01-01T00:00:00~294277-01-09T04:00:55~"
        "22-DEC--290278~00-JAN-2147485547~00:00:00.5~");
    EXPECT_TRUE(JulianDate::dateStr(nullptr).isNull() && JulianDate::dateStr(&odd).isNull() &&
                JulianDate::timeStr(nullptr, 0, 0, false).isNull());
}

TEST(JulianDate, Moves) {
    const JulianDate end = parsed("2015-01-31T10:00:00.25");
    const auto from = [&] { return at(end.microseconds); };
    std::tm fields{};
    fields.tm_year = 101;
    std::tm far = fields;
    far.tm_year = INT_MAX;
    far.tm_mon = 12;
    JulianDate updated = from(), limited = from();
    EXPECT_EQ(updated.update(&fields) * 4 + limited.update(&far) * 2 + limited.update(nullptr), 4);
    std::string all;
    for (const JulianDate& date :
         {from().addMonths(1), from().addMonths(-14), from().addMonths(0).addYears(-20),
          at(-1).addYears(4), from().addYears(INT_MAX), from().addYears(INT_MIN).addMonths(0),
          from().addMonths(INT_MAX), from().addMonths(INT_MIN), updated, limited}) {
        all += std::string(date.strIso(6).c_str()) + " ";
    }
    EXPECT_EQ(all,
              "2015-03-03T10:00:00.250000 2013-12-01T10:00:00.250000 1995-01-31T10:00:01.250000 "
              "2003-12-31T23:59:59.999999 2038-01-19T03:14:07.000000 1901-12-13T20:45:52.000000 "
              "2038-01-19T03:14:07.000000 1901-12-13T20:45:52.000000 2000-12-31T00:00:00.250000 "
              "2038-01-19T03:14:07.000000 ");
    std::vector<long long> sums;
    for (const JulianDate& date :
         {at(LLONG_MAX - 5) += 1, at(LLONG_MIN) += -1.0, at(5) += -2, at(5) += -1.9999999,
          at(5) += infinity, at(5) += -1e300, at(5) += infinity - infinity}) {
        sums.push_back(date.microseconds);
    }
    EXPECT_EQ(sums, (std::vector<long long>{LLONG_MAX, LLONG_MIN, 5 - 2 * 86400000000, 5 - 1999999,
                                            LLONG_MAX, LLONG_MIN, 5}));
    EXPECT_EQ(at(43200000000).julianDayD(2000), 0.5);
    EXPECT_GT(at(LLONG_MIN).julianDayD(INT_MIN), 7e11);
}
