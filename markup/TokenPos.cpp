// The second byte of a node tells what it is, and its end is looked for from there on: for most
// nodes by one search for their terminator. Tags are the exception, since a ">" in quotes does not
// end them: they are cut into tokens by the same function that the walk over their attributes uses,
// so that both always agree on what is quoted.
//
// Nothing fails, and tokens are views: what is wrong becomes a result of its node, and the cursor
// moves on, past at least one byte.

#include "markup/TokenPos.h"

#include <algorithm>

#include "markup/text/CharClass.h"
#include "markup/text/NameCompare.h"

namespace {

constexpr std::size_t npos = std::string_view::npos;

constexpr bool isQuote(char c) {
    return c == '"' || c == '\'';
}

}  // namespace

std::size_t TokenPos::position() const {
    return next < 0 ? text_.size() : std::min(static_cast<std::size_t>(next), text_.size());
}

void TokenPos::setToken(std::size_t first, std::size_t end) {
    left = static_cast<int>(first);
    right = static_cast<int>(end) - 1;
}

std::string_view TokenPos::token() const {
    const auto first = static_cast<std::size_t>(left);
    const auto last = static_cast<std::size_t>(right);  // wraps for an empty token at 0, and back
    return text_.substr(first, last + 1 - first);
}

bool TokenPos::Match(TextArg name) const {
    return markup::namesEqual(token(), name.view(), (flags_ & DocFlagIgnoreCase) != 0);
}

bool TokenPos::FindName() {
    flags_ &= ~TokenFlagQuoted;
    const std::size_t first = markup::skipClass(text_, position(), ClassSpace);
    const std::size_t end = markup::findClass(text_, first, ClassName);
    // At a byte that ends names the cursor stays, for the caller to pass over or not.
    setToken(first, end);
    next = static_cast<int>(end);
    return end > first;
}

/// Moves to the next token inside a tag: a quoted run, the unquoted value after "=" or a name; a
/// byte that ends names is a token by itself. False at the end of the text.
bool TokenPos::nextTagToken(bool afterEqual) {
    flags_ &= ~TokenFlagQuoted;
    const std::size_t first = markup::skipClass(text_, position(), ClassSpace);
    next = static_cast<int>(first);
    if (first == text_.size()) {
        return false;
    }
    if (isQuote(text_[first])) {
        flags_ |= TokenFlagQuoted;
        const std::size_t end = std::min(text_.find(text_[first], first + 1), text_.size());
        setToken(first + 1, end);
        next = static_cast<int>(std::min(end + 1, text_.size()));
        return true;
    }
    const CharClass stop = afterEqual ? ClassAttrValue : ClassAttrName;
    const std::size_t end = markup::findClass(text_, first, stop);
    setToken(first, end == first && !afterEqual ? end + 1 : end);
    next = right + 1;
    return true;
}

/// Moves to the next name of an attribute, past quoted runs that stand in its place and values
/// without a name. False where the tag or the text ends.
bool TokenPos::nextAttribName() {
    bool afterEqual = false;
    while (nextTagToken(afterEqual)) {
        const char first = afterEqual ? '\0' : firstOfUnquoted();
        if (first == '>' || first == '/' || first == '?') {
            return false;
        }
        if (first != '\0' && first != '=') {
            return true;
        }
        afterEqual = first == '=';
    }
    return false;
}

/// Moves from the name of an attribute to its value, an empty token when it has none.
void TokenPos::moveToValue() {
    const bool hasValue = nextTagToken(false) && firstOfUnquoted() == '=' && nextTagToken(true);
    if (!hasValue) {
        setToken(position(), position());
    }
}

bool TokenPos::FindAttrib(TextArg name, int index, std::string* attribName) {
    if (!nextTagToken(false)) {  // the tag's own name, whatever it is
        return false;
    }
    priorName = left;
    for (int number = 0; nextAttribName(); ++number) {
        if (name.isNull() ? number == index : Match(name)) {
            if (attribName != nullptr) {
                *attribName = token();
            }
            moveToValue();
            return true;
        }
        priorName = left;
    }
    return false;
}

int TokenPos::ParseNode(NodePos& node) {
    node.results.clear();
    node.flags = 0;
    const std::size_t start = position();
    node.start = static_cast<int>(start);
    if (start == text_.size()) {
        return endNode(node, NodeEndOfText, start);
    }
    if (text_[start] != '<') {
        return parseRun(node);
    }
    if (start + 1 == text_.size()) {
        return unterminated(node, "tag");
    }
    const char kind = text_[start + 1];
    if (markup::isClass(kind, ClassNameStart)) {
        return parseTag(node, NodeElement);
    }
    switch (kind) {
        case '/':
            return parseTag(node, NodeEndTag);
        case '?':
            return parseDelimited(node, NodeProcessingInstruction, 2, "?>",
                                  "processing_instruction");
        case '!':
            return parseDeclaration(node);
        default:
            return parseSyntaxError(node, ResultFirstTagSyntax, start + 1);
    }
}

/// Ends the node before `end` and goes on there.
int TokenPos::endNode(NodePos& node, int type, std::size_t end) {
    node.type = type;
    node.length = static_cast<int>(end) - node.start;
    next = static_cast<int>(end);
    return type;
}

/// Scans up to the next "<": text, or white space where there is nothing else.
int TokenPos::parseRun(NodePos& node) {
    const std::size_t start = markup::skipClass(text_, static_cast<std::size_t>(next), ClassSpace);
    if (start == text_.size() || text_[start] == '<') {
        return endNode(node, NodeWhitespace, start);
    }
    const std::size_t end = text_.find('<', start);
    return endNode(node, NodeText, end == npos ? text_.size() : end);
}

/// Scans a start or end tag to the first ">" that is a token of its own.
int TokenPos::parseTag(NodePos& node, int type) {
    const std::size_t name = static_cast<std::size_t>(node.start) + (type == NodeElement ? 1 : 2);
    const std::size_t firstEnd = markup::findClass(text_, name, ClassAttrName);
    if (firstEnd < text_.size() && text_[firstEnd] == '>') {  // as in most tags
        setToken(name, firstEnd);
        return endNode(node, type, firstEnd + 1);
    }
    // The name that pairs tags may run on behind the first token: "<a=1>" is called "a=1".
    const std::size_t nameEnd = markup::findClass(text_, firstEnd, ClassTagName);
    next = static_cast<int>(firstEnd);
    std::size_t valueEnd = 0;
    bool afterEqual = false;
    while (nextTagToken(afterEqual)) {
        const char first = afterEqual ? '\0' : firstOfUnquoted();
        if (first == '>') {
            node.flags =
                type == NodeElement && isEmptyTag(position(), valueEnd) ? NodeFlagEmpty : 0;
            setToken(name, nameEnd);
            return endNode(node, type, position());
        }
        valueEnd = afterEqual ? position() : valueEnd;
        afterEqual = first == '=';
    }
    return unterminated(node, type == NodeElement ? "start_tag" : "end_tag");
}

/// A "/" before the ">" makes an element empty, unless the "/" belongs to an unquoted value
/// ("<a b=c/>"); even then it does after white space or a quote.
bool TokenPos::isEmptyTag(std::size_t tagEnd, std::size_t lastValueEnd) const {
    const char before = text_[tagEnd - 3];
    return text_[tagEnd - 2] == '/' &&
           (lastValueEnd != tagEnd - 1 || markup::isClass(before, ClassSpace) || isQuote(before));
}

/// Scans what begins with "<!": the next two bytes tell what it is.
int TokenPos::parseDeclaration(NodePos& node) {
    const auto start = static_cast<std::size_t>(node.start);
    const std::string_view rest = text_.substr(start + 2, 2);
    if (rest.empty() || rest == "-" || rest == "[") {
        return unterminated(node, "tag");
    }
    switch (rest[0]) {
        case '-':
            return rest[1] == '-' ? parseDelimited(node, NodeComment, 4, "-->", "comment")
                                  : parseSyntaxError(node, ResultCommentTagSyntax, start + 3);
        case '[':
            return rest[1] == 'C'
                       ? parseDelimited(node, NodeCDataSection, 4, "]]>", "cdata_section")
                       : parseSyntaxError(node, ResultCDataSectionSyntax, start + 3);
        case 'D':
            return parseDocumentType(node);
        default:
            return parseSyntaxError(node, ResultExclamationTagSyntax, start + 2);
    }
}

/// Ends at the first `terminator` that lies wholly after the `opening` bytes.
int TokenPos::parseDelimited(NodePos& node, int type, std::size_t opening,
                             std::string_view terminator, std::string_view openKind) {
    const std::size_t from = static_cast<std::size_t>(node.start) + opening;
    const std::size_t found = text_.find(terminator, from);
    return found == npos ? unterminated(node, openKind)
                         : endNode(node, type, found + terminator.size());
}

/// Runs to the closing ">". Quotes count outside the brackets of the internal subset and inside
/// its declarations; comments and processing instructions in the subset are passed over whole.
int TokenPos::parseDocumentType(NodePos& node) {
    std::size_t pos = findUnquoted("[>", static_cast<std::size_t>(node.start) + 3);
    while (pos < text_.size() && text_[pos] == '[') {
        if (!skipSubset(++pos)) {
            return parseSyntaxError(node, ResultDoctypeTagSyntax, pos + 2);
        }
        pos = findUnquoted("[>", pos);
    }
    return pos < text_.size() ? endNode(node, NodeDocumentType, pos + 1)
                              : unterminated(node, "document_type");
}

/// The next of `marks` outside quotes from `pos` on, the text's size when there is none.
std::size_t TokenPos::findUnquoted(std::string_view marks, std::size_t pos) const {
    while (pos < text_.size() && marks.find(text_[pos]) == npos) {
        pos = isQuote(text_[pos]) ? behind(text_.substr(pos, 1), pos + 1) : pos + 1;
    }
    return pos;
}

/// The offset behind the first `mark` from `from` on, the text's size when there is none.
std::size_t TokenPos::behind(std::string_view mark, std::size_t from) const {
    const std::size_t found = text_.find(mark, from);
    return found == npos ? text_.size() : found + mark.size();
}

/// Moves `pos` over the internal subset, to behind its "]". False at a declaration that begins with
/// none of A, E and N, to whose "<" it moves then.
bool TokenPos::skipSubset(std::size_t& pos) const {
    while ((pos = text_.find_first_of("<]", pos)) != npos && text_[pos] == '<') {
        const std::size_t end = skipSubsetMarkup(pos);
        if (end == pos) {
            return false;
        }
        pos = end;
    }
    pos = pos == npos ? text_.size() : pos + 1;
    return true;
}

/// Passes over the mark-up that opens at the "<" at `pos` inside the internal subset. Returns the
/// offset behind it, the text's size when it does not end, or `pos` for a wrong declaration.
std::size_t TokenPos::skipSubsetMarkup(std::size_t pos) const {
    const std::string_view opening = text_.substr(pos, 4);
    if (opening == "<!--") {
        return behind("-->", pos + 4);
    }
    if (opening.starts_with("<?")) {
        return behind("?>", pos + 2);
    }
    if (!opening.starts_with("<!")) {
        return pos + 1;
    }
    if (opening == "<!" || opening == "<!-") {
        return text_.size();
    }
    const char kind = opening[2];
    const bool isDeclaration = kind == 'A' || kind == 'E' || kind == 'N';
    return isDeclaration ? std::min(findUnquoted(">", pos + 3) + 1, text_.size()) : pos;
}

/// Makes the node a syntax error that ends at the next ">", or before the next "<", from `from` on.
int TokenPos::parseSyntaxError(NodePos& node, std::string_view result, std::size_t from) {
    node.results.push_back({result, nullptr, 0, node.start});
    const std::size_t stop = text_.find_first_of("<>", from);
    if (stop == npos) {
        return unterminated(node, "tag");
    }
    return endNode(node, NodeSyntaxError, text_[stop] == '>' ? stop + 1 : stop);
}

/// Makes the rest of the text a syntax error, for a node whose end is not in it.
int TokenPos::unterminated(NodePos& node, std::string_view openKind) {
    node.results.push_back({ResultUnterminatedTagSyntax, openKind, RESULT_TYPE, node.start});
    return endNode(node, NodeSyntaxError, text_.size());
}
