#include <algorithm>
#include <cctype>
#include <gtest/gtest.h>
#include <string>

#include "markup/text/PredefEntityTable.h"
#include "tests/markup/RowHash.h"

TEST(PredefEntityTable, HoldsExactlyThePublishedRowsAndFindsTheCapitalOne) {
    std::uint64_t sum = 0;
    for (const PredefEntity& row : markup::allPredefEntities()) {
        sum += rowHash(std::string(row.name), row.codePoint);
        std::string folded(row.name);
        std::ranges::transform(folded, folded.begin(),
                               [](unsigned char c) { return std::tolower(c); });
        const int found = markup::findPredefEntity(folded);
        EXPECT_EQ(found, markup::findPredefEntity(row.name)) << row.name;
        EXPECT_TRUE(found == row.codePoint || folded == row.name) << row.name;
    }
    EXPECT_EQ(sum, 0xd8215f7b5600ef3aU);
}
