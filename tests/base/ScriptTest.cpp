// Operations of the base library, for the scripts of tests/data about it.

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <gtest/gtest.h>
#include <memory>
#include <sstream>
#include <stdexcept>

#include "base/Exception.h"
#include "base/FileUtils.h"
#include "base/InputBStream.h"
#include "base/InputBasicFile.h"
#include "base/InputServer.h"
#include "base/InputStreamStl.h"
#include "base/JulianDate.h"
#include "base/fnmatch.h"
#include "tests/Script.h"
#include "tests/base/Sandbox.h"

namespace vek {

static std::ostream& operator<<(std::ostream& out, const String& text) {
    EXPECT_EQ(text.c_str()[text.length()], '\0');
    return out << (text.isNull() ? "(null)" : text.view());
}

}  // namespace vek

namespace {

using script::isNull, script::number, script::text, script::told;
using vek::FileUtils, vek::InputStream, vek::JulianDate, vek::String;
using A = script::Arguments;
constexpr auto native = InputStream::BYTE_ORDER_NATIVE;
vek::InputServer& server = *vek::InputServer::getInstance();

// How the operations take their arguments.
char letter(const A& a, std::size_t i) {
    return isNull(a, i) ? '\0' : a[i][0];
}
String string(const A& a, std::size_t i = 0) {
    return String(text(a, i), isNull(a, i) ? 0 : static_cast<int>(a[i].size()));
}
/// "(own)" is the text worked on, behind its first byte.
const char* text(const A& a, std::size_t i, const String& self) {
    return i < a.size() && a[i] == "(own)" ? self.c_str() + 1 : text(a, i);
}

/// What the operations work on.
struct World {
    ~World() { server.setDriverDefault("buffer"); }
    std::string run(const std::string& operation, const A& arguments);

    /// Values with the state of the stream.
    template <class... Values>
    std::string state(const Values&... values) const {
        return told(values...) + " @" + std::to_string(stream->offset()) +
               (stream->eof() ? " eof" : "") + (stream->fail() ? " fail" : "") +
               (stream->isFifo() ? " fifo" : "");
    }
    static long countFiles() {
        return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
    }

    Sandbox box;
    const long openFiles = countFiles();
    std::istringstream adapted{"adapted"};
    std::unique_ptr<InputStream> stream;
    JulianDate date;
    std::tm fields{};
    static const script::Operations<World> operations;
};

// clang-format off
using W = World;
// NOLINTNEXTLINE(cppcoreguidelines-interfaces-global-init): the flags of streams are constants
const script::Operations<W> World::operations{
    {"chars", [](W&, const A& a) { return told(String(text(a), number(a, 1)), String(number(a, 1), letter(a, 2)), +string(a)[number(a, 1)]); }},
    {"lines", [](W&, const A& a) { std::istringstream in(a[0]); const String first(in, letter(a, 1)), second(in, letter(a, 1)), third(in, letter(a, 1)); return told(first, second, third); }},
    {"counts", [](W&, const A& a) { std::istringstream in(a[0]); const String none(in, 0), some(in, number(a, 1)), all(in, -1); return told(none, some, all, String(in, 5)); }},
    {"trim", [](W&, const A& a) { return told(string(a).trim(letter(a, 1))); }},
    {"escape", [](W&, const A& a) { return told(string(a).escape(number(a, 1) != 0)); }},
    {"quote", [](W&, const A& a) { return told(string(a).quote(letter(a, 1))); }},
    {"pad", [](W&, const A& a) { String s = string(a); return told(s.pad(number(a, 1), text(a, 2, s))); }},
    {"swap", [](W&, const A& a) { return told(string(a).swap(letter(a, 1), letter(a, 2))); }},
    {"replace", [](W&, const A& a) { String s = string(a); return told(s.swap(text(a, 1, s), text(a, 2, s))); }},
    {"insert", [](W&, const A& a) { String s = string(a); return told(s.insert(number(a, 1), text(a, 2, s), number(a, 3, -1))); }},
    {"append", [](W&, const A& a) { String s = string(a); const char* const at = s.append(text(a, 1, s), number(a, 2, -1)); return told(at == nullptr ? -1 : at - s.c_str(), s); }},
    {"assign", [](W&, const A& a) { String s = string(a); return told(s = text(a, 1, s)); }},
    {"join", [](W&, const A& a) { return told(string(a) + string(a, 1) + text(a, 2) + letter(a, 3)); }},
    {"case", [](W&, const A& a) { return told(string(a).uppercase(), string(a).lowercase(), string(a).fill('z')); }},
    {"numbers", [](W&, const A& a) { return told(string(a) << number(a, 1) << std::stol(a[2]) << std::stod(a[3])); }},
    {"words", [](W&, const A& a) { return a.size() > 3 ? told(string(a).words(number(a, 1), number(a, 2), letter(a, 3))) : told(string(a).word(number(a, 1), letter(a, 2))); }},
    {"substr", [](W&, const A& a) { return told(string(a).substr(number(a, 1), number(a, 2))); }},
    {"find", [](W&, const A& a) { return told(string(a).find(letter(a, 1), number(a, 2), number(a, 3) != 0)); }},
    {"search", [](W&, const A& a) { return told(string(a).find(text(a, 1), number(a, 2)), string(a).count(text(a, 1))); }},
    {"match", [](W&, const A& a) { return told(string(a).match(text(a, 1))); }},
    {"cmp", [](W&, const A& a) { return told(std::clamp(string(a).cmp(text(a, 1), number(a, 2, -1)), -1, 1), std::clamp(string(a).casecmp(text(a, 1), number(a, 2, -1)), -1, 1)); }},
    {"tests", [](W&, const A& a) { return told(string(a).isInteger(), string(a).isNumber(), string(a).isAlpha()); }},
    {"number", [](W&, const A& a) { const String s = string(a); return told(s.toInt(), s.toLong(), s.toLLong(), s.toDouble(), s.toSmartDouble()); }},
    {"init", [](W& w, const A& a) { w.date.microseconds = 86400000000; const std::string mark = w.date.init(text(a)) ? "" : "!"; return mark + told(w.date.strIso(6)); }},
    {"micros", [](W& w, const A& a) { return told(a.empty() ? w.date.microseconds : w.date.microseconds = std::stoll(a[0])); }},
    {"print", [](W& w, const A& a) { return told(w.date.strIso(number(a, 0, -1), number(a, 1) != 0), w.date.str(number(a, 0, -1)), w.date.timeStr(number(a, 0, -1), number(a, 1) != 0), w.date.dateStr(), w.date.monthStr()); }},
    {"dayof", [](W& w, const A& a) { return told(w.date.julianDayD(number(a))); }},
    {"add", [](W& w, const A& a) { return told(((w.date += number(a)) += std::stod(a[1])).microseconds); }},
    {"move", [](W& w, const A& a) { return told(w.date.addYears(number(a)).addMonths(number(a, 1)).strIso(6)); }},
    {"fields", [](W& w, const A& a) { if (a.empty()) return told(JulianDate::timeStr(nullptr, 0, 0, false), JulianDate::dateStr(nullptr)); w.fields = {number(a, 5), number(a, 4), number(a, 3), number(a, 2), number(a, 1), number(a), 0, 0, 0, 0, nullptr}; return told(JulianDate::dateStr(&w.fields)); }},
    {"update", [](W& w, const A& a) { const int ok = w.date.update(a.empty() ? nullptr : &w.fields); return told(ok, w.date.strIso(6)); }},
    {"timeof", [](W& w, const A& a) { return told(JulianDate::timeStr(&w.fields, std::stod(a[0]), number(a, 1), number(a, 2) != 0)); }},
    {"verify", [](W& w, const A& a) { int consumed = number(a, 2); return told(vek::verifyFill(text(a), w.fields, text(a, 1), consumed)); }},
    {"names", [](W&, const A& a) { return told(FileUtils::baseName(text(a), false), FileUtils::baseName(text(a), true), FileUtils::dirName(text(a), false), FileUtils::dirName(text(a), true)); }},
    {"path", [](W&, const A& a) { return told(FileUtils::pathName(text(a), text(a, 1))); }},
    {"link", [](W&, const A& a) { return told(symlink(text(a, 1), text(a)) == 0); }},
    {"check", [](W&, const A& a) { return told(FileUtils::pathNameCheck(text(a), text(a, 1))); }},
    {"make", [](W&, const A& a) { return told(FileUtils::makePath(text(a), 0755)); }},
    {"kind", [](W&, const A& a) { return told(FileUtils::checkFile(text(a)), FileUtils::checkDirectory(text(a))); }},
    {"list", [](W&, const A& a) { vek::ObjAppendListP<String> names; names.append(new String("first")); String all = String() << FileUtils::listFiles(text(a), text(a, 1), number(a, 2) != 0, names); for (long i = 1; i < names.count(); ++i) (all += " ") += *names[i]; return told(all); }},
    {"throw", [](W&, const A& a) { return a.empty() ? "" : throw vek::StdError(text(a), number(a, 1)); }},
    {"fnmatch", [](W&, const A& a) { return told(vek::fnmatch(text(a), text(a, 1), number(a, 2))); }},
    {"put", [](W&, const A& a) { return told(Sandbox::put(a[0], string(a, 1).pad(number(a, 2), text(a, 1)).view())); }},
    {"pipe", [](W& w, const A& a) { return told(w.box.pipe(a[0], string(a, 1).pad(number(a, 2), text(a, 1)).view())); }},
    {"open", [](W& w, const A& a) { w.stream.reset(server.getFile(text(a), isNull(a, 3) ? native : InputStream::BYTE_ORDER_BIG, text(a, 1), text(a, 2))); return w.stream ? w.state(w.stream->name()) : "null"; }},
    {"basic", [](W& w, const A& a) { w.stream = std::make_unique<vek::InputBasicFile>(text(a), native); return w.state(w.stream->name()); }},
    {"fstream", [](W& w, const A& a) { w.stream = std::make_unique<vek::InputFStream>(text(a), native); return w.state(w.stream->name()); }},
    {"text", [](W& w, const A& a) { w.stream = std::make_unique<vek::InputSStream>("text", native, a[0]); return w.state(w.stream->name()); }},
    {"adapter", [](W& w, const A&) { w.stream = std::make_unique<vek::InputStreamStl>(&w.adapted, nullptr, native); return w.state(w.stream->name()); }},
    {"held", [](W& w, const A& a) { auto* const held = new vek::InputBStream("held", native); w.stream.reset(held); return w.state(static_cast<long>(held->initBuf(text(a), number<unsigned long>(a, 1)))); }},
    {"window", [](W& w, const A& a) { auto* const window = new vek::InputBStream(text(a), native); w.stream.reset(window); isNull(a, 2) ? window->initFile(7, true) : void(); window->initFile(number<unsigned long>(a, 1), false); return w.state(window->capacity(), window->keepBack()); }},
    {"read", [](W& w, const A& a) { std::string field(number<std::size_t>(a), '.'); const unsigned long told = w.stream->bufread(field.data(), field.size(), 100); return w.state(string({field}), static_cast<long>(told)); }},
    {"line", [](W& w, const A& a) { std::string field(20, '.'); w.stream->getline(field.data(), number<unsigned long>(a)); return w.state(string({field.erase(std::min<std::size_t>(field.find('\0'), 19) + 1)})); }},
    {"value", [](W& w, const A& a) { std::string field(8, '\xEE'); w.stream->read_swap(field.data(), number<unsigned short>(a), number<unsigned short>(a, 1), number(a, 2) != 0); return w.state(string({field})); }},
    {"peek", [](W& w, const A&) { return w.state(w.stream->peek()); }},
    {"seek", [](W& w, const A& a) { w.stream->seek(number<long>(a), number<std::ios::seekdir>(a, 1)); return w.state(String("to")); }},
    {"name", [](W& w, const A& a) { return w.state(w.stream->name(number(a))); }},
    {"size", [](W& w, const A& a) { return w.state(a.empty() ? w.stream->size() : w.stream->size(number(a))); }},
    // A driver that tells its options, and refuses "no".
    {"driver", [](W&, const A& a) { const auto tell = [](const char* name, InputStream::ByteOrder order, const char* options) -> InputStream* { return String(options).cmp("no") == 0 ? nullptr : new vek::InputSStream(name, order, told(String(options))); }; server.addDriver(text(a), number(a, 2, 1) == 0 ? nullptr : +tell, text(a, 1)); return ""; }},
    {"default", [](W&, const A& a) { server.setDriverDefault(text(a)); return server.getDriverDefault(); }},
    {"option", [](W&, const A& a) { server.setDriverOption(text(a), text(a, 1)); return ""; }},
    {"leaked", [](W& w, const A&) { w.stream.reset(); return told(countFiles() - w.openFiles); }},
    {"mapped", [](W& w, const A& a) { const auto pages = [] { long count = 0; std::ifstream("/proc/self/statm") >> count; return count; }; w.stream.reset(); const long before = pages(); w.run("open", a); return told((pages() - before) * sysconf(_SC_PAGESIZE) >> 20); }},
};
// clang-format on

std::string World::run(const std::string& operation, const A& arguments) try {
    errno = 0;
    return operations.at(operation)(*this, arguments);
} catch (const vek::StdError& error) {
    const bool mayLeaveErrno = !error.msg().match("*open failed");
    EXPECT_TRUE(std::strcmp(error.family(), "STD") == 0 && (errno == 0 || mayLeaveErrno));
    const String title(error.title());  // holds only until the next
    EXPECT_STREQ(title.c_str(), error.code() == 0 ? "" : std::strerror(error.code()));
    // By its name: the system's text for it is long.
    return told(String(strerrorname_np(error.code())) + ":", error.msg());
} catch (const std::length_error&) {
    return "too long";
}

TEST(BaseScript, GivesWhatItSays) {
    for (const char* name : {"string.txt", "files.txt", "pattern.txt", "streams.txt"}) {
        script::run<World>(name);
    }
}

TEST(BaseScript, GivesTheSameDatesInEveryZone) {
    for (const char* zone : {"Africa/Casablanca", "Europe/Moscow", "Europe/Dublin", "Europe/Lisbon",
                             "Pacific/Apia", "America/Caracas", "right/UTC", "UTC"}) {
        SCOPED_TRACE(zone);
        setenv("TZ", zone, 1);
        tzset();
        script::run<World>("date.txt");
    }
}

TEST(BaseScript, RegistersDriversInAProcessOfItsOwn) {
    EXPECT_EXIT(std::exit((script::run<World>("drivers.txt"), HasFailure())),
                testing::ExitedWithCode(0), "");
}

}  // namespace
