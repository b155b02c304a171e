#include <gtest/gtest.h>

#include "tests/markup/TextChecks.h"

TEST(UnicodeCodec, EveryCharacterComesBack) {
    for (int character = 1; character <= 0x10FFFF;) {
        std::string text(1024, '\0');
        int length = 0;
        for (; length < 1000;
             character += character == 0xD7FF ? 0x801 : 1) {  // surrogates are none
            EncodeCharUTF8(character, text.data(), length);
        }
        const std::string_view all(text.data(), static_cast<std::size_t>(length));
        ASSERT_TRUE(checkUtf8(all) == all.size() || character > 0x110000) << character;
    }
}
