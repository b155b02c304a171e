#include <algorithm>
#include <gtest/gtest.h>

#include "markup/text/TextBuffer.h"

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
