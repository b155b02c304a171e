#include <gtest/gtest.h>
#include <random>
#include <string>

#include "lint/PlainScan.h"
#include "lint/TextForm.h"

namespace {

/// By the pieces, as they are cut at each space.
bool isPlainByPieces(std::string_view text) {
    for (std::size_t start = 0; start <= text.size() && !text.empty();) {
        const std::size_t end = std::min(text.find(' ', start), text.size());
        if (!lint::isPlainNumber(text.substr(start, end - start))) {
            return false;
        }
        start = end + 1;
    }
    return true;
}

TEST(PlainScan, AgreesWithThePieces) {
    // Mostly what numbers are made of, so that many texts come near to being plain.
    constexpr std::string_view characters = "00112233445566778899.. ee E+-x\n";
    std::mt19937 random(1);
    std::uniform_int_distribution<std::size_t> choice(0, characters.size() - 1);
    int plain = 0;
    for (int i = 0; i < 200'000; ++i) {
        std::string text = i % 2 == 0 ? "" : "1.5 -2e3 .25 4. 0.125 6 ";
        for (int length = i % 12; length > 0; --length) {
            text += characters[choice(random)];
        }
        ASSERT_EQ(lint::isPlainVector(text), isPlainByPieces(text)) << text;
        plain += isPlainByPieces(text) ? 1 : 0;
    }
    EXPECT_GT(plain, 20'000);
}

}  // namespace
