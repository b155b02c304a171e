// Names are compared byte by byte in whatever encoding they are. Folding case is safe for ASCII
// only, and only as long as no byte of another character has come: behind one, what looks like a
// letter may be the second byte of a character of two.

#include "markup/text/NameCompare.h"

namespace {

constexpr int signedByte(char c) {
    return static_cast<signed char>(c);
}

}  // namespace

int x_StrNCmp(const char* a, const char* b, int n, bool ignoreCase) {
    bool fold = ignoreCase;
    for (int i = 0; i < n; ++i) {
        if (a[i] == b[i]) {
            fold = fold && signedByte(a[i]) >= 0;
        } else if (!fold || markup::toLower(a[i]) != markup::toLower(b[i])) {
            return signedByte(a[i]) - signedByte(b[i]);
        }
    }
    return 0;
}

bool markup::namesEqual(std::string_view a, std::string_view b, bool ignoreCase) {
    if (a.size() != b.size()) {
        return false;
    }
    return ignoreCase ? x_StrNCmp(a.data(), b.data(), static_cast<int>(a.size()), true) == 0
                      : a == b;
}

std::string markup::foldName(std::string_view name) {
    std::string folded(name);
    for (char& c : folded) {
        if (signedByte(c) < 0) {
            break;
        }
        c = toLower(c);
    }
    return folded;
}

int x_Hash(const char* text, int size) {
    if (text == nullptr || size < 1) {
        return 0;
    }
    return static_cast<int>(markup::byteSum(text, false) % static_cast<unsigned>(size));
}
