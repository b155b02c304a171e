// Dates, patterns and texts of the base library, against the system's and the standard library.

#include <fnmatch.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <ctime>
#include <string>

#include "base/JulianDate.h"
#include "base/String.h"
#include "base/fnmatch.h"
#include "fuzz/FuzzInput.h"
#include "tests/Require.h"

namespace {

using vek::JulianDate, vek::String;

/// A count, the number of bits that it loses, how many months to move, a text.
void fuzzDates(FuzzInput& in) {
    JulianDate date, other;
    const auto count = in.raw<std::int64_t>();
    date.microseconds = count >> in.pick(1, 63);
    const std::int64_t fraction = (date.microseconds % 1000000 + 1000000) % 1000000;
    const std::time_t seconds = (date.microseconds - fraction) / 1000000 + 946684800;
    std::tm fields{};
    gmtime_r(&seconds, &fields);
    requireSame(date.dateStr().view(), JulianDate::dateStr(&fields).view(), "the day");
    const int months = in.raw<std::int16_t>();
    fields.tm_mon += months;
    const std::int64_t moved = (timegm(&fields) - 946684800) * 1000000 + fraction;
    require(date.addMonths(months).microseconds == moved, "months are added");

    const std::string text(in.rest());
    if (!date.init(text.c_str())) {
        return;
    }
    date.microseconds -= date.microseconds % 1000000;
    constexpr std::int64_t exact = std::int64_t{1} << 53;  // reading goes through a double
    const bool isExact = date.microseconds > -exact && date.microseconds < exact;
    for (const String& printed : {date.strIso(0), date.str(0), date.strIso(0, true)}) {
        const bool isRead = other.init(printed.c_str()) && other.microseconds == date.microseconds;
        require(isRead || !isExact, "a date reads back:", printed.view());
    }
}

/// Flags, a pattern behind its length, a text.
void fuzzPatterns(FuzzInput& in) {
    const int flags = in.pick(0, 7);
    const std::string pattern = std::string(in.shortText().substr(0, 12)).c_str();
    const std::string text = std::string(in.rest().substr(0, 12)).c_str();
    const bool matches = vek::fnmatch(pattern.c_str(), text.c_str(), flags) == 0;
    require(flags != 0 || String(text.c_str()).match(pattern.c_str()) == matches,
            "a String matches");
    // The system's matcher goes ways of its own, not all of them POSIX's.
    bool isPeculiar = pattern.ends_with('\\') || pattern.ends_with('-') ||
                      pattern.find('/', pattern.find('[')) != std::string::npos;
    for (const char* const part : {"[.", "[:", "[=", "\\/", "*?"}) {
        isPeculiar = isPeculiar || pattern.find(part) != std::string::npos;
    }
    require(isPeculiar || (::fnmatch(pattern.c_str(), text.c_str(), flags) == 0) == matches,
            "a pattern matches:", pattern + " " + text);
}

/// Edits: a place, and a text behind its length.
void fuzzTexts(FuzzInput& in) {
    String text("");
    std::string model;
    while (!in.isEmpty() && model.size() < 5000) {
        const int place = in.pick(0, std::ssize(model));
        const auto at = static_cast<std::size_t>(place);
        const std::string other = std::string(in.shortText()).c_str();
        text.insert(place, text.substr(place / 2, -1)).insert(place, other.c_str());
        model.insert(at, model.substr(at / 2)).insert(at, other);
        requireSame(text.view(), model, "an edit gives");
        require(text.find('a') == static_cast<int>(model.find('a')), "a letter is found");
    }
    requireSame(text.swap("a", "aba").swap("aba", "a").view(), model, "a replacement goes back");
}

}  // namespace

/// What to try: 0 dates, 1 patterns, 2 texts.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzInput in(data, size);
    constexpr std::array kinds{fuzzDates, fuzzPatterns, fuzzTexts};
    in.choose(kinds)(in);
    return 0;
}
