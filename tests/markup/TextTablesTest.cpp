#include <gtest/gtest.h>
#include <string>

#include "markup/text/EncodingNameTable.h"
#include "markup/text/PredefEntityTable.h"

// The sum of the FNV-1a hashes of all rows as "name=number" does not depend on their order. The
// expected sums were computed outside of the project from the published lists.
TEST(TextTables, HoldExactlyThePublishedRows) {
    const auto sumOf = [](auto rows, auto number) {
        std::uint64_t sum = 0;
        for (const auto& row : rows) {
            std::uint64_t hash = 14695981039346656037U;
            for (const char c : std::string(row.name) + "=" + std::to_string(row.*number)) {
                hash = (hash ^ static_cast<unsigned char>(c)) * 1099511628211U;
            }
            sum += hash;
        }
        return sum;
    };
    EXPECT_EQ(sumOf(markup::allEncodingNames(), &EncodingName::codePage), 0xda6fef3f6fc52e03);
    EXPECT_EQ(sumOf(markup::allPredefEntities(), &PredefEntity::codePoint), 0xd8215f7b5600ef3a);
}
