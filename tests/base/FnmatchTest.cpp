#include <gtest/gtest.h>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "base/fnmatch.h"

namespace {

// A slow and plain model: every way to divide the string is tried.
struct Model {
    int flags;

    // Takes one byte, perhaps escaped, off the front of p.
    unsigned char take(std::string_view& p) const {
        p.remove_prefix(p[0] == '\\' && !(flags & 2) && p.size() > 1 ? 1 : 0);
        const char c = p[0];
        p.remove_prefix(1);
        return static_cast<unsigned char>(c);
    }
    // Takes a set and its "]" off p, which begins behind "["; false when it is not closed.
    bool takeSet(std::string_view& p, unsigned char c, bool& matches) const {
        const bool negated = p.starts_with('!') || p.starts_with('^');
        p.remove_prefix(negated);
        matches = false;
        for (bool first = true; first || !p.starts_with(']'); first = false) {
            if (p.empty()) {
                return false;
            }
            const unsigned char low = take(p);
            const bool range = p.size() > 1 && p[0] == '-' && p[1] != ']';
            p.remove_prefix(range);
            const unsigned char high = range ? take(p) : low;
            matches = matches || (low <= c && c <= high);
        }
        p.remove_prefix(1);
        matches = matches != negated;
        return true;
    }
    bool match(std::string_view p, std::string_view s, char previous) const {
        if (p.empty() || (s.empty() && p[0] != '*')) {
            return p.empty() && s.empty();
        }
        const char c = s.empty() ? '\0' : s[0];
        const bool start = previous == '\0' || ((flags & 1) && previous == '/');
        const bool leading = c == '.' && start && (flags & 4);
        const bool wild = c != '\0' && !leading && !(c == '/' && (flags & 1));
        const auto rest = [&](std::string_view next) { return match(next, s.substr(1), c); };
        if (p[0] == '*') {
            return !leading && (match(p.substr(1), s, previous) || (wild && rest(p)));
        }
        std::string_view behind = p.substr(1);
        bool inSet = p[0] == '?';
        if (inSet || (p[0] == '[' && takeSet(behind, static_cast<unsigned char>(c), inSet))) {
            return wild && inSet && rest(behind);
        }
        return take(p) == static_cast<unsigned char>(c) && rest(p);
    }
};

}  // namespace

TEST(Fnmatch, Rules) {
    using vek::fnmatch;
    EXPECT_EQ(
        (std::vector<int>{fnmatch("*.xml", ".x.xml", 4), fnmatch("*.xml", ".x.xml", 0),
                          fnmatch("a", "a", 8), fnmatch("a", "a", -1), fnmatch(nullptr, "", 0),
                          fnmatch("", nullptr, 0), fnmatch("\\.b", ".b", 4),
                          fnmatch("[.]b", ".b", 4), fnmatch("[c-a]", "b", 0),
                          fnmatch("[^]a]", "]", 0), fnmatch("[\x80-\xFF]", "\xE9", 0)}),
        (std::vector<int>{1, 0, -1, -1, 0, 0, 0, 1, 1, 1, 0}));
    // Trying every division of such strings would not end.
    const char* const stars = "*a*a*a*a*a*a*a*a*a*a*a*a*a*a*a*a*a*a*a*a*a*a*a*a*a*a*ab";
    EXPECT_EQ(fnmatch(stars, std::string(2000, 'a').c_str(), 0), 1);
    const std::string open(20000, '[');
    EXPECT_EQ(fnmatch(open.c_str(), open.c_str(), 0), 0);
}

TEST(Fnmatch, AgreesWithTheModel) {
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
        const bool expected = Model{flags}.match(pattern, string, '\0');
        matches += expected;
        ASSERT_EQ(vek::fnmatch(pattern.c_str(), string.c_str(), flags), expected ? 0 : 1)
            << pattern << " against " << string << " flags " << flags;
    }
    EXPECT_GT(matches, 5000);
}
