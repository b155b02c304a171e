#include <gtest/gtest.h>
#include <random>
#include <string>

#include "markup/text/EncodingNameTable.h"
#include "markup/text/TextEncoding.h"
#include "tests/markup/Convert.h"

TEST(TextEncoding, KeepsToTheRoom) {
    // Without a measuring call it measures itself; with one, the room is what was measured.
    std::string out = "......";
    EXPECT_EQ(TextEncoding("ISO-8859-1", "\xE9\xE8", 2).PerformConversion(out.data(), "UTF-8"), 4);
    EXPECT_EQ(out, "\xC3\xA9\xC3\xA8..");
    const struct {
        const char* measured;
        const char* converted;
        const char* result;
    } rows[] = {{"US-ASCII//IGNORE", "US-ASCII", "ab."},  // no room for the "?"
                {"US-ASCII//IGNORE", "UTF-8", "ab."},
                {"no-such", "US-ASCII", "ab?"}};
    for (const auto& row : rows) {
        TextEncoding encoding("ISO-8859-1", "ab\xE9", 3);
        encoding.PerformConversion(nullptr, row.measured);
        out = "...";
        const int count = encoding.PerformConversion(out.data(), row.converted);
        EXPECT_EQ(count, out.ends_with('.') ? 2 : 3);
        EXPECT_EQ(out, row.result);
    }
    EXPECT_EQ(TextEncoding("UTF-8", nullptr, 7).PerformConversion(nullptr, "ISO-8859-1"), 0);
    EXPECT_EQ(TextEncoding("UTF-8", "abc", -1).PerformConversion(nullptr, "UTF-16"), 0);
}

// Its converter, whose output was once full, may write the same again without reading on.
TEST(TextEncoding, MeasuresLongTextsOfCombinedCharacters) {
    std::string source;
    for (int i = 0; i < 1500; ++i) {
        source += "\xA4\xAB\xA4\xF7";
    }
    EXPECT_EQ(convert("EUC-JISX0213", "UTF-8", source).size(), 1500U * 9);
}

// Noise through every converter that the system has: both passes agree (checked in convert) and no
// buffer is overrun.
TEST(TextEncoding, BothPassesAgreeOnNoise) {
    std::minstd_rand random(1);
    for (const EncodingName& row : markup::allEncodingNames()) {
        std::string source(5000, '\0');
        for (char& c : source) {
            const auto draw = static_cast<unsigned>(random() >> 8);
            const unsigned byte = draw >> 8;
            c = draw % 3 == 0 ? static_cast<char>(byte) : "a \x1B$B(&~{+-"[byte % 12];
        }
        const std::string name(row.name);
        convert(name, "UTF-8", source);
        convert("UTF-8", name, convert("GB18030", "UTF-8", source));
        convert("UTF-8", name + "//TRANSLIT//IGNORE", source);
    }
}
