#include <gtest/gtest.h>
#include <iterator>
#include <string>
#include <vector>

#include "markup/UnicodeCodec.h"

namespace {

using Units = std::vector<unsigned short>;

Units utf16(const std::string& text) {
    Units units(
        static_cast<std::size_t>(UTF8To16(nullptr, text.data(), static_cast<int>(text.size()))));
    EXPECT_EQ(UTF8To16(units.data(), text.data(), static_cast<int>(text.size())),
              std::ssize(units));
    return units;
}

std::string utf8(const Units& units) {
    std::string text(
        static_cast<std::size_t>(UTF16To8(nullptr, units.data(), static_cast<int>(units.size()))),
        0);
    EXPECT_EQ(UTF16To8(text.data(), units.data(), static_cast<int>(units.size())),
              std::ssize(text));
    return text;
}

}  // namespace

TEST(UnicodeCodec, EncodesAtTheLengthBoundaries) {
    const struct {
        int character;
        std::string bytes;
        Units units;
    } rows[] = {
        {0x7F, "\x7F", {0x7F}},
        {0x80, "\xC2\x80", {0x80}},
        {0x7FF, "\xDF\xBF", {0x7FF}},
        {0x800, "\xE0\xA0\x80", {0x800}},
        {0xD800, "\xED\xA0\x80", {0xD800}},
        {0xFFFF, "\xEF\xBF\xBF", {0xFFFF}},
        {0x10000, "\xF0\x90\x80\x80", {0xD800, 0xDC00}},
        {0x10FFFF, "\xF4\x8F\xBF\xBF", {0xDBFF, 0xDFFF}},
        {0x3FFFFF, "\xF7\xBF\xBF\xBF", {0xDBBF, 0xDFFF}},  // the bits above 21 are lost
        {-1, "\xF7\xBF\xBF\xBF", {0xDBBF, 0xDFFF}},
    };
    for (const auto& row : rows) {
        char bytes[6] = "xxxxx";
        unsigned short units[3] = {};
        int byteLength = 1;
        int unitLength = 1;
        EncodeCharUTF8(row.character, bytes, byteLength);
        EncodeCharUTF16(row.character, units, unitLength);
        EXPECT_EQ(std::string(bytes, static_cast<std::size_t>(byteLength)), "x" + row.bytes);
        EXPECT_EQ(Units(units + 1, units + unitLength), row.units) << row.character;
        EncodeCharUTF8(row.character, nullptr, byteLength);
        EncodeCharUTF16(row.character, nullptr, unitLength);
        EXPECT_EQ(byteLength, 1 + 2 * std::ssize(row.bytes));
        EXPECT_EQ(unitLength, 1 + 2 * std::ssize(row.units));
    }
}

TEST(UnicodeCodec, EveryCharacterSurvivesTheRoundTrip) {
    for (int character = 1; character <= 0x10FFFF; ++character) {
        std::string bytes(4, '\0');
        int length = 0;
        EncodeCharUTF8(character, bytes.data(), length);
        const char* cursor = bytes.data();
        ASSERT_EQ(DecodeCharUTF8(cursor, bytes.data() + length), character);
        ASSERT_EQ(cursor, bytes.data() + length);
        bytes.resize(static_cast<std::size_t>(length));
        if (character < 0xD800 || character > 0xDFFF) {
            ASSERT_EQ(utf8(utf16(bytes)), bytes) << character;
        }
    }
}

TEST(UnicodeCodec, ReadsOneSequence) {
    const struct {
        std::string bytes;
        int character;
        int consumed;
        bool isUtf8;
        int nonAscii;
        bool errorAtEnd;
    } rows[] = {
        {"A\xC3", 'A', 1, false, 1, true},
        {"\xC3\xA9 ", 0xE9, 2, true, 1, false},
        {"\xC0\x80", 0, 2, true, 1, false},
        {"\xE2\x82\xAC\xC3\xA9", 0x20AC, 3, true, 2, false},
        {"\xED\xA0\x80", 0xD800, 3, true, 1, false},
        {"\xF7\xBF\xBF\xBF", 0x1FFFFF, 4, true, 1, false},
        {"\x85\xC5", 0x145, 2, true, 1, false},  // loose: 10xxxxxx leads, 0xC5 continues
        {"\xC3\x28", -1, 2, false, 1, false},
        {"\xE2\x82(", -1, 3, false, 1, false},
        {"\xE2\x82", -1, 2, false, 1, true},
        {"\xF8\x88\x80", -1, 1, false, 1, false},
        {"\xB8", -1, 1, false, 1, false},
        {std::string("\xC3\0", 2), -1, 2, false, 1, false},
        {std::string("\0\xC3", 2), 0, 1, true, 0, false},
        {"", -1, 0, true, 0, false},
    };
    for (const auto& row : rows) {
        const char* cursor = row.bytes.data();
        const int size = static_cast<int>(row.bytes.size());
        EXPECT_EQ(DecodeCharUTF8(cursor, row.bytes.data() + size), row.character) << row.bytes;
        EXPECT_EQ(cursor - row.bytes.data(), row.consumed) << row.bytes;
        int nonAscii = -1;
        bool errorAtEnd = !row.errorAtEnd;
        EXPECT_EQ(DetectUTF8(row.bytes.data(), size, &nonAscii, &errorAtEnd), row.isUtf8);
        EXPECT_EQ(nonAscii, row.nonAscii) << row.bytes;
        EXPECT_EQ(errorAtEnd, row.errorAtEnd) << row.bytes;
    }
    EXPECT_TRUE(DetectUTF8(nullptr, 5, nullptr, nullptr));
    EXPECT_TRUE(DetectUTF8("\xC3", -1, nullptr, nullptr));
}

TEST(UnicodeCodec, JoinsSurrogates) {
    const struct {
        Units units;
        std::string bytes;
    } rows[] = {
        {{'a', 0xD83D, 0xDE00, 'b'},
         "a\xF0\x9F\x98\x80"
         "b"},
        {{0xD834}, "?"},
        {{0xD834, 0, 'x'}, std::string("?\0x", 3)},
        {{0xDC00, 'A'}, "\xF0\x90\x81\x81"},  // the partner's range is not examined
        {{}, ""},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(utf8(row.units), row.bytes);
    }
    EXPECT_EQ(utf16("a\xC3(b\xF8"), (Units{'a', '?', 'b', '?'}));
    const unsigned short* none = nullptr;
    EXPECT_EQ(DecodeCharUTF16(none, none), -1);
    EXPECT_EQ(UTF16To8(nullptr, nullptr, 3), 0);
    EXPECT_EQ(UTF8To16(nullptr, "abc", -1), 0);
}
