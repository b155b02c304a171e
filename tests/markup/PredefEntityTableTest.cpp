#include <algorithm>
#include <cctype>
#include <gtest/gtest.h>
#include <string>

#include "markup/PredefEntityTable.h"
#include "tests/markup/RowHash.h"

TEST(PredefEntityTable, HoldsExactlyThePublishedRowsAndFindsTheCapitalOne) {
    std::uint64_t sum = 0;
    for (const PredefEntity& row : x_PredefEntities()) {
        sum += rowHash(std::string(row.name), row.codePoint);
        std::string folded(row.name);
        std::ranges::transform(folded, folded.begin(),
                               [](unsigned char c) { return std::tolower(c); });
        const int found = x_FindPredefEntity(folded);
        EXPECT_EQ(found, x_FindPredefEntity(row.name)) << row.name;
        EXPECT_TRUE(found == row.codePoint || folded == row.name) << row.name;
    }
    EXPECT_EQ(sum, 0xd8215f7b5600ef3aU);
}

TEST(PredefEntityTable, SpotRows) {
    const struct {
        const char* name;
        int codePoint;
    } rows[] = {{"oslash", 216}, {"darr", 8659}, {"yuml", 376},  {"prime", 8243}, {"lang", 9001},
                {"rang", 9002},  {"apos", 39},   {"euro", 8364}, {"", 0},         {"nbsp ", 0}};
    for (const auto& row : rows) {
        EXPECT_EQ(x_FindPredefEntity(row.name), row.codePoint) << row.name;
    }
}
