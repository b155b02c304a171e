#include "lint/Printable.h"

#include <locale.h>
#include <wchar.h>

#include <algorithm>
#include <cstdio>

#include "markup/text/UnicodeCodec.h"
#include "markup/text/Utf8Sweep.h"

namespace lint {

namespace {

/// C0, DEL and C1, of which terminals take commands; line separators, spaces that can't be told
/// from others or not be seen, and what makes a line look as if it said something else.
bool isHarmful(int character) {
    const auto lies = [character](int first, int last) {
        return first <= character && character <= last;
    };
    return lies(0, 0x1F) || lies(0x7F, 0xA0) || lies(0x200B, 0x200F) || lies(0x2028, 0x202E) ||
           lies(0x2066, 0x2069) || character == 0xFEFF;
}

std::string escaped(int character) {
    switch (character) {
        case '\t':
            return "\\t";
        case '\n':
            return "\\n";
        case '\r':
            return "\\r";
        default:
            char text[16];
            std::snprintf(text, sizeof text, character < 0x80 ? "\\x%02x" : "\\u%04x", character);
            return text;
    }
}

std::string escapedByte(char byte) {
    char text[16];
    std::snprintf(text, sizeof text, "\\x%02x", static_cast<unsigned char>(byte));
    return text;
}

/// Appends valid UTF-8 with `replace(character)` for what is harmful.
template <class Replace>
void appendValid(std::string& result, std::string_view text, Replace replace) {
    const char* cursor = text.data();
    const char* const end = cursor + text.size();
    while (cursor != end) {
        const char* const start = cursor;
        const int character = DecodeCharUTF8(cursor, end);
        if (isHarmful(character)) {
            result += replace(character);
        } else {
            result.append(start, cursor);
        }
    }
}

template <class Replace, class ReplaceByte>
std::string replaced(std::string_view text, Replace replace, ReplaceByte replaceByte) {
    const auto isOther = [](char c) { return c < ' ' || c > '~'; };
    if (std::ranges::count_if(text, isOther) == 0) {  // nearly always, and counted many at once
        return std::string(text);
    }
    std::string result;
    while (!text.empty()) {
        const std::size_t valid = markup::plainUtf8Length(text);
        appendValid(result, text.substr(0, valid), replace);
        text.remove_prefix(valid);
        if (!text.empty()) {
            result += replaceByte(text.front());
            text.remove_prefix(1);
        }
    }
    return result;
}

}  // namespace

std::string printable(std::string_view text) {
    return replaced(text, escaped, escapedByte);
}

std::string masked(std::string_view text) {
    const auto mask = [](auto) { return '?'; };
    return replaced(text, mask, mask);
}

std::size_t cellsOf(std::string_view text) {
    const auto isOther = [](char c) { return c < ' ' || c > '~'; };
    if (std::ranges::count_if(text, isOther) == 0) {
        return text.size();
    }
    // Characters of East Asia take two cells, accents that combine none.
    static const locale_t unicode = ::newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
    const locale_t before = ::uselocale(unicode);
    std::size_t cells = 0;
    const char* cursor = text.data();
    while (cursor != text.data() + text.size()) {
        const int character = DecodeCharUTF8(cursor, text.data() + text.size());
        cells += static_cast<std::size_t>(std::max(::wcwidth(static_cast<wchar_t>(character)), 0));
    }
    ::uselocale(before);
    return cells;
}

}  // namespace lint
