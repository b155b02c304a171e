#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <gtest/gtest.h>
#include <random>
#include <string>

#include "markup/text/EncodingNameTable.h"
#include "markup/text/TextEncoding.h"
#include "tests/markup/Limits.h"
#include "tests/markup/TextChecks.h"

// Noise through every converter that the system has.
TEST(TextEncoding, MakesOfNoiseWhatTheSystemMakesOfIt) {
    std::mt19937 random(1);
    for (const EncodingName& row : markup::allEncodingNames()) {
        std::string source(5000, '\0');
        for (char& c : source) {
            c = random() % 3 == 0 ? static_cast<char>(random()) : "a \x1B$B(&~{+-"[random() % 12];
        }
        const std::string name(row.name);
        checkConversion(name, "UTF-8", source);
        checkConversion("UTF-8", name, convert("GB18030", "UTF-8", source));
        convert("UTF-8", name + "//TRANSLIT//IGNORE", source);
    }
}

// A source that is given back while it is read, here with a pair of surrogates at the end of a part
// of it, makes the same text.
TEST(TextEncoding, GivesBackTheSourceThatItReads) {
    constexpr int length = (1 << 21) + 1;
    Pages block(std::size_t{length} * 2, Pages::huge);
    auto* const source = reinterpret_cast<unsigned short*>(block.data());
    *std::fill_n(source, length - 2, 'x') = 0xD83D;
    source[length - 1] = 0xDE00;
    TextEncoding encoding("UTF-16", source, length);
    encoding.ConsumeSource(block);
    std::string out(static_cast<std::size_t>(encoding.PerformConversion(nullptr, "UTF-8")), '\0');
    encoding.PerformConversion(out.data(), nullptr);
    EXPECT_TRUE(out.ends_with("x\xF0\x9F\x98\x80") && source[0] == 0);
}

// In processes of their own, which have not loaded any converter yet, with so many free descriptors
// and then with plenty: while there is none, the lack is told. What the system could not load then
// is not missing later.
TEST(TextEncoding, TellsWantOfDescriptorsFromWantOfAConverter) {
    const auto convertWith = [](int count) {
        for (const int most : {count, -1}) {
            limitTo(RLIMIT_NOFILE, most);
            TextEncoding encoding("EUC-JP", "\xC6\xFC", 2);
            std::string out = "...";
            encoding.PerformConversion(out.data(), "UTF-8");
            const std::string wanted = most == 0 ? "..." : "\xE6\x97\xA5";
            if (out != wanted || encoding.error() != (most == 0 ? EMFILE : 0)) {
                std::exit(1);
            }
        }
        std::exit(TextEncoding::converterError("no-such", "UTF-8") == EINVAL ? 0 : 2);
    };
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    for (int count = 0; count <= 8; ++count) {
        EXPECT_EXIT(convertWith(count), testing::ExitedWithCode(0), "");
    }
}
