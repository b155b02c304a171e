#include <gtest/gtest.h>
#include <random>

#include "tests/Script.h"
#include "tests/markup/TextChecks.h"

// Whatever is taken, the system's conversion gives back unchanged: valid and invalid sequences at
// every place of a block.
TEST(Utf8Sweep, TakesWhatTheSystemKeeps) {
    const auto parts = script::split(
        R"(\xC3\xA9|\xE2\x82\xAC|\xF0\x9F\x98\x80|\xC3|\xE2\x82|\xF0\x9F\x98|\x80|\xC0\x80|\0|\xF8)"
        R"(|\xE0\x9F\xBF|\xED\xA0\x80|\xED\x9F\xBF|\xF0\x8F\xBF\xBF|\xF4\x8F\xBF\xBF|\xF4\x90\x80\x80)");
    std::mt19937 random(3);
    for (int round = 0; round < 20000; ++round) {
        std::string text(random() % 200, 'a');
        for (auto n = random() % 3; n > 0; --n) {
            text.insert(random() % (text.size() + 1), parts[random() % parts.size()]);
        }
        checkUtf8(text);
    }
}
