#include <algorithm>
#include <cctype>
#include <gtest/gtest.h>
#include <string>

#include "markup/EncodingNameTable.h"
#include "tests/markup/RowHash.h"

TEST(EncodingNameTable, HoldsExactlyThePublishedRowsAndFindsEachInAnyCase) {
    std::uint64_t sum = 0;
    for (const EncodingName& row : x_EncodingNames()) {
        std::string name(row.name);
        sum += rowHash(name, row.codePage);
        EXPECT_EQ(x_GetEncodingCodePage(name), row.codePage) << name;
        std::ranges::transform(name, name.begin(), [](unsigned char c) { return std::toupper(c); });
        const bool isWide = name.starts_with("UTF-32");
        EXPECT_EQ(x_GetEncodingCodePage(name), isWide ? 65005 : row.codePage) << name;
    }
    EXPECT_EQ(sum, 0xda6fef3f6fc52e03U);
}

TEST(EncodingNameTable, RulesAroundTheTable) {
    const struct {
        std::string name;
        int codePage;
    } rows[] = {
        {"", 0},
        {"UTF-32LE", 65005},
        {"UTF-32" + std::string(200, 'x'), 65005},
        {"utf-32", 12000},
        {"Unicode-1-1-UTF-8", 65001},
        {"cp1256 ", 1256},
        {"utf-8 ", -1},
        {"utf", -1},
        {std::string("utf-8\0", 6), -1},
        {"\xE9\xFF latin", -1},  // bytes that count as negative in the slot's sum
        {std::string(99, 'x'), -1},
        {std::string(100, 'x'), -1},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(x_GetEncodingCodePage(row.name), row.codePage) << row.name;
    }
    EXPECT_EQ(x_GetEncodingCodePage(nullptr), 0);
}
