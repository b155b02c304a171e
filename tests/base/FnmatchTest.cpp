#include <fnmatch.h>

#include <gtest/gtest.h>
#include <random>
#include <string>
#include <string_view>

#include "base/fnmatch.h"

TEST(Fnmatch, TriesUnclosedSetsOnce) {
    const std::string open(20000, '[');
    EXPECT_EQ(vek::fnmatch(open.c_str(), open.c_str(), 0), 0);
}

// The system's matcher agrees but for named classes, a "/" in a set, and an unended escape or
// range.
TEST(Fnmatch, AgreesWithTheSystemLibrary) {
    std::mt19937 random(1);
    const auto text = [&](std::string_view alphabet, std::size_t maxLength) {
        std::string result(random() % (maxLength + 1), ' ');
        for (char& c : result) {
            c = alphabet[random() % alphabet.size()];
        }
        return result;
    };
    int matches = 0;
    for (int round = 0; round < 300000; ++round) {
        const int flags = static_cast<int>(random() % 8);
        const std::string pattern = text("ab/.***?[[]]!-\\", 8), string = text("ab/.]-\\[", 5);
        const std::size_t set = pattern.find('[');
        if (pattern.ends_with('\\') || pattern.ends_with('-') ||
            pattern.find("[.") != std::string::npos ||
            (set != std::string::npos && pattern.find('/', set) != std::string::npos)) {
            continue;
        }
        const int expected = ::fnmatch(pattern.c_str(), string.c_str(), flags);
        matches += expected == 0;
        ASSERT_EQ(vek::fnmatch(pattern.c_str(), string.c_str(), flags), expected)
            << pattern << " against " << string << " flags " << flags;
    }
    EXPECT_GT(matches, 5000);
}
