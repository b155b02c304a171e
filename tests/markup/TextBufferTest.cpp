#include <algorithm>
#include <gtest/gtest.h>
#include <string>

#include "markup/text/TextBuffer.h"

// Sizes around those of pages, so that a NUL outside of the block is noticed.
TEST(TextBuffer, EndsInANulWhateverBefellIt) {
    TextBuffer text;
    for (const std::size_t size : {0U, 1U, 4096U, 1U << 18, (1U << 18) - 1, 1U << 21, 5U, 0U}) {
        const auto check = [&](std::size_t length) {
            EXPECT_EQ(text.size(), length);
            EXPECT_EQ(text.view().data()[length], '\0');
        };
        text.clear();
        check(0);
        std::fill_n(text.reset(size), size, 'x');
        check(size);
        text.truncate(size / 2);
        check(size / 2);
        text.assign(std::string(size, 'y'));
        check(size);
    }
}

// The source is lost each time, also in a block that held another before.
TEST(TextBuffer, GivesBackWhatABlockWasFilledWithAgain) {
    constexpr std::size_t size = std::size_t{1} << 22;
    TextBuffer text;
    for (int i = 0; i < 2; ++i) {
        char* const data = text.reset(size);
        std::fill_n(data, size, 'x');
        text.block().discard(data, data + size);
        EXPECT_EQ(data[0], '\0');
    }
}
