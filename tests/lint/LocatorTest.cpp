#include <gtest/gtest.h>
#include <random>
#include <string>

#include "lint/Locator.h"

namespace {

/// Counted from the start of the text.
std::pair<int, int> countedPlace(std::string_view text, std::size_t offset) {
    std::pair<int, int> place(1, 1);
    for (const char c : text.substr(0, offset)) {
        place.first += c == '\n' ? 1 : 0;
        place.second = c == '\n' ? 1 : place.second + ((c & 0xC0) != 0x80 ? 1 : 0);
    }
    return place;
}

TEST(Locator, CountsAsFromTheStart) {
    constexpr const char* pieces[] = {"a", "\t", "\r\n", "\n", "é", "日本", "😀", "a long word "};
    std::mt19937 random(1);
    std::string text;
    while (text.size() < 20'000) {
        text += pieces[random() % std::size(pieces)];
    }
    text += std::string(1'000'000, 'x') + "é\nend";
    lint::Locator locator(text);
    for (int i = 0; i < 2'000; ++i) {
        const bool isNear = i % 20 != 0;  // far ones take long to count
        const std::size_t offset = isNear ? random() % 20'000 : text.size() - random() % 200;
        const std::size_t length = random() % 300;
        const lint::Place place = locator.place(offset, length);
        EXPECT_EQ(std::pair(place.line, place.column), countedPlace(text, offset));
        EXPECT_EQ(std::pair(place.endLine, place.endColumn), countedPlace(text, offset + length));
    }
}

TEST(Locator, ShowsWhatFitsTheScreen) {
    const std::string line = "  éé " + std::string(500, 'x') + "5,5" + std::string(500, 'y');
    const std::string text = "first\n" + line + "\nlast";
    const std::size_t offset = text.find("5,5");
    const lint::Excerpt middle = lint::Locator(text).excerpt(offset, 3, 20);
    EXPECT_EQ(middle.line, std::string(10, 'x') + "5,5" + std::string(7, 'y'));
    EXPECT_EQ(middle.begin, 10U);
    EXPECT_EQ(middle.length, 3U);
    const lint::Excerpt start = lint::Locator(text).excerpt(text.find("é"), 4, 20);
    EXPECT_EQ(start.line, "éé " + std::string(17, 'x'));
    EXPECT_EQ(start.begin, 0U);
    EXPECT_EQ(start.length, 4U);
    EXPECT_EQ(lint::Locator(text).excerpt(text.size(), 1, 20).line, "last");
}

}  // namespace
