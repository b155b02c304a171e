// Cutting names, attribute values and data out of the document text.

#include <algorithm>

#include "markup/Markup.h"
#include "markup/TextEscape.h"
#include "markup/TextScan.h"

std::string_view MarkupDocument::x_Slice(int offset, int length) const {
    return docText_.view().substr(static_cast<std::size_t>(offset),
                                  static_cast<std::size_t>(std::max(length, 0)));
}

/// The name in the start tag of record `pos`: from behind the "<" to a byte that ends names.
std::string_view MarkupDocument::x_TagNameAt(int pos) const {
    const std::string_view text = docText_.view();
    // A record fresh from x_GetFreePos lies nowhere in the text.
    const std::size_t first = std::min(static_cast<std::size_t>(tree_[pos].start) + 1, text.size());
    return text.substr(first, x_SkipName(text, first, ClassName) - first);
}

std::string_view MarkupDocument::x_GetTagNameView(int pos) const {
    return isElement(pos) ? x_TagNameAt(pos) : std::string_view();
}

std::string MarkupDocument::GetTagName() const {
    if (!x_OnOtherNode()) {
        return x_GetTagName(pos_.main);
    }
    int names = 1;
    switch (pos_.nodeType) {
        case NodeText:
        case NodeWhitespace:
            return "#text";
        case NodeCDataSection:
            return "#cdata-section";
        case NodeComment:
            return "#comment";
        case NodeDocumentType:
            names = 2;  // the declaration's keyword, then the root element's name
            break;
        case NodeProcessingInstruction:
        case NodeLoneEndTag:
            break;
        default:
            return {};
    }
    TokenPos token(x_Slice(0, pos_.nodeOffset + pos_.nodeLength), docFlags_, pos_.nodeOffset + 2);
    while (names-- > 0 && token.FindName()) {
    }
    return token.GetTokenText();
}

int MarkupDocument::x_StartTagLength(int pos) const {
    if (!isElement(pos)) {
        return 0;
    }
    const ElemPos& elem = tree_[pos];
    if (static_cast<std::uint32_t>(elem.length) <= ElemPos::startTagMask) {
        return elem.packedStartTagLength();
    }
    // Too long to tell whether the record holds all bits: scan the tag again.
    TokenPos token(docText_.view(), docFlags_, elem.start);
    NodePos node;
    token.ParseNode(node);
    return node.length;
}

std::string MarkupDocument::x_GetData(int pos) const {
    std::string storage;
    const std::string_view data = x_GetDataView(pos, storage);
    return storage.empty() ? std::string(data) : std::move(storage);
}

std::string_view MarkupDocument::x_GetDataView(int pos, std::string& storage) const {
    storage.clear();
    if (pos == pos_.main && x_OnOtherNode()) {
        return storage = x_GetNodeData();
    }
    if (!isElement(pos)) {
        return {};
    }
    const ElemPos& elem = tree_[pos];
    const int tagLength = x_StartTagLength(pos);
    if (tagLength == elem.length || elem.child != 0) {
        return {};
    }
    return x_GetContent(
        x_Slice(elem.start + tagLength, elem.length - tagLength - elem.endTagLength()), storage);
}

std::string MarkupDocument::x_GetNodeData() const {
    const int offset = pos_.nodeOffset;
    const int length = pos_.nodeLength;
    switch (pos_.nodeType) {
        case NodeComment:
            return std::string(x_Slice(offset + 4, length - 7));
        case NodeProcessingInstruction:
            return std::string(x_Slice(offset + 2, length - 4));
        case NodeCDataSection:
            // "<![C]]>" opens a section as well: shorter than the marks, it holds nothing.
            return length < 12 ? std::string() : std::string(x_Slice(offset + 9, length - 12));
        case NodeText: {
            std::string data;
            x_AppendUnescaped(data, x_Slice(offset, length), docFlags_);
            return data;
        }
        case NodeLoneEndTag:
            return std::string(x_Slice(offset + 2, length - 3));
        default:
            return std::string(x_Slice(offset, length));
    }
}

/// The data of a leaf element's content. White space counts when it is all there is, but a run of
/// it between comments or sections is dropped: "<a> </a>" holds " ", "<a> <!--c--></a>" nothing.
std::string_view MarkupDocument::x_GetContent(std::string_view content,
                                              std::string& storage) const {
    const std::size_t mark = x_FindMark(content);
    const bool isTrimmed = hasFlag(DocFlagTrimWhitespace | DocFlagCollapseWhitespace);
    if (mark == content.size() && !isTrimmed) {
        return content;
    }
    if (content.find('<', mark) == std::string_view::npos) {
        x_AppendUnescaped(storage, content, docFlags_);
        return storage;
    }
    TokenPos token(content, docFlags_);
    NodePos node;
    while (token.ParseNode(node) != NodeEndOfText) {
        const std::string_view text = content.substr(static_cast<std::size_t>(node.start),
                                                     static_cast<std::size_t>(node.length));
        if (node.type == NodeText) {
            x_AppendUnescaped(storage, text, docFlags_);
        } else if (node.type == NodeCDataSection && text.size() > 12) {
            storage += text.substr(9, text.size() - 12);
        }
    }
    return storage;
}

/// A cursor behind the "<" of the start tag of record `pos`. The tokenizer and the attribute walk
/// cut a tag into the same tokens, so the walk ends with the tag.
TokenPos MarkupDocument::x_StartTagToken(int pos) const {
    return TokenPos(docText_.view(), docFlags_, tree_[pos].start + 1);
}

std::string MarkupDocument::x_GetAttrib(int pos, TextArg name) const {
    TokenPos token("");
    if (isElement(pos) && pos_.nodeType == NodeElement) {
        token = x_StartTagToken(pos);
    } else if (pos == pos_.main && pos_.nodeType == NodeProcessingInstruction && x_OnOtherNode()) {
        token = TokenPos(docText_.view(), docFlags_, pos_.nodeOffset + 2);
    }
    std::string value;
    if (!name.isNull() && token.FindAttrib(name)) {
        x_AppendUnescaped(value, token.token(), docFlags_);
    }
    return value;
}

bool MarkupDocument::GetNthAttrib(int n, std::string& name, std::string& value) const {
    if (!isElement(pos_.main) || n < 0) {
        return false;
    }
    if (attribWalk_.elem != pos_.main || attribWalk_.number > n) {
        attribWalk_ = {pos_.main, 0, tree_[pos_.main].start + 1};
    }
    TokenPos token(docText_.view(), docFlags_, attribWalk_.priorName);
    std::string found;
    if (!token.FindAttrib(nullptr, n - attribWalk_.number, &found)) {
        return false;
    }
    attribWalk_ = {pos_.main, n, token.priorName};
    name = std::move(found);
    value.clear();
    x_AppendUnescaped(value, token.token(), docFlags_);
    return true;
}

std::string MarkupDocument::GetAttribName(int n) const {
    std::string name;
    std::string value;
    GetNthAttrib(n, name, value);
    return name;
}
