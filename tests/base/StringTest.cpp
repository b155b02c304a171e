#include <climits>
#include <gtest/gtest.h>
#include <initializer_list>
#include <sstream>
#include <stdexcept>
#include <string>
#include <utility>

#include "base/String.h"

using vek::String;

namespace {

std::string join(std::initializer_list<String> texts) {
    std::string result;
    for (const String& text : texts) {
        result += (text.isNull() ? "(null)" : std::string(text.view())) + "~";
    }
    return result;
}

String edited(const char* text, void (*edit)(String&)) {
    String result(text);
    edit(result);
    return result;
}

}  // namespace

TEST(String, EditsWithItsOwnText) {
    EXPECT_EQ(join({edited("ab", [](String& s) { s.pad(-6, s.c_str()); }),
                    edited("abcab", [](String& s) { s.swap(s.c_str() + 3, s.c_str() + 1); }),
                    edited("abc", [](String& s) { s += s; }),
                    edited("abc", [](String& s) { s.insert(1, s.c_str() + 1).insert(-9, s); }),
                    edited("abc", [](String& s) { s = s.c_str() + 1; }),
                    edited("abc", [](String& s) { s = *&s; }),
                    edited("abc", [](String& s) { s = std::move(*&s); }),
                    edited("a", [](String& s) { s.append(nullptr, 4)[0] = 'b', s << 1; }),
                    edited("ab", [](String& s) { s.append("cde", 2)[0] = 'C'; })}),
              "ababab~bcabcbcab~abcabc~abcbcabcbc~bc~abc~abc~ab1~abCd~");
}

TEST(String, EntersAndLeavesTheNullState) {
    EXPECT_EQ(
        join({edited("a", [](String& s) { s = static_cast<const char*>(nullptr); }),
              edited("a", [](String& s) { s = String(); }),
              edited(nullptr, [](String& s) { s.append(nullptr, -1); }), String() += String(),
              String() += "", edited("a", [](String& s) { s.append(nullptr, 0)[0] = '\0'; })}),
        "(null)~(null)~(null)~(null)~~a~");
    String text("abc"), copy(text);
    String moved(std::move(copy.fill('x')));
    // NOLINTNEXTLINE(bugprone-use-after-move): a text moved from is null, which is tested
    EXPECT_EQ(join({text, moved, copy, copy = std::move(moved), moved}),
              "abc~xxx~(null)~xxx~(null)~");
}

TEST(String, ReadsCountsFromStreams) {
    const std::string all(100001, 'q');
    std::istringstream bytes("12345" + all), few("23");
    EXPECT_EQ(join({String(bytes, 0), String(bytes, 5), String(bytes, -1), String(few, 10)}),
              "~12345~" + all + "~23~");
}

TEST(String, RefusesTooLongInTime) {
    String text(50000, 'a');
    const String copy(text), other(50000, 'b');
    EXPECT_THROW(text.swap("a", other.c_str()), std::length_error);
    EXPECT_THROW(text.append(nullptr, INT_MAX), std::length_error);
    EXPECT_EQ(text.view(), copy.view());
}
