#include <sys/resource.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
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
        EXPECT_EQ(encoding.error(), out.ends_with('.') ? E2BIG : 0);
        EXPECT_EQ(out, row.result);
    }
    EXPECT_EQ(TextEncoding("UTF-8", nullptr, 7).PerformConversion(nullptr, "ISO-8859-1"), 0);
    EXPECT_EQ(TextEncoding("UTF-8", "abc", -1).PerformConversion(nullptr, "UTF-16"), 0);
}

// Noise through every converter that the system has.
TEST(TextEncoding, MakesOfNoiseWhatTheSystemMakesOfIt) {
    std::minstd_rand random(1);
    for (const EncodingName& row : markup::allEncodingNames()) {
        std::string source(5000, '\0');
        for (char& c : source) {
            const auto draw = static_cast<unsigned>(random() >> 8);
            const unsigned byte = draw >> 8;
            c = draw % 3 == 0 ? static_cast<char>(byte) : "a \x1B$B(&~{+-"[byte % 12];
        }
        const std::string name(row.name);
        checkConversion(name, "UTF-8", source);
        checkConversion("UTF-8", name, convert("GB18030", "UTF-8", source));
        convert("UTF-8", name + "//TRANSLIT//IGNORE", source);
    }
}

namespace {

/// Converts with so many free descriptors, then with plenty; 0 when each time the text is right or,
/// without a descriptor, the lack is told. What the system could not load then must not be taken
/// for missing later.
int convertWithDescriptors(rlim_t count) {
    rlimit limit{};
    getrlimit(RLIMIT_NOFILE, &limit);
    const rlim_t plenty = limit.rlim_cur;
    const int lowest = dup(STDERR_FILENO);
    close(lowest);
    for (const rlim_t most : {static_cast<rlim_t>(lowest) + count, plenty}) {
        limit.rlim_cur = most;
        setrlimit(RLIMIT_NOFILE, &limit);
        TextEncoding encoding("EUC-JP", "\xC6\xFC", 2);
        std::string out(3, '.');
        const int length = encoding.PerformConversion(out.data(), "UTF-8");
        const bool isRight = length == 3 && out == "\xE6\x97\xA5" && encoding.error() == 0;
        const bool isTold = length == 0 && encoding.error() == EMFILE &&
                            TextEncoding::converterError("UTF-8", "no-such") == EMFILE;
        if (most == static_cast<rlim_t>(lowest) ? !isTold : !isRight) {
            return 1;
        }
    }
    return TextEncoding::converterError("UTF-8", "no-such") == EINVAL ? 0 : 2;
}

}  // namespace

// In processes of their own, which have not loaded any converter yet.
TEST(TextEncoding, TellsWantOfDescriptorsFromWantOfAConverter) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    for (rlim_t count = 0; count <= 8; ++count) {
        EXPECT_EXIT(std::exit(convertWithDescriptors(count)), testing::ExitedWithCode(0), "");
    }
}
