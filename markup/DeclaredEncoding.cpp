// The tokenizer goes over the text as if it were a document: over one node for XML, for HTML from
// the root element to the end of its head. Names are compared without regard to case throughout.

#include "markup/DeclaredEncoding.h"

#include <climits>

#include "markup/TokenPos.h"

namespace {

/// Reads the "encoding" of an XML declaration, "" when it has none; false when there is no
/// declaration at the start of `text`. A value whose quote is not closed in the declaration runs on
/// to the next such quote in the text: this is required, the encoding is then an unknown one.
bool readXmlDeclaration(std::string_view text, std::string& encoding) {
    TokenPos node(text);
    NodePos first;
    TokenPos target(text, DocFlagIgnoreCase, 2);
    TokenPos attributes = target;
    if (node.ParseNode(first) != NodeProcessingInstruction || !target.FindName() ||
        !target.Match("xml")) {
        return false;
    }
    if (attributes.FindAttrib("encoding")) {
        encoding = attributes.token();
    }
    return true;
}

/// Moves to the next start tag; false where the head or the text ends, or can't be read.
bool nextElement(TokenPos& token, NodePos& node) {
    while (token.ParseNode(node) != NodeSyntaxError && node.type != NodeEndOfText) {
        if (node.type == NodeElement) {
            return true;
        }
        if (node.type == NodeEndTag && token.Match("head")) {
            return false;
        }
    }
    return false;
}

/// The name behind "charset=" in a content type, "" when there is none.
std::string charsetOf(std::string_view contentType) {
    TokenPos token(contentType, DocFlagIgnoreCase);
    while (token.position() < contentType.size()) {
        if (!token.FindName()) {
            ++token.next;  // a byte that ends names
        } else if (token.Match("charset")) {
            TokenPos value = token;
            const bool hasValue = !value.FindName() && value.position() < contentType.size() &&
                                  contentType[value.position()] == '=';
            ++value.next;
            if (hasValue && value.FindName()) {
                return value.GetTokenText();
            }
        }
    }
    return {};
}

/// The character set that a meta element gives, "" unless it gives the content type.
std::string charsetOfMeta(std::string_view text, const NodePos& meta) {
    TokenPos type(text, DocFlagIgnoreCase, meta.start + 1);
    TokenPos content = type;
    const bool givesType = type.FindAttrib("http-equiv") && type.Match("Content-Type");
    return givesType && content.FindAttrib("content") ? charsetOf(content.token()) : "";
}

}  // namespace

std::string markup::declaredEncoding(std::string_view text) {
    text = text.substr(0, INT_MAX);
    std::string encoding;
    if (readXmlDeclaration(text, encoding)) {
        return encoding;
    }
    TokenPos token(text, DocFlagIgnoreCase);
    NodePos node;
    if (!nextElement(token, node) || !token.Match("html")) {
        return {};
    }
    while (encoding.empty() && nextElement(token, node)) {
        if (token.Match("meta")) {
            encoding = charsetOfMeta(text, node);
        }
    }
    return encoding;
}
