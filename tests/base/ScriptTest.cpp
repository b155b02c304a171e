// Operations of the base library, for the scripts about texts, dates, files and patterns.

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <fstream>
#include <gtest/gtest.h>
#include <map>
#include <optional>
#include <sstream>
#include <stdexcept>
#include <string>
#include <type_traits>

#include "base/Exception.h"
#include "base/FileUtils.h"
#include "base/JulianDate.h"
#include "base/String.h"
#include "base/fnmatch.h"
#include "tests/Script.h"
#include "tests/base/EmptyFolder.h"

namespace {

using vek::FileUtils, vek::JulianDate, vek::String;
using A = script::Arguments;

// Arguments: a missing one, or "(null)", is a null text, 0 or NUL.
bool isNull(const A& a, std::size_t i) {
    return i >= a.size() || a[i] == "(null)";
}
const char* text(const A& a, std::size_t i) {
    return isNull(a, i) ? nullptr : a[i].c_str();
}
String string(const A& a, std::size_t i = 0) {
    return String(text(a, i), isNull(a, i) ? 0 : static_cast<int>(a[i].size()));
}
int number(const A& a, std::size_t i, int missing = 0) {
    return isNull(a, i) ? missing : std::stoi(a[i]);
}
char letter(const A& a, std::size_t i) {
    return isNull(a, i) ? '\0' : a[i][0];
}

template <class T>
std::string shown(const T& value) {
    if constexpr (std::is_same_v<T, bool>) {
        return script::answer(value);
    } else if constexpr (std::is_same_v<T, String>) {
        EXPECT_EQ(value.c_str()[value.length()], '\0');
        return value.isNull() ? "(null)" : std::string(value.view());
    } else {
        return shown(String() << value);
    }
}
template <class T, class... Ts>
std::string show(const T& first, const Ts&... others) {
    std::string text = shown(first);
    (text.append(" ").append(shown(others)), ...);
    return text;
}

/// A date, broken-down fields, and an empty folder as the current one.
class World {
  public:
    std::string run(const std::string& operation, const A& arguments);

  private:
    static std::string lines(const A& a) {
        std::istringstream in(a[0]);
        std::string all;
        for (String s(in, letter(a, 1)); !s.isNull(); s = String(in, letter(a, 1))) {
            all += show(s) + "~";
        }
        return all + show(String(in, 5));
    }
    static std::string list(const A& a) {
        vek::ObjAppendListP<String> result;
        result.append(new String("first"));
        const int count = FileUtils::listFiles(text(a, 0), text(a, 1), number(a, 2) != 0, result);
        std::string names = show(count);
        for (long i = 1; i < result.count(); ++i) {
            names.append(" ").append(show(*result[i]));
        }
        return names;
    }

    EmptyFolder folder_;
    JulianDate date_;
    std::tm fields_{};
};

std::string World::run(const std::string& operation, const A& arguments) try {
    // clang-format off
    using W = World;
    static const std::map<std::string, std::function<std::string(W&, const A&)>> operations{
        {"chars", [](W&, const A& a) { return show(String(text(a, 0), number(a, 1)), String(number(a, 1), letter(a, 2))); }},
        {"lines", [](W&, const A& a) { return lines(a); }},
        {"trim", [](W&, const A& a) { return show(string(a).trim(letter(a, 1))); }},
        {"escape", [](W&, const A& a) { return show(string(a).escape(number(a, 1) != 0)); }},
        {"quote", [](W&, const A& a) { return show(string(a).quote(letter(a, 1))); }},
        {"pad", [](W&, const A& a) { return show(string(a).pad(number(a, 1), text(a, 2))); }},
        {"swap", [](W&, const A& a) { return show(string(a).swap(letter(a, 1), letter(a, 2))); }},
        {"replace", [](W&, const A& a) { return show(string(a).swap(text(a, 1), text(a, 2))); }},
        {"insert", [](W&, const A& a) { return show(string(a).insert(number(a, 1), text(a, 2), number(a, 3, -1))); }},
        {"join", [](W&, const A& a) { return show(string(a) + string(a, 1) + text(a, 2) + letter(a, 3)); }},
        {"case", [](W&, const A& a) { return show(string(a).uppercase(), string(a).lowercase(), string(a).fill('z')); }},
        {"numbers", [](W&, const A& a) { return show(string(a) << number(a, 1) << std::stol(a[2]) << std::stod(a[3])); }},
        {"words", [](W&, const A& a) { return a.size() > 3 ? show(string(a).words(number(a, 1), number(a, 2), letter(a, 3))) : show(string(a).word(number(a, 1), letter(a, 2))); }},
        {"substr", [](W&, const A& a) { return show(string(a).substr(number(a, 1), number(a, 2))); }},
        {"at", [](W&, const A& a) { return show(string(a)[number(a, 1)]); }},
        {"find", [](W&, const A& a) { return show(string(a).find(letter(a, 1), number(a, 2), number(a, 3) != 0)); }},
        {"search", [](W&, const A& a) { return show(string(a).find(text(a, 1), number(a, 2))); }},
        {"count", [](W&, const A& a) { return show(string(a).count(text(a, 1))); }},
        {"match", [](W&, const A& a) { return show(string(a).match(text(a, 1))); }},
        {"cmp", [](W&, const A& a) { return show(std::clamp(string(a).cmp(text(a, 1), number(a, 2, -1)), -1, 1), std::clamp(string(a).casecmp(text(a, 1), number(a, 2, -1)), -1, 1)); }},
        {"tests", [](W&, const A& a) { return show(string(a).isInteger(), string(a).isNumber(), string(a).isAlpha()); }},
        {"number", [](W&, const A& a) { const String s = string(a); return show(s.toInt(), s.toLong(), s.toLLong(), s.toDouble(), s.toSmartDouble()); }},
        {"read", [](W& w, const A& a) { w.date_.microseconds = 86400000000; const std::string mark = w.date_.init(text(a, 0)) ? "" : "!"; return mark + show(w.date_.strIso(6)); }},
        {"micros", [](W& w, const A& a) { return show(a.empty() ? w.date_.microseconds : w.date_.microseconds = std::stoll(a[0])); }},
        {"print", [](W& w, const A& a) { return show(w.date_.strIso(number(a, 0, -1), number(a, 1) != 0), w.date_.str(number(a, 0, -1)), w.date_.timeStr(number(a, 0, -1), number(a, 1) != 0)); }},
        {"date", [](W& w, const A&) { return show(w.date_.dateStr(), w.date_.monthStr()); }},
        {"dayof", [](W& w, const A& a) { return show(w.date_.julianDayD(number(a, 0))); }},
        {"days", [](W& w, const A& a) { return show((w.date_ += number(a, 0)).microseconds); }},
        {"seconds", [](W& w, const A& a) { return show((w.date_ += std::stod(a[0])).microseconds); }},
        {"years", [](W& w, const A& a) { return show(w.date_.addYears(number(a, 0)).strIso(6)); }},
        {"months", [](W& w, const A& a) { return show(w.date_.addMonths(number(a, 0)).strIso(6)); }},
        {"fields", [](W& w, const A& a) { w.fields_ = {number(a, 5), number(a, 4), number(a, 3), number(a, 2), number(a, 1), number(a, 0), 0, 0, 0, 0, nullptr}; return show(JulianDate::dateStr(&w.fields_)); }},
        {"update", [](W& w, const A& a) { const int ok = w.date_.update(a.empty() ? nullptr : &w.fields_); return show(ok, w.date_.strIso(6)); }},
        {"timeof", [](W& w, const A& a) { return show(JulianDate::timeStr(&w.fields_, std::stod(a[0]), number(a, 1), number(a, 2) != 0)); }},
        {"nofields", [](W&, const A&) { return show(JulianDate::timeStr(nullptr, 0, 0, false), JulianDate::dateStr(nullptr)); }},
        {"verify", [](W& w, const A& a) { int consumed = number(a, 2); return show(vek::verifyFill(text(a, 0), w.fields_, text(a, 1), consumed)); }},
        {"names", [](W&, const A& a) { return show(FileUtils::baseName(text(a, 0), false), FileUtils::baseName(text(a, 0), true), FileUtils::dirName(text(a, 0), false), FileUtils::dirName(text(a, 0), true)); }},
        {"path", [](W&, const A& a) { return show(FileUtils::pathName(text(a, 0), text(a, 1))); }},
        {"put", [](W&, const A& a) { return show(a.size() > 1 ? symlink(text(a, 1), text(a, 0)) == 0 : bool(std::ofstream(a[0]) << "x")); }},
        {"pipe", [](W&, const A& a) { return show(mkfifo(a[0].c_str(), 0600) == 0); }},
        {"check", [](W&, const A& a) { return show(FileUtils::pathNameCheck(text(a, 0), text(a, 1))); }},
        {"make", [](W&, const A& a) { return show(FileUtils::makePath(text(a, 0), 0755)); }},
        {"kind", [](W&, const A& a) { return show(FileUtils::checkFile(text(a, 0)), FileUtils::checkDirectory(text(a, 0))); }},
        {"list", [](W&, const A& a) { return list(a); }},
        {"throw", [](W&, const A& a) { return a.empty() ? "" : throw vek::StdError(text(a, 0), number(a, 1)); }},
        {"fnmatch", [](W&, const A& a) { return show(vek::fnmatch(text(a, 0), text(a, 1), number(a, 2))); }},
    };
    // clang-format on
    return operations.at(operation)(*this, arguments);
} catch (const vek::Exception& error) {
    return show(error.code(), String(error.title()), error.msg());
} catch (const std::length_error&) {
    return "too long";
}

class BaseScript : public testing::TestWithParam<const char*> {};

TEST_P(BaseScript, GivesWhatItSaysInEveryZone) {
    for (const char* zone : {"UTC", "Africa/Casablanca", "Europe/Moscow", "Europe/Dublin",
                             "Europe/Lisbon", "Pacific/Apia", "America/Caracas", "right/UTC"}) {
        setenv("TZ", zone, 1);
        tzset();
        std::optional<World> world(std::in_place);
        const int checks = script::run(
            GetParam(), [&](const std::string& name, const A& a) { return world->run(name, a); },
            [&] { world.emplace(); },
            [&](const std::string& place, const std::string& result, const std::string& wanted) {
                EXPECT_EQ(result, wanted) << place << " in " << zone;
            });
        EXPECT_GT(checks, 0);
    }
    unsetenv("TZ");
    tzset();
}

INSTANTIATE_TEST_SUITE_P(Data, BaseScript,
                         testing::Values("string.txt", "date.txt", "files.txt", "pattern.txt"));

}  // namespace
