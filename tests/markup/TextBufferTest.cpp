#include <algorithm>
#include <gtest/gtest.h>
#include <string>

#include "markup/text/TextBuffer.h"

// Sizes around those of pages, so that a NUL outside of the block is noticed.
TEST(TextBuffer, EndsInANulWhateverBefellIt) {
    TextBuffer text;
    const auto behind = [&] { return *(text.view().data() + text.size()); };
    for (const unsigned size : {0U, 1U, 4096U, 1U << 18, (1U << 18) - 1, 1U << 21, 5U, 0U}) {
        std::fill_n(text.reset(size), size, 'x');
        EXPECT_EQ(behind(), '\0');
        text.truncate(size / 2);
        EXPECT_EQ(behind(), '\0');
        text.assign(std::string(size, 'y'));
        EXPECT_EQ(behind(), '\0');
        text.clear();
        EXPECT_EQ(behind(), '\0');
    }
}
