#include <climits>
#include <cmath>
#include <gtest/gtest.h>
#include <initializer_list>
#include <sstream>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "base/String.h"

using vek::String;

namespace {

using S = String;
using Ints = std::vector<long long>;

std::string show(const String& text) {
    EXPECT_EQ(text.c_str()[text.length()], '\0');
    return text.isNull() ? "(null)" : std::string(text.view());
}

std::string join(std::initializer_list<String> texts) {
    std::string result;
    for (const String& text : texts) {
        result += show(text) + "~";
    }
    return result;
}

// A string after an edit that needs its name, because it uses its own text.
String edited(const char* text, void (*edit)(String&)) {
    String result(text);
    edit(result);
    return result;
}

}  // namespace

TEST(String, Edits) {
    EXPECT_EQ(join({S("  ab\t").trim(), S("   ").trim(), S("\nab").trim(), S("").trim(),
                    S("xxaxbx").trim('x')}),
              "ab~ ~\nab~~axb~");
    EXPECT_EQ(join({S("a\\b\n\r\t\x01\xE9").escape(true), S("\\\n\r\t\x1F").escape(false)}),
              "a\\\\b\\n\\r\\t\\d001\\d233~\\\\\n\r\t\\d031~");
    EXPECT_EQ(
        join({S("a").quote('[').quote('{').quote('(').quote('\0').quote('"'), S("x").pad(5, "ab"),
              S("x").pad(-3, nullptr), S("xyz").pad(3, "a").pad(-2, ""), S("n").pad(-3, "")}),
        "\"({[a]})\"~ababx~x  ~xyz~n  ~");
    EXPECT_EQ(join({S("aXbX").swap('X', 'y').swap('a', '\0'), S("aaaab").swap("aa", "aaa"),
                    S("abcabc").swap("bc", ""),
                    S("abc").swap("", "x").swap(nullptr, "x").swap("a", nullptr).swap("x", "y")}),
              "ayby~aaaaaab~aa~abc~");
    EXPECT_EQ(
        join({S("bd").insert(1, "cx", 1).insert(2, nullptr).insert(9, "e"),
              (S("aB1\xE9") + S("+") + "xY" + 'z').uppercase(), S("aB\xC9").lowercase() += 'c',
              S("abc").fill('z'), S("n=") << 0.1 << 1e20 << -7L << LLONG_MIN << 3}),
        "bcde~AB1\xE9+XYZ~ab\xC9"
        "c~zzz~n=0.11e+20-7-92233720368547758083~");
}

TEST(String, NullStrings) {
    EXPECT_EQ(join({S().trim().uppercase().lowercase().fill('x'),
                    S().escape(true).swap('a', 'b').swap("a", "b"), S().pad(0, "x") += S(),
                    S().insert(0, nullptr),
                    edited("a", [](String& s) { s = static_cast<const char*>(nullptr); }),
                    edited("a", [](String& s) { s = S(); }),
                    edited(nullptr, [](String& s) { s.append(nullptr, -1); })}),
              "(null)~(null)~(null)~(null)~(null)~(null)~(null)~");
    EXPECT_EQ(join({S() += "", S().quote('"'), S() << 5, S().pad(2, "x")}), "~\"\"~5~xx~");
}

TEST(String, EditsWithItsOwnText) {
    EXPECT_EQ(join({edited("ab", [](String& s) { s.pad(-6, s.c_str()); }),
                    edited("abcab", [](String& s) { s.swap(s.c_str() + 3, s.c_str() + 1); }),
                    edited("abc", [](String& s) { s += s; }),
                    edited("abc", [](String& s) { s.insert(1, s.c_str() + 1).insert(-9, s); }),
                    edited("abc", [](String& s) { s = s.c_str() + 1; }),
                    edited("a", [](String& s) { s.append(nullptr, 4)[0] = 'b', s << 1; }),
                    edited("ab", [](String& s) { s.append("cde", 2)[0] = 'C'; })}),
              "ababab~bcabcbcab~abcabc~abcbcabcbc~bc~ab1~abCd~");
}

TEST(String, Pieces) {
    const String list("a,b,c,d"), gap("a,,b"), null;
    EXPECT_EQ(join({list.words(1, 2, ','), list.words(2, -1, ','), list.words(-3, 0, ','),
                    list.words(2, 99, ','), list.words(4, 4, ','), list.words(2, 1, ','),
                    gap.word(1, ','), gap.word(2, ','), null.words(0, 0, ',')}),
              "b,c~c,d~a~c,d~~~~b~(null)~");
    EXPECT_EQ(join({list.substr(2, 4), list.substr(-1, -1), list.substr(5, 99), list.substr(4, 3),
                    list.substr(7, 9), null.substr(0, 1), S("").substr(0, 0)}),
              "b,c~a,b,c,d~,d~~~(null)~~");
    EXPECT_EQ(join({S("abc", 2), S(nullptr, 3), S(3, 'x'), S(-3, 'x')}), "ab~(null)~xxx~~");
}

TEST(String, Answers) {
    const String text("abcbx"), null, empty("");
    EXPECT_EQ((Ints{text.find('b'), text.find('b', 2), text.find('x', 9), text.find('x', 5),
                    text.find('x', -1), null.find('x', 3), text.find('b', 99, true),
                    text.find('b', 2, true), text.find('x', 3, true), empty.find('x', 0, true)}),
              (Ints{1, 3, 9, -1, -1, -1, 3, 1, -1, -1}));
    EXPECT_EQ((Ints{text.find("bx"), text.find("b", -7), text.find("b", 2), text.find("ba"),
                    text.find("", 2), text.find("", 5), null.find("a"), text.find(nullptr)}),
              (Ints{3, 1, 3, -1, 2, -1, -1, -1}));
    EXPECT_EQ((Ints{S("aaaa").count("aa"), text.count(""), text.count(nullptr), null.count("a"),
                    text.match("a*x"), text.match("b*"), text.match(nullptr), null.match("*"),
                    null.match(nullptr), text[4], text[5], text[-1], null[0]}),
              (Ints{2, -1, -1, 0, 1, 0, 1, 0, 1, 'x', 0, 0, 0}));
    EXPECT_EQ((Ints{null.cmp("a"), null.cmp(nullptr), text.cmp(nullptr, 0), text.cmp("zz", 0),
                    text.cmp("abcbx"), text.cmp("abz", 2), text.cmp("abd") < 0,
                    text.casecmp("ABCBX"), text.casecmp("ABD", 2), null.casecmp("A"),
                    text.casecmp(nullptr), text.casecmp("ABA") > 0}),
              (Ints{1, 0, -1, 0, 0, 0, 1, 0, 0, 1, -1, 1}));
    EXPECT_EQ((Ints{S("+").isInteger(), S("-12").isInteger(), empty.isInteger(),
                    S("1.").isInteger(), S("-").isNumber(), S("1.2.3").isNumber(),
                    S(".5").isNumber(), S("-.").isNumber(), null.isNumber(), S("1e5").isNumber(),
                    null.isAlpha(), S("aZ9").isAlpha(), S("a b").isAlpha(), S("\xE9").isAlpha()}),
              (Ints{1, 1, 0, 0, 2, 0, 1, 1, 0, 0, 1, 1, 0, 0}));
    EXPECT_EQ((Ints{S("99999999999").toInt(), null.toLong(), S(" -12x").toLong(),
                    S("99999999999999999999").toLLong()}),
              (Ints{1215752191, 0, -12, LLONG_MAX}));
    EXPECT_EQ(S("1.5x").toDouble(), 1.5);
    EXPECT_EQ(S("-0x1p-3").toSmartDouble(), -0.125);
    for (const String& noNumber : {null, empty, S("1.5x"), S("1 "), S("1\0", 2)}) {
        EXPECT_TRUE(std::isnan(noNumber.toSmartDouble())) << show(noNumber);
    }
}

TEST(String, ReadsStreams) {
    std::istringstream in("one\n\nlast");
    EXPECT_EQ(join({S(in, '\n'), S(in, '\n'), S(in, '\n'), S(in, '\n'), S(in, 5)}),
              "one~~last~(null)~(null)~");
    const std::string all(100001, 'q');
    std::istringstream bytes("12345" + all);
    EXPECT_EQ(join({S(bytes, 0), S(bytes, 5), S(bytes, -1)}), "~12345~" + all + "~");
    EXPECT_EQ(show(S(std::istringstream("123").ignore(1), 10)), "23");
}

TEST(String, CopiesMovesAndRefusesTooLong) {
    String text("abc"), copy(text);
    copy.fill('x');
    String moved(std::move(copy));
    EXPECT_EQ(join({text, moved, copy}), "abc~xxx~(null)~");
    copy = std::move(moved);
    EXPECT_EQ(show(copy), "xxx");
    EXPECT_THROW(text.pad(INT_MIN, "x"), std::length_error);
    EXPECT_THROW(text.append(nullptr, INT_MAX), std::length_error);
    EXPECT_EQ(show(text), "abc");
}
