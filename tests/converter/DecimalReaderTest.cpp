// The fast reader of decimal numbers against strtod: whatever it takes has to come out to the same
// bits, and whatever it refuses is left to strtod.

#include <bit>
#include <cstdlib>
#include <gtest/gtest.h>
#include <random>
#include <string>
#include <vector>

#include "converter/DecimalReader.h"

namespace {

/// Compares one text; true when the reader took it.
bool compare(const std::string& text) {
    const double wanted = std::strtod(text.c_str(), nullptr);
    bool taken = false;
    // With more and less memory behind the text, and none of it beyond what may be looked at.
    for (const std::size_t beyond : {0U, 1U, 2U, 20U}) {
        std::vector<char> memory(text.begin(), text.end());
        memory.resize(text.size() + beyond, ' ');
        double value = -1;
        const char* const start = memory.data();
        taken = decimal::read(start, start + text.size(), start + memory.size(), value);
        EXPECT_EQ(std::bit_cast<std::uint64_t>(value),
                  std::bit_cast<std::uint64_t>(taken ? wanted : -1.0))
            << text << " with " << beyond;
    }
    return taken;
}

TEST(DecimalReader, TakesPlainNumbersAndLeavesTheOthers) {
    for (const char* text : {"0",
                             "-0",
                             "+1",
                             "1.",
                             ".5",
                             "-.5",
                             "00",
                             "1e5",
                             "1E-05",
                             "1.5e+05",
                             "1e+5",
                             "12345678",
                             "123456789",
                             "1234567.8",
                             "12345678.9",
                             "0.1234567890123456",
                             "1.2345678901234567",
                             "123.45678901234567",
                             "-123.45678901",
                             "-123.45678901234",
                             "-123.456789012345",
                             "-123.4567890123456",
                             "9007199254740993",
                             "1234567890123456789",
                             "1e22",
                             "1e23",
                             "8.5e-7",
                             "1e0005",
                             "0e9999"}) {
        EXPECT_TRUE(compare(text)) << text;
    }
    for (const char* text : {"",
                             "-",
                             "+",
                             ".",
                             "e5",
                             "1e",
                             "1e+",
                             "1.5.5",
                             "1-",
                             "--1",
                             "+-1",
                             "0x1p3",
                             "inf",
                             "nan(1)",
                             "1e00005",
                             " 1",
                             "1\n2",
                             "1,5",
                             "12345678901234567890",
                             "1e400",
                             "1e-400",
                             "4.9e-324",
                             "1.5e",
                             "1.5e+0x",
                             "1.5e*05",
                             "1:2",
                             "/1"}) {
        EXPECT_FALSE(compare(text)) << text;
    }
}

std::string print(const char* format, double value) {
    char text[64];
    std::snprintf(text, sizeof text, format, value);
    return text;
}

TEST(DecimalReader, AgreesWithStrtod) {
    std::mt19937_64 random(20261121);
    const char* const formats[] = {"%.6g", "%.9E", "%.17g", "%.18e", "%.0f", "%.3f"};
    int taken = 0;
    constexpr int rounds = 600000;
    for (int i = 0; i < rounds; ++i) {
        const std::uint64_t bits = random();
        std::string text;
        switch (i % 4) {
            case 0:  // any double
                text = print(formats[i / 4 % 4], std::bit_cast<double>(bits));
                break;
            case 1: {  // magnitudes that files hold
                const std::uint64_t exponent = 1023 - 40 + bits % 80;
                const double value =
                    std::bit_cast<double>((bits & 0x800FFFFFFFFFFFFF) | exponent << 52);
                text = print(formats[i / 4 % 6], value);
                break;
            }
            case 2: {  // half way between two doubles, and next to it
                const std::uint64_t half = ((bits >> 11) | std::uint64_t{1} << 53) | 1;
                text = std::to_string((half << (bits % 10)) + bits / 16 % 3 - 1);
                break;
            }
            default:  // 1 to 25 digits, a point anywhere, an exponent
                for (std::uint64_t n = 1 + bits % 25; n > 0; --n) {
                    text += static_cast<char>('0' + random() % 10);
                }
                text.insert(random() % (text.size() + 1), bits % 3 == 0 ? "" : ".");
                text += bits % 2 == 0
                            ? ""
                            : "e" + std::to_string(static_cast<int>(random() % 700) - 350);
        }
        taken += compare(text) ? 1 : 0;
    }
    EXPECT_GT(taken, rounds / 2);
}

}  // namespace
