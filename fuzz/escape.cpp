// Escaping, unescaping and CDATA sections: each undoes the other.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "fuzz/FuzzInput.h"
#include "markup/Markup.h"
#include "markup/text/PredefEntityTable.h"
#include "markup/text/TextEscape.h"
#include "markup/text/UnicodeCodec.h"
#include "tests/Require.h"

namespace {

/// The character of the reference that a text begins with: "&", up to 9 ASCII bytes and ";"; 0 when
/// there is none.
long characterOf(std::string_view text) {
    const std::string name(text.substr(1, std::min(text.find(';'), text.size()) - 1));
    if (text[0] != '&' || name.empty() || name.size() > std::min<std::size_t>(9, text.size() - 2) ||
        std::any_of(name.begin(), name.end(), [](char c) { return (c & 0x80) != 0; })) {
        return 0;
    }
    const bool isHex = name.starts_with("#x") || name.starts_with("#X");
    const long number = std::strtol(name.c_str() + (isHex ? 2 : 1), nullptr, isHex ? 16 : 10);
    return name[0] == '#' ? std::max(number, 0L) : markup::findPredefEntity(name);
}

/// What unescaping must give, a reference or a byte at a time.
std::string model(std::string_view text, int flags) {
    std::string out, gap;
    while (!text.empty()) {
        const long character = characterOf(text);
        if (flags != 0 && std::string_view(" \n\t\r").find(text[0]) < 4) {
            gap = flags == DocFlagTrimWhitespace ? gap + text[0] : " ";
        } else {
            char bytes[4] = {text[0]};
            int length = 0;
            EncodeCharUTF8(static_cast<int>(character), character == 0 ? nullptr : bytes, length);
            out.append(out.empty() ? "" : gap).append(bytes, static_cast<std::size_t>(length));
            gap.clear();
        }
        text.remove_prefix(character == 0 ? 1 : text.find(';') + 1);
    }
    return out;
}

/// The text as attribute, as leaf and as CDATA sections of a document.
void checkDocument(std::string_view text) {
    MarkupDocument document;
    document.SetDoc("<a b=\"" + EscapeText(text, EscapeFlagQuotes) + "\"><c>" +
                    EscapeText(text, 0) + "</c><d>" + x_EncodeCDATASection(text) + "</d></a>");
    require(document.IsWellFormed() && document.FindElem("a"), "it is well-formed");
    requireSame(document.GetAttrib("b"), text, "an attribute reads back");
    require(document.IntoElem() && document.FindElem("c"), "the leaf is there");
    requireSame(document.GetData(), text, "a leaf reads back");
    require(document.FindElem("d"), "the sections are there");
    requireSame(document.GetData(), text, "a CDATA section reads back");
    document.IntoElem();
    std::string all;
    while (document.FindNode(NodeCDataSection) != 0) {
        all += document.GetData();
    }
    requireSame(all, text, "the nodes of a CDATA section read back");
}

}  // namespace

/// A text.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text = FuzzInput(data, size).rest();
    for (const int flags : {0, DocFlagTrimWhitespace, DocFlagCollapseWhitespace}) {
        requireSame(UnescapeText(text, static_cast<int>(size), flags), model(text, flags),
                    "references are replaced, and blanks as wished");
    }
    const std::string kept = EscapeText(text, EscapeFlagKeepRefs);
    requireSame(EscapeText(kept, EscapeFlagKeepRefs), kept, "what is escaped keeps its references");
    checkDocument(text);
    return 0;
}
