#include <gtest/gtest.h>
#include <random>
#include <string>

#include "markup/Markup.h"
#include "markup/text/Utf8Sweep.h"
#include "tests/markup/Convert.h"

namespace {

bool isPlain(const std::string& text) {
    return markup::plainUtf8Length(text) == text.size();
}

}  // namespace

TEST(Utf8Sweep, TakesEveryCharacterThatTheSystemKeeps) {
    for (int character = 1; character <= 0x10FFFF; ++character) {
        char bytes[4];
        int length = 0;
        MarkupDocument::EncodeCharUTF8(character, bytes, length);
        const std::string text(bytes, static_cast<std::size_t>(length));
        const bool isSurrogate = character >= 0xD800 && character <= 0xDFFF;
        ASSERT_EQ(isPlain(text), !isSurrogate) << character;
        if (character % 16 == 0 && !isSurrogate) {
            ASSERT_EQ(convert("UTF-8", "UTF-8", text), text) << character;
        }
    }
}

// Whatever is taken, the system's conversion gives back unchanged: valid and invalid sequences at
// every place of a block.
TEST(Utf8Sweep, NeverTakesWhatTheSystemChanges) {
    const std::string pieces[] = {"\xC3\xA9",
                                  "\xE2\x82\xAC",
                                  "\xF0\x9F\x98\x80",
                                  "\xC3",
                                  "\xE2\x82",
                                  "\xF0\x9F\x98",
                                  "\x80",
                                  "\xC0\x80",
                                  "\xE0\x9F\xBF",
                                  "\xED\xA0\x80",
                                  "\xF0\x8F\xBF\xBF",
                                  "\xF4\x90\x80\x80",
                                  "\xF8",
                                  std::string(1, 0),
                                  "\xED\x9F\xBF",
                                  "\xF4\x8F\xBF\xBF"};
    std::mt19937 random(3);
    int taken = 0;
    for (int round = 0; round < 20000; ++round) {
        std::string text(random() % 200, 'a');
        for (auto n = random() % 3; n > 0; --n) {
            text.insert(random() % (text.size() + 1), pieces[random() % std::size(pieces)]);
        }
        if (isPlain(text)) {
            ++taken;
            ASSERT_EQ(convert("UTF-8", "UTF-8", text), text);
        }
    }
    EXPECT_GT(taken, 5000);
}
