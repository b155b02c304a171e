// The fast reader of vectors against strtod: every piece has to come out to the same bits.

#include <bit>
#include <cmath>
#include <cstdlib>
#include <fstream>
#include <gtest/gtest.h>
#include <random>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "converter/numbers/VectorReader.h"
#include "tests/Escaping.h"

namespace {

/// What strtod makes of the pieces between the spaces of a text, of which one at the end adds none,
/// against what the reader makes of them. The text lies in a block of just its size, so that a
/// sanitizer sees every byte read beyond.
void compare(const std::string& text) {
    const std::vector<char> memory(text.begin(), text.end());
    VectorReader reader({memory.data(), memory.size()});
    VectorReader::Batch batch;
    std::size_t next = 0, count = 0;
    std::istringstream pieces(text);
    for (std::string piece; std::getline(pieces, piece, ' '); ++next) {
        if (next == count) {
            count = reader.read(batch);
            next = 0;
        }
        ASSERT_LT(next, count) << piece << " in " << text.substr(0, 1000);
        const double wanted = std::strtod(piece.c_str(), nullptr);
        ASSERT_EQ(std::bit_cast<std::uint64_t>(batch[next]), std::bit_cast<std::uint64_t>(wanted))
            << piece << " in " << text.substr(0, 1000);
    }
    EXPECT_EQ(count - next + reader.read(batch), 0U) << text.substr(0, 1000);
}

TEST(VectorReader, ReadsWhateverStrtodReads) {
    std::ifstream file(TEST_DATA "/numbers.txt");  // one in each line
    std::string piece, all;
    while (std::getline(file, piece)) {
        piece = script::unescape(piece);
        all += piece + " ";
        // By itself, at every place of a block, near to and far from the ends of the text, and with
        // each of its bytes replaced.
        compare(piece + "1");
        for (std::size_t shift = 0; shift < 80; ++shift) {
            const std::string placed = std::string(shift + 1, '0') + " " + piece + " ";
            compare(placed + "7");
            compare(std::string(90, '0') + " " + placed + std::string(shift % 7 + 85, '9'));
        }
        std::string changed = piece + "0";
        for (std::size_t i = 0; i < changed.size(); ++i) {
            const char kept = std::exchange(changed[i], "9-.eE:/x"[i % 8]);
            compare(changed + " 1 " + changed);
            changed[i] = kept;
        }
    }
    ASSERT_FALSE(all.empty());
    for (const std::string& text : {all, "7" + all, std::string(" 1  2 "), std::string()}) {
        compare(text);
    }
}

std::string printed(const char* format, double value) {
    char text[400];
    std::snprintf(text, sizeof text, format, value);
    return text;
}

/// A number of one of the kinds that are hard to read.
std::string generated(std::mt19937_64& random) {
    static const char* const formats[] = {"%.6g", "%.9E", "%.17g", "%.18e", "%.0f", "%.3f"};
    const auto below = [&](std::uint64_t limit) { return random() % limit; };
    const std::uint64_t kind = below(8);
    if (kind == 0) {  // any double, infinities and subnormals among them
        return printed(formats[below(4)], std::bit_cast<double>(random()));
    }
    if (kind == 1) {  // magnitudes that files hold
        const double value =
            std::ldexp(static_cast<double>(random()), static_cast<int>(below(80)) - 104);
        return printed(formats[below(6)], below(2) == 0 ? value : -value);
    }
    if (kind == 2) {  // half way between two doubles, and next to it
        const std::uint64_t half = ((random() >> 11) | std::uint64_t{1} << 53) | 1;
        return std::to_string((half << below(10)) + below(3) - 1);
    }
    // 1 to 25 digits, a point anywhere, an exponent
    std::string text(below(3), '0');
    text += std::to_string(random()) + std::to_string(random());
    text.resize(1 + below(25), '7');
    if (below(3) != 0) {
        text.insert(below(text.size() + 1), ".");
    }
    if (below(2) == 0) {  // far beyond what a double holds, or small enough to be exact
        const std::uint64_t reach = below(2) == 0 ? 350 : 20;
        text += "e" + std::to_string(static_cast<long>(below(2 * reach) - reach));
    }
    return (below(5) == 0 ? "-" : "") + text;
}

TEST(VectorReader, AgreesWithStrtod) {
    std::mt19937_64 random(20261121);
    for (int i = 0; i < 400 && !HasFatalFailure(); ++i) {
        std::string text;
        for (int count = 0; count < 1000; ++count) {
            text += generated(random) + " ";
        }
        compare(text);
    }
}

}  // namespace
