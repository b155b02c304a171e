// Both ways a text is copied in runs between the characters that matter. What begins with "&" is
// looked at for as many bytes as a name may have, so that no text takes more than linear time.

#include "markup/text/TextEscape.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>

#include "markup/text/CharClass.h"
#include "markup/text/PredefEntityTable.h"
#include "markup/text/UnicodeCodec.h"

namespace {

using Position = std::string_view::size_type;

/// Bytes between the "&" and the ";" of a reference. The longest names have 8, and so has the last
/// character there is, "#x10FFFF".
constexpr Position longestReferenceName = 9;

constexpr bool isAscii(char c) {
    return static_cast<unsigned char>(c) < 0x80;
}

/// Reads a number as the C library does, so blanks and a sign before the digits and anything behind
/// them pass. 0 stands for no character: no digits, a zero, or a negative number.
std::uint32_t characterReference(std::string_view digits) {
    int base = 10;
    if (digits.starts_with('x') || digits.starts_with('X')) {
        digits.remove_prefix(1);
        base = 16;
    }
    std::array<char, longestReferenceName + 1> terminated{};
    digits.copy(terminated.data(), longestReferenceName);
    const long value = std::strtol(terminated.data(), nullptr, base);
    return value < 0 ? 0 : static_cast<std::uint32_t>(value);
}

/// Appends what begins at the "&" at `pos`: the character of a known reference, else the "&"
/// itself. Returns the position behind what was consumed.
Position appendReference(std::string& out, std::string_view text, Position pos) {
    std::string_view name = text.substr(pos + 1, longestReferenceName + 1);
    name = name.substr(0, name.find(';'));
    std::uint32_t codePoint = 0;
    const bool ended = name.size() <= longestReferenceName && pos + 1 + name.size() < text.size();
    if (ended && std::ranges::all_of(name, isAscii)) {
        codePoint = name.starts_with('#')
                        ? characterReference(name.substr(1))
                        : static_cast<std::uint32_t>(markup::findPredefEntity(name));
    }
    if (codePoint == 0) {
        out += '&';
        return pos + 1;
    }
    std::array<char, 4> utf8;
    out.append(utf8.data(), markup::putUTF8(codePoint, utf8.data()));
    return pos + 1 + name.size() + 1;
}

void appendKeepingWhite(std::string& out, std::string_view text) {
    Position pos = 0;
    while (pos < text.size()) {
        const Position reference = std::min(text.find('&', pos), text.size());
        out.append(text, pos, reference - pos);
        pos = reference == text.size() ? reference : appendReference(out, text, reference);
    }
}

template <class Test>
Position skipWhile(std::string_view text, Position pos, Test test) {
    while (pos < text.size() && test(text[pos])) {
        ++pos;
    }
    return pos;
}

/// Works on the escaped text: white space that a reference yields is never dropped.
void appendTrimmed(std::string& out, std::string_view text, bool collapse) {
    bool begun = false;
    Position pos = 0;
    while (pos < text.size()) {
        const Position gap = pos;
        pos = markup::skipClass(text, pos, ClassSpace);
        if (pos == text.size()) {
            return;
        }
        if (begun && pos > gap) {
            out.append(collapse ? std::string_view(" ") : text.substr(gap, pos - gap));
        }
        begun = true;
        if (text[pos] == '&') {
            pos = appendReference(out, text, pos);
        } else {
            const Position word = pos;
            pos = skipWhile(text, pos,
                            [](char c) { return c != '&' && !markup::isClass(c, ClassSpace); });
            out.append(text, word, pos - word);
        }
    }
}

constexpr bool isLetter(char c) {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}

constexpr bool isReferenceStart(char c) {
    return isLetter(c) || !isAscii(c) || c == '#' || c == ':' || c == '_';
}

constexpr bool isReferenceByte(char c) {
    return isLetter(c) || !isAscii(c) || (c >= '0' && c <= '9') || c == '-' || c == '.' ||
           c == ':' || c == '_';
}

/// Length of the well-formed reference, known or not, that begins with the "&" at `pos`; 0 when
/// none does. The scan stops at the next "&", so scanning from every "&" of a text is linear.
Position referenceLength(std::string_view text, Position pos) {
    const Position first = pos + 1;
    if (first == text.size() || !isReferenceStart(text[first])) {
        return 0;
    }
    const Position end = skipWhile(text, first + 1, isReferenceByte);
    return end < text.size() && text[end] == ';' ? end + 1 - pos : 0;
}

constexpr std::string_view replacementOf(char c) {
    switch (c) {
        case '<':
            return "&lt;";
        case '&':
            return "&amp;";
        case '>':
            return "&gt;";
        case '"':
            return "&quot;";
        default:
            return "&apos;";
    }
}

}  // namespace

void markup::appendUnescaped(std::string& out, std::string_view text, int flags) {
    if ((flags & (DocFlagTrimWhitespace | DocFlagCollapseWhitespace)) == 0) {
        appendKeepingWhite(out, text);
    } else {
        appendTrimmed(out, text, (flags & DocFlagCollapseWhitespace) != 0);
    }
}

std::string UnescapeText(TextArg text, int length, int flags) {
    const std::string_view all = text.view();
    const std::string_view part =
        all.substr(0, length < 0 ? all.find('\0') : static_cast<Position>(length));
    std::string out;
    out.reserve(part.size());
    markup::appendUnescaped(out, part, flags);
    return out;
}

std::string EscapeText(TextArg text, int flags) {
    const std::string_view in = text.view();
    const std::string_view special = (flags & EscapeFlagQuotes) != 0 ? "<&>\"'" : "<&>";
    std::string out;
    out.reserve(in.size() + in.size() / 10 + 1);
    Position pos = 0;
    while (pos < in.size()) {
        const Position next = std::min(in.find_first_of(special, pos), in.size());
        out.append(in, pos, next - pos);
        pos = next;
        if (pos == in.size()) {
            break;
        }
        const bool mayKeep = in[pos] == '&' && (flags & EscapeFlagKeepRefs) != 0;
        const Position kept = mayKeep ? referenceLength(in, pos) : 0;
        out.append(kept > 0 ? in.substr(pos, kept) : replacementOf(in[pos]));
        pos += kept > 0 ? kept : 1;
    }
    return out;
}

std::string x_EncodeCDATASection(TextArg text) {
    constexpr std::string_view endMark = "]]>";
    const std::string_view in = text.view();
    // No section can hold the mark that ends it: where the text has one the section ends within
    // the mark, and another begins with the rest.
    std::string out = "<![CDATA[";
    out.reserve(in.size() + 12);
    Position pos = 0;
    for (Position end; (end = in.find(endMark, pos)) != std::string_view::npos;
         pos = end + endMark.size()) {
        out.append(in, pos, end - pos).append("]]]]><![CDATA[>");
    }
    return out.append(in, pos).append(endMark);
}
