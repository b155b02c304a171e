// Finds the form of a file by the rules of the document layer, from the bytes alone, so that it can
// be asked of a file that is only going to be written.

#include "tools/eqrecode/Form.h"

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <system_error>

#include "markup/BomTable.h"
#include "markup/Markup.h"

namespace eqrecode {

namespace {

bool hasWideUnits(const std::string& encoding) {
    const int codePage = MarkupDocument::GetEncodingCodePage(encoding);
    return codePage == CodePageUtf16 || codePage == CodePageUtf32;
}

}  // namespace

Form formOf(std::string_view bytes) {
    for (const Bom& bom : bomTable) {
        if (bytes.starts_with(bom.bytes)) {
            return {std::string(bom.encoding), bom.flag};
        }
    }
    std::string declared = declaredEncoding(bytes);
    // A declaration that could be read as bytes is not in units of two or four.
    return {declared.empty() || hasWideUnits(declared) ? "UTF-8" : std::move(declared), 0};
}

Form formFor(const std::string& encoding) {
    constexpr int utf16BigEndian = 1201;
    switch (MarkupDocument::GetEncodingCodePage(encoding)) {
        case CodePageUtf16:
            return {"UTF-16LE", DocFlagUtf16LeFile};
        case utf16BigEndian:
            return {"UTF-16BE", DocFlagUtf16BeFile};
        default:
            return {encoding, 0};
    }
}

std::string declaredEncoding(std::string_view bytes) {
    constexpr std::size_t probeLength = 1024;
    return MarkupDocument::GetDeclaredEncoding(bytes.substr(0, probeLength));
}

std::string_view markOf(const Form& form) {
    const auto* const bom = std::ranges::find(bomTable, form.mark, &Bom::flag);
    return bom == bomTable.end() ? "" : bom->bytes;
}

bool isKnown(const Form& form) {
    const int error = TextEncoding::converterError("UTF-8", form.encoding);
    if (error != 0 && error != EINVAL) {
        throw std::system_error(error, std::generic_category(), form.encoding);
    }
    return error == 0;
}

void declareEncoding(std::string& text, const std::string& encoding) {
    TokenPos target(text, DocFlagIgnoreCase);
    NodePos node;
    const bool isInstruction = target.ParseNode(node) == NodeProcessingInstruction;
    target.next = 2;
    if (!isInstruction || !target.FindName() || !target.Match("xml")) {
        text.insert(0, "<?xml version=\"1.0\" encoding=\"" + encoding + "\"?>\n");
        return;
    }
    TokenPos name(text, DocFlagIgnoreCase, 2);
    const auto end = static_cast<std::size_t>(node.length) - 2;
    TokenPos version = name;
    if (name.FindAttrib("encoding")) {
        // A value without its closing quote runs out of the declaration.
        const auto left = static_cast<std::size_t>(name.left);
        const bool isQuoted = text[left - 1] == '"' || text[left - 1] == '\'';
        text.replace(left, std::min(name.token().size(), end - std::min(left, end)),
                     isQuoted ? encoding : '"' + encoding + '"');
        return;
    }
    // Where the version is, its closing quote included; "standalone" has to come behind.
    std::size_t at = end;
    if (version.FindAttrib("version")) {
        const auto close = static_cast<std::size_t>(version.left) + version.token().size();
        at = close < end && (text[close] == '"' || text[close] == '\'') ? close + 1 : end;
    }
    text.insert(at, " encoding=\"" + encoding + "\"");
}

}  // namespace eqrecode
