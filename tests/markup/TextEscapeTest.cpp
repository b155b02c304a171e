#include <gtest/gtest.h>
#include <string>

#include "markup/TextEscape.h"

TEST(TextEscape, Unescapes) {
    const struct {
        std::string escaped;
        std::string text;
    } rows[] = {
        {"&lt;a&gt;", "<a>"},
        {"&#65;&#x41;&#X41;&#xe9;", "AAA\xC3\xA9"},
        {"a & b &unknown; &; &", "a & b &unknown; &; &"},
        {"&abcdefghij;", "&abcdefghij;"},
        {"&thetasym;&#00000065;&#000000065;",
         "\xCF\x91"
         "A&#000000065;"},
        {"&OSLASH;&oslash;&darr;&AMP;", "\xC3\x98\xC3\x98\xE2\x87\x93&"},
        {"&# 65;&#+65;&#65x;&#x0x41;", "AAAA"},
        {"&#-1;&#0;&#;&#x;&#xg;", "&#-1;&#0;&#;&#x;&#xg;"},
        {"&#xD800;&#99999999;", "\xED\xA0\x80\xF5\x9E\x83\xBF"},
        {"&&amp;&amp;lt;", "&&&lt;"},
        {"&l\xE9t;&amp", "&l\xE9t;&amp"},
        {std::string("a\0&lt;", 6), "a"},
        {"", ""},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(UnescapeText(row.escaped, -1, 0), row.text) << row.escaped;
    }
    EXPECT_EQ(UnescapeText(nullptr, -1, 0), "");
    EXPECT_EQ(UnescapeText("&lt;&gt;", 7, 0), "<&gt");  // never reads past the length
    EXPECT_EQ(UnescapeText("&lt;", 99, 0), "<");
    EXPECT_EQ(UnescapeText(std::string("a\0&lt;", 6), 6, 0), std::string("a\0<", 3));
}

TEST(TextEscape, TreatsWhiteSpaceOfTheEscapedText) {
    const struct {
        const char* escaped;
        const char* plain;
        const char* trimmed;
        const char* collapsed;
    } rows[] = {
        {"  a \n\t b  ", "  a \n\t b  ", "a \n\t b", "a b"},
        {" \r\n\t ", " \r\n\t ", "", ""},
        {" &#32;  &#32; ", "      ", "    ", "   "},
        {" a& 1 &lt;  b", " a& 1 <  b", "a& 1 <  b", "a& 1 < b"},
        {"&# 65; \v", "A \v", "A \v", "A \v"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(UnescapeText(row.escaped, -1, EscapeFlagKeepRefs), row.plain);
        EXPECT_EQ(UnescapeText(row.escaped, -1, DocFlagTrimWhitespace), row.trimmed);
        std::string out = "x ";
        x_AppendUnescaped(out, row.escaped, DocFlagTrimWhitespace | DocFlagCollapseWhitespace);
        EXPECT_EQ(out, std::string("x ") + row.collapsed);
    }
}

TEST(TextEscape, Escapes) {
    const struct {
        std::string text;
        int flags;
        std::string escaped;
    } rows[] = {
        {"a<b & 'c'>\"", 0, "a&lt;b &amp; 'c'&gt;\""},
        {"a<b & 'c'>\"", EscapeFlagQuotes, "a&lt;b &amp; &apos;c&apos;&gt;&quot;"},
        {"&amp; &x", EscapeFlagKeepRefs, "&amp; &amp;x"},
        {"&amp;", 0, "&amp;amp;"},
        {"&#65;&#&#;", EscapeFlagKeepRefs, "&#65;&amp;#&#;"},
        {"&:a-.9_\xE9Z;&\xE9;&_;", EscapeFlagKeepRefs, "&:a-.9_\xE9Z;&\xE9;&_;"},
        {"&1;&;&a b;&", EscapeFlagKeepRefs, "&amp;1;&amp;;&amp;a b;&amp;"},
        {std::string("<\0>", 3), 0, std::string("&lt;\0&gt;", 9)},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(EscapeText(row.text, row.flags), row.escaped) << row.text;
    }
    EXPECT_EQ(EscapeText(nullptr, 0), "");
}

TEST(TextEscape, WrapsInCdata) {
    EXPECT_EQ(x_EncodeCDATASection("a]]>b"), "<![CDATA[a]]]]><![CDATA[>b]]>");
    EXPECT_EQ(x_EncodeCDATASection("]]]>]]>"), "<![CDATA[]]]]]><![CDATA[>]]]]><![CDATA[>]]>");
    EXPECT_EQ(x_EncodeCDATASection(nullptr), "<![CDATA[]]>");
}

TEST(TextEscape, EscapedTextComesBack) {
    std::string text;
    for (int byte = 1; byte < 256; ++byte) {
        text.append({static_cast<char>(byte), '&', 'l', 't', ';'});
    }
    EXPECT_EQ(UnescapeText(EscapeText(text, EscapeFlagQuotes), -1, 0), text);
}
