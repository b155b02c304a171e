// The fast reader of vectors against strtod: every piece has to come out to the same bits.

#include <algorithm>
#include <array>
#include <bit>
#include <cstdlib>
#include <gtest/gtest.h>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "converter/numbers/VectorReader.h"

namespace {

using Pieces = std::vector<std::string>;

/// What strtod makes of the pieces of a text against what the reader makes of them. The text lies
/// in a block of just its size, so that a sanitizer sees every byte read beyond.
void compare(const Pieces& pieces) {
    std::string text;
    for (const std::string& piece : pieces) {
        text += (text.empty() ? "" : " ") + piece;
    }
    const std::vector<char> memory(text.begin(), text.end());
    VectorReader reader({memory.data(), memory.size()});
    VectorReader::Batch batch;
    std::size_t next = 0;
    while (const std::size_t count = reader.read(batch)) {
        for (std::size_t i = 0; i < count; ++i, ++next) {
            const double wanted = std::strtod(pieces.at(next).c_str(), nullptr);
            ASSERT_EQ(std::bit_cast<std::uint64_t>(batch[i]), std::bit_cast<std::uint64_t>(wanted))
                << pieces[next] << " in " << text.substr(0, 1000);
        }
    }
    EXPECT_EQ(next, pieces.size()) << text.substr(0, 1000);
}

TEST(VectorReader, ReadsWhateverStrtodReads) {
    // Cut at each "|".
    std::istringstream all(
        "0|-0|+1|1.|.5|-.5|00|1e5|1E-05|1.5e+05|1.5E-05|1e+5|1e0005|0e9999|12345678|"
        "1234567.8|12345678.9|512|1e22|1e23|8.5e-7|e5|1e|1e+|1.5.5|1-|--1|+-1|0x1p3|inf|"
        "-infinity|nan|1e00005|1\n2|\t7|1,5|1e400|-1e400|1e-400|4.9e-324|1.5e|1.5e+0x|"
        "1.5e*05|1.5e/05|1.5e)05|1.5e+:0|1.5e+0:|1:2|/1|.|-|-.|.e+05|-e+05|e+05||1.5f+05|"
        "1.5%+05|1..5|.1.5|1.\x80"
        "|-12.5\xB0"
        "|0.1234567890123456|1.2345678901234567|"
        "123.45678901234567|-0.99656359855631216|0.099656359855631216|-123.4567890123456|"
        "9007199254740993|1234567890123456789|12345678901234567890|0.1234567890123456789|"
        "-1.23456789012345678e-07|.1234567890123456789e-10|1234567890123456.789|"
        "12345678901234567.89e+03|2.2250738585072014e-308|0.00000000000000000001|"
        "1.0000000000000000000e+00|12345678901234567890.5|");
    Pieces pieces;
    for (std::string piece; std::getline(all, piece, '|');) {
        pieces.push_back(piece);
    }
    compare(pieces);
    for (const std::string& piece : pieces) {
        // By itself, at every place of a block, near to and far from the ends of the text, and with
        // each of its bytes replaced.
        compare({piece + "1"});
        for (std::size_t shift = 0; shift < 80; ++shift) {
            const std::string first(shift + 1, '0');
            compare({first, piece, "7"});
            compare({std::string(90, '0'), first, piece, std::string(shift % 7 + 85, '9')});
        }
        std::string changed = piece + "0";
        for (std::size_t i = 0; i < changed.size(); ++i) {
            const char kept = std::exchange(changed[i], "9-.eE:/x"[i % 8]);
            compare({changed, "1", changed});
            changed[i] = kept;
        }
    }
}

TEST(VectorReader, CutsAtEachSpace) {
    const std::string text = " 1  2 ";
    VectorReader reader(text);
    VectorReader::Batch batch;
    ASSERT_EQ(reader.read(batch), 4U);
    EXPECT_EQ((std::array{batch[0], batch[1], batch[2], batch[3]}), (std::array{0., 1., 0., 2.}));
    EXPECT_EQ(reader.read(batch), 0U);
    EXPECT_EQ(VectorReader("").read(batch), 0U);
}

/// A number of one of the kinds that are hard to read, chosen by `bits`.
std::string generated(std::mt19937_64& random, std::uint64_t bits) {
    static const char* const formats[] = {"%.6g", "%.9E", "%.17g", "%.18e", "%.0f", "%.3f"};
    char text[400];
    const auto print = [&text](const char* format, double value) {
        return std::string(
            text, static_cast<std::size_t>(std::snprintf(text, sizeof text, format, value)));
    };
    switch (bits % 8) {
        case 0:  // any double, infinities and subnormals among them
            return print(formats[bits / 8 % 4], std::bit_cast<double>(random()));
        case 1: {  // magnitudes that files hold
            const std::uint64_t exponent = 1023 - 40 + bits / 64 % 80;
            return print(formats[bits / 8 % 6],
                         std::bit_cast<double>((random() & 0x800FFFFFFFFFFFFF) | exponent << 52));
        }
        case 2: {  // half way between two doubles, and next to it
            const std::uint64_t half = ((random() >> 11) | std::uint64_t{1} << 53) | 1;
            return std::to_string((half << (bits / 8 % 10)) + bits / 128 % 3 - 1);
        }
        default: {  // 1 to 25 digits, a point anywhere, an exponent
            std::string digits(1 + bits / 8 % 25, '0');
            std::uint64_t rest = random();
            for (char& digit : digits) {
                digit = static_cast<char>('0' + rest % 10);
                rest = rest / 10 + (rest << 60);
            }
            if (bits % 3 != 0) {
                digits.insert(bits / 256 % (digits.size() + 1), ".");
            }
            switch (bits / 16384 % 4) {
                case 0:
                    return digits + "e" + std::to_string(static_cast<int>(random() % 700) - 350);
                case 1:
                    return digits + (bits % 2 == 0 ? "E-0" : "e+1") +
                           static_cast<char>('0' + rest % 10);
                default:
                    return (bits % 5 == 0 ? "-" : "") + digits;
            }
        }
    }
}

TEST(VectorReader, AgreesWithStrtod) {
    std::mt19937_64 random(20261121);
    Pieces pieces(1000);
    for (int i = 0; i < 400 && !HasFatalFailure(); ++i) {
        for (std::string& piece : pieces) {
            piece = generated(random, random());
        }
        compare(pieces);
    }
}

}  // namespace
