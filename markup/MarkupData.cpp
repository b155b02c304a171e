// Names, attribute values and data are cut out of the document text each time they are asked for:
// records keep only where the tags lie. Within a tag or a content the tokenizer does the cutting;
// it runs on to the end of the text if it is let, but a tag ends where its own tokens end.
//
// Two things are kept because callers ask for one after the other, and each would have to be
// counted from the start again: where the last attribute asked for by number was, and the numbers
// that elements have in paths.

#include <algorithm>
#include <cstdint>
#include <map>

#include "markup/Markup.h"
#include "markup/text/CharClass.h"
#include "markup/text/NameCompare.h"
#include "markup/text/TextEscape.h"

namespace {

/// What a node holds between its marks. "<![C]]>" opens a section as well: shorter than the marks,
/// it holds nothing.
std::string_view inside(std::string_view node, std::size_t opening, std::size_t closing) {
    const bool isWhole = node.size() > opening + closing;
    return isWhole ? node.substr(opening, node.size() - opening - closing) : std::string_view();
}

std::string_view insideOf(std::string_view node, int type) {
    switch (type) {
        case NodeComment:
            return inside(node, 4, 3);  // <!-- -->
        case NodeProcessingInstruction:
            return inside(node, 2, 2);  // <? ?>
        case NodeCDataSection:
            return inside(node, 9, 3);  // <![CDATA[ ]]>
        case NodeLoneEndTag:
            return inside(node, 2, 1);  // </ >
        default:
            return node;
    }
}

/// The number of an element without siblings of its name.
constexpr int onlyOfName = -1;

}  // namespace

/// A piece of the text; a negative length counts as 0.
std::string_view MarkupDocument::slice(int offset, int length) const {
    return docText_.view().substr(static_cast<std::size_t>(offset),
                                  static_cast<std::size_t>(std::max(length, 0)));
}

/// The name in the start tag of record `pos`: from behind the "<" to a byte that ends names.
std::string_view MarkupDocument::tagNameAt(int pos) const {
    const std::string_view text = behindTagMark(pos);
    return text.substr(0, markup::findClass(text, 0, ClassName));
}

std::string_view MarkupDocument::tagNameView(int pos) const {
    return isElement(pos) ? tagNameAt(pos) : std::string_view();
}

std::string MarkupDocument::x_GetPath(int pos) const {
    std::vector<int> elems;
    while (isElement(pos) && !tree_[pos].hasFlag(ElemFlagDeleted)) {
        elems.push_back(pos);
        pos = tree_[pos].parent;
    }
    std::string path;
    for (; !elems.empty(); elems.pop_back()) {
        path.append("/").append(tagNameAt(elems.back()));
        const int number = siblingNumber(elems.back());
        if (number > 0) {
            path.append("[").append(std::to_string(number)).append("]");
        }
    }
    return path;
}

/// The number of record `pos` among the siblings of its name, `onlyOfName` when it has none.
int MarkupDocument::siblingNumber(int pos) const {
    siblingNumbers_.resize(static_cast<std::size_t>(recordCount()));
    const int& number = siblingNumbers_[static_cast<std::size_t>(pos)];
    if (number == 0) {
        numberChildren(tree_[pos].parent);
    }
    return number;
}

/// Numbers all children of `parent`: for one alone they would have to be walked just as far.
void MarkupDocument::numberChildren(int parent) const {
    std::map<std::string, std::vector<int>> elemsOfName;
    for (int pos = tree_[parent].child; pos != 0; pos = tree_[pos].next) {
        const std::string_view name = tagNameAt(pos);
        const bool ignoreCase = hasFlag(DocFlagIgnoreCase);
        elemsOfName[ignoreCase ? markup::foldName(name) : std::string(name)].push_back(pos);
    }
    for (const auto& [name, elems] : elemsOfName) {
        int number = elems.size() == 1 ? onlyOfName : 1;
        for (const int pos : elems) {
            siblingNumbers_[static_cast<std::size_t>(pos)] = number++;
        }
    }
}

std::string MarkupDocument::GetTagName() const {
    switch (isOnOtherNode() ? pos_.nodeType : NodeElement) {
        case NodeElement:
            return x_GetTagName(pos_.main);
        case NodeText:
        case NodeWhitespace:
            return "#text";
        case NodeCDataSection:
            return "#cdata-section";
        case NodeComment:
            return "#comment";
        case NodeProcessingInstruction:
        case NodeLoneEndTag:
            return nodeName(1);
        case NodeDocumentType:
            return nodeName(2);  // behind the declaration's keyword, the root element's name
        default:
            return {};
    }
}

/// The name number `n`, counted from 1, in the current node, which opens with two bytes.
std::string MarkupDocument::nodeName(int n) const {
    TokenPos token(slice(0, pos_.nodeOffset + pos_.nodeLength), docFlags_, pos_.nodeOffset + 2);
    while (n-- > 0 && token.FindName()) {
    }
    return token.GetTokenText();
}

int MarkupDocument::startTagLength(int pos) const {
    if (!isElement(pos)) {
        return 0;
    }
    const ElemPos& elem = tree_[pos];
    if (static_cast<std::uint32_t>(elem.length) <= ElemPos::startTagMask) {
        return elem.packedStartTagLength();
    }
    // Too long to tell whether the record holds all bits: scan the tag again.
    NodePos node;
    tokenAt(elem.start).ParseNode(node);
    return node.length;
}

std::string MarkupDocument::x_GetData(int pos) const {
    std::string storage;
    const std::string_view data = dataView(pos, storage);
    return storage.empty() ? std::string(data) : std::move(storage);
}

std::string_view MarkupDocument::dataView(int pos, std::string& storage) const {
    storage.clear();
    if (pos == pos_.main && isOnOtherNode()) {
        const std::string_view node = slice(pos_.nodeOffset, pos_.nodeLength);
        return pos_.nodeType == NodeText ? unescaped(node, storage) : insideOf(node, pos_.nodeType);
    }
    if (!isElement(pos)) {
        return {};
    }
    const ElemPos& elem = tree_[pos];
    const int tagLength = startTagLength(pos);
    if (tagLength == elem.length || elem.child != 0) {
        return {};
    }
    return contentOf(slice(elem.start + tagLength, elem.length - tagLength - elem.endTagLength()),
                     storage);
}

/// The text itself where unescaping changes nothing, else what it gives, put into `storage`.
std::string_view MarkupDocument::unescaped(std::string_view text, std::string& storage) const {
    const bool isTrimmed = hasFlag(DocFlagTrimWhitespace | DocFlagCollapseWhitespace);
    if (!isTrimmed && text.find('&') == std::string_view::npos) {
        return text;
    }
    markup::appendUnescaped(storage, text, docFlags_);
    return storage;
}

/// The data of a leaf element's content. White space counts when it is all there is, but a run of
/// it between comments or sections is dropped: "<a> </a>" holds " ", "<a> <!--c--></a>" nothing.
std::string_view MarkupDocument::contentOf(std::string_view content, std::string& storage) const {
    if (content.find('<') == std::string_view::npos) {
        return unescaped(content, storage);
    }
    TokenPos token(content, docFlags_);
    NodePos node;
    while (token.ParseNode(node) != NodeEndOfText) {
        const std::string_view text = content.substr(static_cast<std::size_t>(node.start),
                                                     static_cast<std::size_t>(node.length));
        if (node.type == NodeText) {
            markup::appendUnescaped(storage, text, docFlags_);
        } else if (node.type == NodeCDataSection) {
            storage += insideOf(text, node.type);
        }
    }
    return storage;
}

std::string MarkupDocument::x_GetAttrib(int pos, TextArg name) const {
    TokenPos token("");
    if (isElement(pos) && pos_.nodeType == NodeElement) {
        token = tokenAt(tree_[pos].start + 1);
    } else if (pos == pos_.main && pos_.nodeType == NodeProcessingInstruction && isOnOtherNode()) {
        token = tokenAt(pos_.nodeOffset + 2);
    }
    std::string value;
    if (!name.isNull() && token.FindAttrib(name)) {
        markup::appendUnescaped(value, token.token(), docFlags_);
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
    TokenPos token = tokenAt(attribWalk_.priorName);
    std::string found;
    if (!token.FindAttrib(nullptr, n - attribWalk_.number, &found)) {
        return false;
    }
    // Of one number more the walk goes on at this name, of a smaller one it begins anew.
    attribWalk_ = {pos_.main, n, token.priorName};
    name = std::move(found);
    value.clear();
    markup::appendUnescaped(value, token.token(), docFlags_);
    return true;
}

std::string MarkupDocument::GetAttribName(int n) const {
    std::string name;
    std::string value;
    GetNthAttrib(n, name, value);
    return name;
}
