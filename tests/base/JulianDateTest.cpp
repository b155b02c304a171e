#include <cmath>
#include <cstdlib>
#include <ctime>
#include <gtest/gtest.h>
#include <random>

#include "base/JulianDate.h"

using vek::JulianDate;

TEST(JulianDate, AgreesWithTheSystemLibrary) {
    setenv("TZ", "UTC", 1);
    tzset();
    std::mt19937 random(2);
    const auto below = [&](int limit) { return static_cast<int>(random() % unsigned(limit)); };
    for (int round = 0; round < 20000; ++round) {
        // Any year that the count holds, or one with four digits, which all layouts read back.
        const bool isPlain = round % 2 == 0;
        std::tm fields{};
        fields.tm_year = isPlain ? below(8000) - 900 : below(580000) - 290000;
        fields.tm_mon = below(40);
        fields.tm_mday = below(1000) - 500;
        fields.tm_sec = below(2000000) - 1000000;
        JulianDate date, again;
        ASSERT_EQ(date.update(&fields), 1);
        const std::time_t expected = timegm(&fields);  // normalises the fields, too
        ASSERT_EQ(date.microseconds, (expected - 946684800) * 1000000) << date.strIso(0).c_str();
        ASSERT_STREQ(date.dateStr().c_str(), JulianDate::dateStr(&fields).c_str());
        ASSERT_EQ(std::floor(date.julianDayD(fields.tm_year + 1900) + 1e-7), fields.tm_yday);
        for (const vek::String& text : {date.strIso(0), date.strIso(0, true), date.str()}) {
            const bool isRead = again.init(text.c_str()) && again.microseconds == date.microseconds;
            ASSERT_TRUE(isRead || !isPlain) << text.c_str();
        }
    }
}
