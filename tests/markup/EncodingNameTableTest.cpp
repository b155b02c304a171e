#include <algorithm>
#include <cctype>
#include <gtest/gtest.h>
#include <string>

#include "markup/text/EncodingNameTable.h"
#include "tests/markup/RowHash.h"

TEST(EncodingNameTable, HoldsExactlyThePublishedRowsAndFindsEachInAnyCase) {
    std::uint64_t sum = 0;
    for (const EncodingName& row : markup::allEncodingNames()) {
        std::string name(row.name);
        sum += rowHash(name, row.codePage);
        EXPECT_EQ(x_GetEncodingCodePage(name), row.codePage) << name;
        std::ranges::transform(name, name.begin(), [](unsigned char c) { return std::toupper(c); });
        const bool isWide = name.starts_with("UTF-32");
        EXPECT_EQ(x_GetEncodingCodePage(name), isWide ? 65005 : row.codePage) << name;
    }
    EXPECT_EQ(sum, 0xda6fef3f6fc52e03U);
}
