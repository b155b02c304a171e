#include <gtest/gtest.h>
#include <iterator>
#include <string>
#include <vector>

#include "markup/Markup.h"

namespace {

using Units = std::vector<unsigned short>;

Units utf16(const std::string& text) {
    Units units(static_cast<std::size_t>(
        MarkupDocument::UTF8To16(nullptr, text.data(), static_cast<int>(text.size()))));
    EXPECT_EQ(MarkupDocument::UTF8To16(units.data(), text.data(), static_cast<int>(text.size())),
              std::ssize(units));
    return units;
}

std::string utf8(const Units& units) {
    std::string text(static_cast<std::size_t>(MarkupDocument::UTF16To8(
                         nullptr, units.data(), static_cast<int>(units.size()))),
                     0);
    EXPECT_EQ(MarkupDocument::UTF16To8(text.data(), units.data(), static_cast<int>(units.size())),
              std::ssize(text));
    return text;
}

}  // namespace

TEST(UnicodeCodec, EveryCharacterSurvivesTheRoundTrip) {
    for (int character = 1; character <= 0x10FFFF; ++character) {
        std::string bytes(4, '\0');
        int length = 0;
        MarkupDocument::EncodeCharUTF8(character, bytes.data(), length);
        const char* cursor = bytes.data();
        ASSERT_EQ(MarkupDocument::DecodeCharUTF8(cursor, bytes.data() + length), character);
        ASSERT_EQ(cursor, bytes.data() + length);
        bytes.resize(static_cast<std::size_t>(length));
        if (character < 0xD800 || character > 0xDFFF) {
            ASSERT_EQ(utf8(utf16(bytes)), bytes) << character;
        }
    }
}
