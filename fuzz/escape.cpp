// Escaping, unescaping and CDATA sections: each undoes the other.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "fuzz/Check.h"
#include "fuzz/FuzzInput.h"
#include "markup/Markup.h"
#include "markup/text/PredefEntityTable.h"
#include "markup/text/TextEscape.h"
#include "markup/text/UnicodeCodec.h"

namespace {

constexpr std::string_view blanks = " \n\t\r";

std::string unescaped(std::string_view text, int flags = 0) {
    std::string out;
    markup::appendUnescaped(out, text, flags);
    return out;
}

/// The character of the reference whose name is given, 0 for none.
std::uint32_t characterOf(const std::string& name) {
    if (!name.starts_with('#')) {
        return static_cast<std::uint32_t>(markup::findPredefEntity(name));
    }
    const bool isHex = name.size() > 1 && (name[1] == 'x' || name[1] == 'X');
    const long value = std::strtol(name.c_str() + (isHex ? 2 : 1), nullptr, isHex ? 16 : 10);
    return value > 0 ? static_cast<std::uint32_t>(value) : 0;
}

/// What unescaping must give: a reference is "&", up to 9 ASCII bytes and ";".
std::string model(std::string_view text) {
    std::string out;
    for (std::size_t at = 0; at < text.size(); ++at) {
        const std::size_t end = text.find(';', at);
        const bool isReference = text[at] == '&' && end != std::string_view::npos && end - at <= 10;
        const std::string name(isReference ? text.substr(at + 1, end - at - 1)
                                           : std::string_view());
        const bool isAscii = std::all_of(name.begin(), name.end(), [](char c) { return c >= 0; });
        const std::uint32_t character = isReference && isAscii ? characterOf(name) : 0;
        char bytes[4];
        int length = 0;
        if (character == 0) {
            out += text[at];
        } else {
            EncodeCharUTF8(static_cast<int>(character), bytes, length);
            out.append(bytes, static_cast<std::size_t>(length));
            at = end;
        }
    }
    return out;
}

/// Without blanks at the ends and, if so wished, with one space for each run of them.
std::string trimmed(std::string_view text, bool collapse) {
    std::string out;
    std::string gap;
    for (const char c : text) {
        if (blanks.find(c) != std::string_view::npos) {
            gap = collapse ? " " : gap + c;
            continue;
        }
        out.append(out.empty() ? "" : gap) += c;
        gap.clear();
    }
    return out;
}

void checkUnescaping(std::string_view text) {
    checkSame(unescaped(text), model(text), "references are replaced");
    checkSame(unescaped(text, DocFlagTrimWhitespace), unescaped(trimmed(text, false)), "trimming");
    if (text.find('&') ==
        std::string_view::npos) {  // else blanks in a reference count for its length
        checkSame(unescaped(text, DocFlagCollapseWhitespace), trimmed(text, true), "collapsing");
    }
    const int length = static_cast<int>(text.size());
    checkSame(UnescapeText(text, length, 0), unescaped(text), "a length is kept to");
    checkSame(UnescapeText(text, -1, 0), unescaped(text.substr(0, text.find('\0'))),
              "up to the NUL");
}

void checkEscaping(std::string_view text, int flags) {
    const std::string escaped = EscapeText(text, flags);
    const std::string_view special = (flags & EscapeFlagQuotes) != 0 ? "<>\"'" : "<>";
    check(escaped.find_first_of(special) == std::string::npos,
          "nothing stays that has to be escaped");
    if ((flags & EscapeFlagKeepRefs) != 0) {
        checkSame(EscapeText(escaped, flags), escaped, "what is escaped keeps its references");
    } else {
        checkSame(unescaped(escaped), text, "unescaping undoes escaping");
    }
}

/// The text as attribute, as leaf and as CDATA sections of a document.
void checkDocument(std::string_view text) {
    const std::string cdata = x_EncodeCDATASection(text);
    MarkupDocument document;
    check(document.SetDoc("<a b=\"" + EscapeText(text, EscapeFlagQuotes) + "\">" +
                          EscapeText(text, 0) + "</a>"),
          "an escaped text is well-formed");
    document.FindElem("a");
    checkSame(document.GetAttrib("b"), text, "an attribute reads back");
    checkSame(document.GetData(), text, "a leaf reads back");
    check(document.SetDoc("<a>" + cdata + "</a>"), "a CDATA section is well-formed");
    document.FindElem("a");
    checkSame(document.GetData(), text, "a CDATA section reads back");
    document.IntoElem();
    std::string all;
    while (document.FindNode(NodeCDataSection) != 0) {
        all += document.GetData();
    }
    checkSame(all, text, "the nodes of a CDATA section read back");
}

}  // namespace

/// Flags of escaping, a text.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzInput in(data, size);
    const unsigned choice = in.byte();
    const ExactCopy text(in.rest());
    checkUnescaping(text.view());
    checkEscaping(text.view(), ((choice & 1) != 0 ? EscapeFlagKeepRefs : 0) |
                                   ((choice & 2) != 0 ? EscapeFlagQuotes : 0));
    checkDocument(text.view());
    return 0;
}
