#include <cstddef>
#include <cstring>
#include <gtest/gtest.h>
#include <memory>
#include <random>
#include <string>

#include "markup/EncodingNameTable.h"
#include "markup/TextEncoding.h"

namespace {

// The units of a text in memory, as bytes.
std::string units(const std::u16string& text) {
    return {reinterpret_cast<const char*>(text.data()), text.size() * 2};
}

std::string wide(const std::u32string& text) {
    return {reinterpret_cast<const char*>(text.data()), text.size() * 4};
}

std::size_t unitSize(const std::string& encoding) {
    const int codePage = x_GetEncodingCodePage(encoding);
    return codePage == CodePageUtf16 ? 2 : codePage == CodePageUtf32 ? 4 : 1;
}

// Measures, then converts into a buffer of exactly the measured size.
std::string convert(const std::string& from, const std::string& to, const std::string& source,
                    std::size_t targetUnit) {
    const auto in = std::make_unique<std::byte[]>(source.size());
    std::memcpy(in.get(), source.data(), source.size());
    TextEncoding encoding(from, in.get(), static_cast<int>(source.size() / unitSize(from)));
    const int count = encoding.PerformConversion(nullptr, to);
    EXPECT_EQ(encoding.outputCount(), count);
    const std::size_t size = static_cast<std::size_t>(count) * targetUnit;
    const auto out = std::make_unique<std::byte[]>(size);
    EXPECT_EQ(encoding.PerformConversion(out.get(), nullptr), count) << from << " to " << to;
    return {reinterpret_cast<const char*>(out.get()), size};
}

}  // namespace

TEST(TextEncoding, Converts) {
    const std::string mixed = "x\xE2\x82\xACy\xF0\x9F\x98\x80z";
    const struct {
        std::string from;
        std::string to;
        std::string source;
        std::string target;
        std::size_t targetUnit = 1;
    } rows[] = {
        // the codecs of its own
        {"utf-8", "UTF-16", mixed + "\xC3(", units(u"x\u20ACy\uF600z?"), 2},
        {"UTF-8", "UTF-32", mixed + "\xE2\x82", wide(U"x\u20ACy\U0001F600z?"), 4},
        {"UTF-16", "UTF-8", units(u"x\u20ACy\U0001F600z"), mixed},
        {"UTF-16", "UTF-8", units({u'a', 0xD834}), "a?"},
        {"UTF-16LE", "UTF-32", units({0xD83D, 0xDE00, 0xD834, 0, u'a'}),
         wide({0x1F600, U'?', 0, U'a'}), 4},
        {"UTF-32BE", "UTF-8", wide({U'x', 0x20AC, 0x80000041}), "x\xE2\x82\xAC\xF0\x80\x81\x81"},
        {"UTF-32", "UTF-16", wide(U"x\u20AC\U0001F600"), units(u"x\u20AC\U0001F600"), 2},
        {"UTF-8", "UTF-16", "", "", 2},
        // UTF-8 cleaned by iconv: one "?" a byte, and its own idea of what is valid
        {"UTF-8", "UTF-8", "a\xC3(b", "a?(b"},
        {"UTF-8", "UTF-8", "\xC0\x80\xED\xA0\x80", "?????"},
        {"UTF-8", "utf8", "\xF4\x90\x80\x80\xF8\x88\x80\x80\x80",
         "\xF4\x90\x80\x80\xF8\x88\x80\x80\x80"},
        {"UTF-8", "UTF-8", "ab\xE2\x82", "ab"},
        {"UTF-8", "UTF-8", std::string("\xEF\xBB\xBF\0", 4), std::string("\xEF\xBB\xBF\0", 4)},
        // what the target can't hold: one "?" for each source unit
        {"UTF-8", "ISO-8859-1", mixed, "x???y????z"},
        {"UTF-8", "ISO-8859-1//IGNORE",
         "a\xE2\x82\xAC"
         "b\xC3\xA9",
         "ab\xE9"},
        {"UTF-8", "", "\xC3\xA9.", "??."},
        {"UTF-16", "ISO-8859-1", units(u"\u20AC\U0001F600A"), "???A"},
        {"UTF-32", "ISO-8859-1", wide(U"A\u20ACB"), "A?B"},
        // shift states end properly, and before each "?"
        {"UTF-8", "UTF-7", "\xE6\x97\xA5", "+ZeU-"},
        {"UTF-8", "ISO-2022-JP", "\xE6\x97\xA5", "\x1B$BF|\x1B(B"},
        {"EUC-JP", "ISO-2022-JP", "\xC6\xFC\xFF\xC6\xFC", "\x1B$BF|\x1B(B?\x1B$BF|\x1B(B"},
        {"UTF-8", "GB18030", "\xC3\xBF", "\x81\x30\x8B\x37"},
        // plain "UTF-16" is in host order, the explicit orders are as named
        {"ISO-8859-1", "UTF-16", "AB\xE9", units(u"AB\u00E9"), 2},
        {"US-ASCII", "UTF-16",
         "A\xE9"
         "B",
         units(u"A?B"), 2},
        {"ISO-8859-1", "UTF-16LE", "AB", std::string("A\0B\0", 4), 2},
        {"ISO-8859-1", "UTF-16BE", "AB", std::string("\0A\0B", 4)},
        {"UTF-16BE", "ISO-8859-1", std::string("\0A\0B", 4), "AB"},
        {"ISO-8859-16", "UTF-16", "A", units(u"A")},  // a name without code page counts bytes
        {"GB18030", "UTF-32",
         "\x94\x39\xFC\x36"
         "a",
         wide(U"\U0001F600a"), 4},
        {"ISO-8859-1", "UTF-32", std::string(3000, 'a'), wide(std::u32string(3000, U'a')), 4},
        // no converter
        {"UTF-8", "no-such", "abc", ""},
        {"no-such", "UTF-8", "abc", ""},
        {"x-ansi", "UTF-32", "abc", "", 4},
        {"UTF-8", std::string(100, 'x'), "abc", ""},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(convert(row.from, row.to, row.source, row.targetUnit), row.target)
            << row.from << " to " << row.to << " of " << row.source;
    }
}

TEST(TextEncoding, CountsOnlyWhatIconvReports) {
    const std::string source = "\xE2\x82\xAC";
    const struct {
        const char* to;
        int failed;
    } rows[] = {{"ISO-8859-1//TRANSLIT", 1}, {"ISO-8859-1", 0}, {"UTF-8", 0}};
    for (const auto& row : rows) {
        TextEncoding encoding("UTF-8", source.data(), 3);
        std::string out(static_cast<std::size_t>(encoding.PerformConversion(nullptr, row.to)), 0);
        encoding.PerformConversion(out.data(), nullptr);
        EXPECT_EQ(encoding.failedCharacters(), row.failed) << row.to << out;
        encoding.PerformConversion(out.data(), nullptr);
        EXPECT_EQ(encoding.failedCharacters(), row.failed) << "not reset";
    }
}

TEST(TextEncoding, KeepsToTheRoom) {
    // Without a measuring call it measures itself; with one, the room is what was measured.
    std::string out = "......";
    EXPECT_EQ(TextEncoding("ISO-8859-1", "\xE9\xE8", 2).PerformConversion(out.data(), "UTF-8"), 4);
    EXPECT_EQ(out, "\xC3\xA9\xC3\xA8..");
    const struct {
        const char* measured;
        const char* converted;
        const char* result;
    } rows[] = {{"US-ASCII//IGNORE", "US-ASCII", "ab."},  // no room for the "?"
                {"US-ASCII//IGNORE", "UTF-8", "ab."},
                {"no-such", "US-ASCII", "ab?"}};
    for (const auto& row : rows) {
        TextEncoding encoding("ISO-8859-1", "ab\xE9", 3);
        encoding.PerformConversion(nullptr, row.measured);
        out = "...";
        const int count = encoding.PerformConversion(out.data(), row.converted);
        EXPECT_EQ(count, out.ends_with('.') ? 2 : 3);
        EXPECT_EQ(out, row.result);
    }
    EXPECT_EQ(TextEncoding("UTF-8", nullptr, 7).PerformConversion(nullptr, "ISO-8859-1"), 0);
    EXPECT_EQ(TextEncoding("UTF-8", "abc", -1).PerformConversion(nullptr, "UTF-16"), 0);
}

// Noise through every converter that the system has: both passes agree (checked in convert) and no
// buffer is overrun.
TEST(TextEncoding, BothPassesAgreeOnNoise) {
    std::minstd_rand random(1);
    for (const EncodingName& row : x_EncodingNames()) {
        std::string source(5000, '\0');
        for (char& c : source) {
            const auto draw = static_cast<unsigned>(random() >> 8);
            const unsigned byte = draw >> 8;
            c = draw % 3 == 0 ? static_cast<char>(byte) : "a \x1B$B(&~{+-"[byte % 12];
        }
        const std::string name(row.name);
        convert(name, "UTF-8", source, 1);
        convert("UTF-8", name, convert("GB18030", "UTF-8", source, 1), unitSize(name));
        convert("UTF-8", name + "//TRANSLIT//IGNORE", source, 1);
    }
}

TEST(TextEncoding, NamesForIconv) {
    const struct {
        const char* name;
        const char* prepared;
        bool converts;
    } rows[] = {
        {"utf-16", "UTF-16BE", true},
        {"UTF-16", "UTF-16BE", true},
        {"utf-16le", "UTF-16LE", true},
        {"iso-8859-1", "ISO-8859-1", true},
        {"", "", true},
        {"cp65001", "CP65001", false},
        {"x-Ansi_\xE9", "X-ANSI_\xE9", false},
    };
    for (const auto& row : rows) {
        char buffer[TextEncoding::iconvNameBufferSize];
        EXPECT_STREQ(TextEncoding::IConvName(buffer, row.name), row.prepared);
        EXPECT_EQ(TextEncoding::CanConvert("UTF-8", row.name), row.converts) << row.name;
        EXPECT_EQ(TextEncoding::CanConvert(row.name, "UTF-8"), row.converts) << row.name;
    }
    EXPECT_TRUE(TextEncoding::CanConvert("UTF-8", nullptr));
    EXPECT_FALSE(TextEncoding::CanConvert("UTF-8", std::string(5000, 'x')));
}

TEST(TextEncoding, FindsTheRaggedEnd) {
    const struct {
        const char* from;
        std::string source;
        int trailing;
        bool told = true;
    } rows[] = {
        {"UTF-8", "abc", 0},
        {"UTF-8", "a\xC3\xA9", 0},
        {"UTF-8", "a\xE2\x82", 2},
        {"UTF-8", "\xF0\x9F\x98", 0},  // 9F 98 reads as a complete pair
        {"UTF-8", "\xE2\xB8", 2},
        {"UTF-8", "", 0},
        {"UTF-16", units({u'a', 0xD83D}), 2},
        {"UTF-16", units(u"ab"), 0},
        {"ISO-8859-1", "a\xE2", 0},
        {"no-such", "a\xE2", 0},
        {"Shift_JIS", "\x93\xFA\x93", 1},
        {"EUC-JP", "abc\xC6\xFC", 0},
        {"GB18030", "a\x94\x39\xFC", 3},
        {"ISO-2022-JP", "a\x1B$", 2},
        {"", "abc", 0},
        {"x-mac-japanese", "a\x93", 0, false},
    };
    for (const auto& row : rows) {
        const int length = static_cast<int>(row.source.size() / unitSize(row.from));
        int trailing = -1;
        const TextEncoding encoding(row.from, row.source.data(), length);
        EXPECT_EQ(encoding.FindRaggedEnd(trailing), row.told) << row.from;
        EXPECT_EQ(trailing, row.trailing) << row.from << " " << row.source;
    }
}

TEST(TextEncoding, DefaultCharacterSet) {
    int failed = -1;
    EXPECT_EQ(UTF8ToA("a\xC3\xA9", &failed), "a??");
    EXPECT_EQ(failed, 0);
    EXPECT_EQ(UTF8ToA(nullptr), "");
    EXPECT_EQ(AToUTF8("ab\xE9"), "ab?");
}
