#include <gtest/gtest.h>
#include <string>

#include "markup/text/TextEscape.h"

TEST(TextEscape, AppendsWithoutRegardToWhatStandsBefore) {
    std::string out = "x ";
    markup::appendUnescaped(out, "  a \n b ", DocFlagTrimWhitespace | DocFlagCollapseWhitespace);
    EXPECT_EQ(out, "x a b");
}

TEST(TextEscape, EscapedTextComesBack) {
    std::string text;
    for (int byte = 1; byte < 256; ++byte) {
        text.append({static_cast<char>(byte), '&', 'l', 't', ';'});
    }
    EXPECT_EQ(UnescapeText(EscapeText(text, EscapeFlagQuotes), -1, 0), text);
}
