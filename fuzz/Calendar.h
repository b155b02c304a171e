#pragma once

#include <cstdint>

/// Holds sums and products of 64-bit numbers.
__extension__ using Wide = __int128;

/// In microseconds.
inline constexpr std::int64_t second = 1'000'000;
inline constexpr std::int64_t day = 86400 * second;

/// Rounds down.
inline Wide floorDivide(Wide a, Wide b) {
    return a / b - (a % b < 0 ? 1 : 0);
}

/// Days from 1 January 2000 to a date whose fields may be out of range.
inline Wide daysTo(Wide year, Wide month, Wide dayOfMonth) {
    constexpr int daysBefore[] = {0, 31, 59, 90, 120, 151, 181, 212, 243, 273, 304, 334};
    const Wide fullYear = year + floorDivide(month - 1, 12);
    const auto m = static_cast<int>(month - 1 - 12 * floorDivide(month - 1, 12));
    const Wide past = m > 1 ? fullYear : fullYear - 1;  // the last year whose leap day is past
    const auto leapDays = [](Wide y) {
        return floorDivide(y, 4) - floorDivide(y, 100) + floorDivide(y, 400);
    };
    return 365 * (fullYear - 2000) + leapDays(past) - leapDays(1999) + daysBefore[m] + dayOfMonth -
           1;
}

/// A day of the Gregorian calendar, also before its introduction.
struct Civil {
    int year;
    int month;
    int day;
};

/// The day of a count since 1 January 2000.
inline Civil civilOf(std::int64_t microseconds) {
    const Wide days = floorDivide(microseconds, day);
    Civil date{static_cast<int>(2000 + floorDivide(days * 400, 146097)) - 1, 1, 1};
    while (daysTo(date.year + 1, 1, 1) <= days) {
        ++date.year;
    }
    while (daysTo(date.year, date.month + 1, 1) <= days) {
        ++date.month;
    }
    date.day += static_cast<int>(days - daysTo(date.year, date.month, 1));
    return date;
}
