// Dates, patterns and texts of the base library, each against a plain model.

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "base/JulianDate.h"
#include "base/String.h"
#include "base/fnmatch.h"
#include "fuzz/Calendar.h"
#include "fuzz/Check.h"
#include "fuzz/FuzzInput.h"
#include "fuzz/SlowMatcher.h"

namespace {

using vek::JulianDate, vek::String;
// ---- Dates

std::int64_t limited(Wide microseconds) {
    return microseconds < INT64_MIN   ? INT64_MIN
           : microseconds > INT64_MAX ? INT64_MAX
                                      : static_cast<std::int64_t>(microseconds);
}

/// Moving to a month of a year: what the count can't hold becomes an end of 32-bit Unix time.
std::int64_t movedTo(std::int64_t from, Wide year, Wide month, Wide dayOfMonth) {
    const Wide timeOfDay = from - day * floorDivide(from, day);
    const Wide moved = day * daysTo(year, month, dayOfMonth) + timeOfDay;
    const bool isLow = year + floorDivide(month - 1, 12) < 1971;
    const std::int64_t end = (isLow ? INT32_MIN : INT32_MAX) - std::int64_t{946684800};
    return limited(moved) == moved ? limited(moved) : end * second;
}

void checkMoves(const JulianDate& date, int n) {
    const std::int64_t from = date.microseconds;
    const Civil at = civilOf(from);
    JulianDate moved = date;
    check((moved += n).microseconds == limited(Wide{from} + Wide{n} * day), "days are added");
    moved = date;
    check((moved += double(n)).microseconds == limited(Wide{from} + Wide{n} * second),
          "seconds are added");
    moved = date;
    check(moved.addMonths(n).microseconds ==
              (n == 0 ? from : movedTo(from, at.year, Wide{at.month} + n, at.day)),
          "months are added");
    moved = date;
    check(moved.addYears(n).microseconds ==
              (n == 0 ? from : movedTo(from, Wide{at.year} + n, at.month, at.day)),
          "years are added");
}

/// What is printed reads back: whole seconds as they are, decimals but for one step.
void checkTexts(const JulianDate& date) {
    const Civil at = civilOf(date.microseconds);
    char text[64];
    std::snprintf(text, sizeof text, "%.2d-%s-%.4d", at.day, JulianDate::months[at.month - 1],
                  at.year);
    checkSame(date.dateStr().view(), text, "the date is printed");
    constexpr std::int64_t exact = std::int64_t{1} << 53;  // reading goes through a double
    if (date.microseconds <= -exact || date.microseconds >= exact) {
        return;
    }
    JulianDate whole = date;
    whole.microseconds -= date.microseconds % second;
    JulianDate read;
    for (const String& printed : {whole.strIso(0), whole.str(0), whole.strIso(0, true)}) {
        check(read.init(printed.c_str()) && read.microseconds == whole.microseconds,
              "a date reads back:", printed.view());
    }
    if (date.microseconds >= 0) {
        read.init(date.strIso(6).c_str());
        check(std::abs(read.microseconds - date.microseconds) <= 1,
              "decimals read back:", date.strIso(6).view());
    }
}

/// The count, the number of bits that it loses, how far to move, a text.
void fuzzDates(FuzzInput& in) {
    JulianDate date;
    const auto count = in.raw<std::int64_t>();
    date.microseconds = count >> in.upTo(63);
    const int n = in.raw<std::int32_t>();
    checkMoves(date, n);
    checkMoves(date, n % 5000);
    checkTexts(date);
    const std::string text(in.rest());
    JulianDate other;
    const bool isRead = date.init(text.c_str());
    check(other.init(text.c_str()) == isRead, "a text is a date or none");
    check(!isRead || date.microseconds == other.microseconds, "what was before has no influence");
    checkTexts(date);
}

// ---- Patterns

/// Flags, a pattern behind its length, a text.
void fuzzPatterns(FuzzInput& in) {
    constexpr std::size_t most = 12;
    const int flags = static_cast<int>(in.upTo(7));
    std::string pattern(in.shortText().substr(0, most));
    std::string text(in.rest().substr(0, most));
    std::erase(pattern, '\0');
    std::erase(text, '\0');
    const bool matches = SlowMatcher(pattern, text, flags).matches(0, 0);
    check((vek::fnmatch(pattern.c_str(), text.c_str(), flags) == 0) == matches,
          "a pattern matches:", pattern + " " + text);
    check(flags != 0 || String(text.c_str()).match(pattern.c_str()) == matches, "a String matches");
}

// ---- Texts

std::string replaced(std::string text, const std::string& from, const std::string& to) {
    std::size_t at = 0;
    while (!from.empty() && (at = text.find(from, at)) != std::string::npos) {
        text.replace(at, from.size(), to);
        at += to.size();
    }
    return text;
}

/// One edit of a text and of its model. Neither holds a NUL, where some searches end.
void edit(String& text, std::string& model, FuzzInput& in) {
    const unsigned operation = in.upTo(7);
    std::string other(in.shortText());
    std::erase(other, '\0');
    const int place = in.raw<std::int8_t>();
    const int last = in.raw<std::int8_t>();
    const auto size = static_cast<int>(model.size());
    const auto at = static_cast<std::size_t>(std::clamp(place, 0, size));
    switch (operation) {
        case 0:
            text.append(other.data(), static_cast<int>(other.size()));
            model += other;
            break;
        case 1:
            text.insert(place, text);
            model.insert(at, std::string(model));
            break;
        case 2:
            text.swap(other.c_str(), "<>");
            model = replaced(model, other, "<>");
            break;
        case 3:
            text.insert(place, other.c_str()).quote('[').fill('x');
            model.assign(model.size() + other.size() + 2, 'x');
            break;
        case 4:
            text.pad(place, "ab");
            for (int i = size; i < std::abs(place); ++i) {
                const std::size_t end =
                    place < 0 ? model.size() : static_cast<std::size_t>(i - size);
                model.insert(end, 1, "ab"[(i - size) % 2]);
            }
            break;
        case 5:
            text = text.substr(place, last);
            model = model.substr(at);
            model.resize(std::min(
                model.size(),
                last < 0 ? model.size()
                         : static_cast<std::size_t>(std::max(last + 1 - static_cast<int>(at), 0))));
            break;
        case 6:
            text << place;
            model += std::to_string(place);
            break;
        default:
            text = text + other.c_str() + '.' + text;
            model = model + other + "." + model;
    }
    const std::size_t found = model.find(static_cast<char>(last));
    check(text.find(static_cast<char>(last)) ==
              (found == std::string::npos ? -1 : static_cast<int>(found)),
          "a byte is found");
}

/// Edits: which, a text behind its length, two places.
void fuzzTexts(FuzzInput& in) {
    constexpr std::size_t most = 5000;
    String text("");
    std::string model;
    while (!in.isEmpty() && model.size() < most) {
        edit(text, model, in);
        checkSame(text.view(), model, "an edit gives");
        check(text.c_str()[text.length()] == '\0', "a text ends in NUL");
    }
    text.trim().escape(true).words(0, 1, ' ');
    check(std::none_of(text.view().begin(), text.view().end(),
                       [](char c) { return c < ' ' || c > '~'; }),
          "what is escaped can be printed");
}

}  // namespace

/// What to try: 0 dates, 1 patterns, 2 texts.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzInput in(data, size);
    constexpr std::array kinds{fuzzDates, fuzzPatterns, fuzzTexts};
    in.choose(kinds)(in);
    return 0;
}
