#include <climits>
#include <gtest/gtest.h>
#include <sstream>
#include <stdexcept>
#include <string>
#include <utility>

#include "base/String.h"

using vek::String;

TEST(String, TakesCopiesAndWhatIsMoved) {
    String text("abc"), copy(text), moved(std::move(copy.fill('x'))), &same = text;
    // NOLINTNEXTLINE(bugprone-use-after-move): a text moved from is null, which is tested
    EXPECT_TRUE(copy.isNull() && (copy = std::move(moved)).view() == "xxx" && moved.isNull());
    text = same;
    text = std::move(same);
    text.insert(1, text) += text;
    EXPECT_TRUE(text.view() == "aabcbcaabcbc" && (text = String()).isNull());
}

TEST(String, RefusesTooLongInTime) {
    String text(50000, 'a');
    EXPECT_THROW(text.swap("a", String(50000, 'b').c_str()), std::length_error);
    EXPECT_THROW(text.append(nullptr, INT_MAX), std::length_error);
    std::istringstream in(text.c_str());
    EXPECT_EQ(String(in, -1).view(), std::string(50000, 'a'));
}
