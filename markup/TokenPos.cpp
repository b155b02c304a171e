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
    setToken(first, end);
    next = static_cast<int>(end);
    return end > first;
}

/// Moves to the next token inside a tag: a quoted run, the unquoted value after "=" or a name; a
/// byte that ends names is a token by itself. False at the end of the text.
bool TokenPos::nextAttribToken(bool afterEqual) {
    flags_ &= ~TokenFlagQuoted;
    const std::size_t first = markup::skipClass(text_, position(), ClassSpace);
    if (first == text_.size()) {
        next = static_cast<int>(first);
        return false;
    }
    if (isQuote(text_[first])) {
        flags_ |= TokenFlagQuoted;
        const std::size_t close = text_.find(text_[first], first + 1);
        const std::size_t end = close == npos ? text_.size() : close;
        setToken(first + 1, end);
        next = static_cast<int>(close == npos ? end : end + 1);
        return true;
    }
    std::size_t end = markup::findClass(text_, first, afterEqual ? ClassAttrValue : ClassAttrName);
    if (end == first && !afterEqual) {
        ++end;
    }
    setToken(first, end);
    next = static_cast<int>(end);
    return true;
}

bool TokenPos::FindAttrib(TextArg name, int index, std::string* attribName) {
    bool afterEqual = false;
    bool found = false;
    int number = 0;
    if (!nextAttribToken(false)) {  // the tag's own name, whatever it is
        return false;
    }
    priorName = left;
    while (nextAttribToken(afterEqual)) {
        if (afterEqual) {
            if (found) {
                return true;
            }
            afterEqual = false;
            continue;
        }
        const bool quoted = (flags_ & TokenFlagQuoted) != 0;
        const char first = quoted ? '\0' : text_[static_cast<std::size_t>(left)];
        if (first == '=') {
            afterEqual = true;
            continue;
        }
        if (found) {
            break;
        }
        if (first == '>' || first == '/' || first == '?') {
            return false;
        }
        if (quoted) {
            continue;
        }
        found = name.isNull() ? number == index : Match(name);
        if (!found) {
            priorName = left;
        } else if (attribName != nullptr) {
            *attribName = token();
        }
        ++number;
    }
    setEmptyToken();
    return found;
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
            return parseDelimited(node, NodeProcessingInstruction, 2, "?>");
        case '!':
            return parseDeclaration(node);
        default:
            return parseSyntaxError(node, ResultFirstTagSyntax, start + 1);
    }
}

int TokenPos::endNode(NodePos& node, int type, std::size_t end) {
    node.type = type;
    node.length = static_cast<int>(end) - node.start;
    next = static_cast<int>(end);
    return type;
}

int TokenPos::parseRun(NodePos& node) {
    const std::size_t start = markup::skipClass(text_, static_cast<std::size_t>(next), ClassSpace);
    if (start == text_.size() || text_[start] == '<') {
        return endNode(node, NodeWhitespace, start);
    }
    const std::size_t end = text_.find('<', start);
    return endNode(node, NodeText, end == npos ? text_.size() : end);
}

/// Scans a start or end tag to the first ">" outside quotes, by the token rules of `FindAttrib`.
/// A "/" before the ">" makes it empty, unless the "/" belongs to an unquoted value ("<a b=c/>");
/// even then it does after white space or a quote.
int TokenPos::parseTag(NodePos& node, int type) {
    const bool isStart = type == NodeElement;
    const std::size_t name = static_cast<std::size_t>(node.start) + (isStart ? 1 : 2);
    std::size_t pos = markup::findClass(text_, name, ClassAttrName);
    if (pos < text_.size() && text_[pos] == '>') {
        setToken(name, pos);
        return endNode(node, type, pos + 1);
    }
    // The name that pairs tags may run on behind the first token: "<a=1>" is called "a=1".
    setToken(name, markup::findClass(text_, pos, ClassTagName));
    bool afterEqual = false;
    std::size_t unquotedValueEnd = npos;
    while (true) {
        pos = markup::skipClass(text_, pos, ClassSpace);
        if (pos == text_.size()) {
            return unterminated(node, isStart ? "start_tag" : "end_tag");
        }
        const char c = text_[pos];
        if (c == '>') {
            break;
        }
        if (isQuote(c)) {
            const std::size_t close = text_.find(c, pos + 1);
            if (close == npos) {
                return unterminated(node, isStart ? "start_tag" : "end_tag");
            }
            pos = close + 1;
            afterEqual = false;
        } else if (afterEqual) {
            pos = markup::findClass(text_, pos, ClassAttrValue);
            unquotedValueEnd = pos;
            afterEqual = false;
        } else {
            afterEqual = c == '=';
            pos = markup::isClass(c, ClassAttrName) ? pos + 1
                                                    : markup::findClass(text_, pos, ClassAttrName);
        }
    }
    if (isStart && text_[pos - 1] == '/') {
        const char before = text_[pos - 2];
        const bool closes =
            unquotedValueEnd != pos || markup::isClass(before, ClassSpace) || isQuote(before);
        node.flags = closes ? NodeFlagEmpty : 0;
    }
    return endNode(node, type, pos + 1);
}

int TokenPos::parseDeclaration(NodePos& node) {
    const auto start = static_cast<std::size_t>(node.start);
    const std::string_view rest = text_.substr(start + 2, 2);
    if (rest.empty() || rest == "-" || rest == "[") {
        return unterminated(node, "tag");
    }
    switch (rest[0]) {
        case '-':
            return rest[1] == '-' ? parseDelimited(node, NodeComment, 4, "-->")
                                  : parseSyntaxError(node, ResultCommentTagSyntax, start + 3);
        case '[':
            return rest[1] == 'C' ? parseDelimited(node, NodeCDataSection, 4, "]]>")
                                  : parseSyntaxError(node, ResultCDataSectionSyntax, start + 3);
        case 'D':
            return parseDocumentType(node);
        default:
            return parseSyntaxError(node, ResultExclamationTagSyntax, start + 2);
    }
}

/// Ends at the first `terminator` that lies wholly after the `opening` bytes.
int TokenPos::parseDelimited(NodePos& node, int type, std::size_t opening,
                             std::string_view terminator) {
    const std::size_t found =
        text_.find(terminator, static_cast<std::size_t>(node.start) + opening);
    if (found != npos) {
        return endNode(node, type, found + terminator.size());
    }
    switch (type) {
        case NodeComment:
            return unterminated(node, "comment");
        case NodeCDataSection:
            return unterminated(node, "cdata_section");
        default:
            return unterminated(node, "processing_instruction");
    }
}

/// Runs to the closing ">". Quotes count outside the brackets of the internal subset and inside
/// its declarations; comments and processing instructions in the subset are passed over whole.
int TokenPos::parseDocumentType(NodePos& node) {
    std::size_t pos = static_cast<std::size_t>(node.start) + 3;
    bool inSubset = false;
    while (pos < text_.size()) {
        const char c = text_[pos];
        if (inSubset && c == '<') {
            const std::size_t end = skipSubsetMarkup(pos);
            if (end == pos) {
                return parseSyntaxError(node, ResultDoctypeTagSyntax, pos + 2);
            }
            pos = end;
            continue;
        }
        if (inSubset) {
            inSubset = c != ']';
        } else if (c == '>') {
            return endNode(node, NodeDocumentType, pos + 1);
        } else if (isQuote(c)) {
            pos = text_.find(c, pos + 1);
            if (pos == npos) {
                break;
            }
        } else {
            inSubset = c == '[';
        }
        ++pos;
    }
    return unterminated(node, "document_type");
}

/// Passes over the mark-up that opens at the "<" at `pos` inside the internal subset. Returns the
/// offset behind it, the text's size when it does not end, or `pos` for a declaration that begins
/// with none of A, E and N.
std::size_t TokenPos::skipSubsetMarkup(std::size_t pos) const {
    const std::string_view opening = text_.substr(pos, 4);
    const auto behind = [this](std::string_view terminator, std::size_t from) {
        const std::size_t found = text_.find(terminator, from);
        return found == npos ? text_.size() : found + terminator.size();
    };
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
    return kind == 'A' || kind == 'E' || kind == 'N' ? skipDeclaration(pos + 3) : pos;
}

std::size_t TokenPos::skipDeclaration(std::size_t pos) const {
    while (true) {
        pos = text_.find_first_of("\"'>", pos);
        if (pos == npos) {
            return text_.size();
        }
        if (text_[pos] == '>') {
            return pos + 1;
        }
        pos = text_.find(text_[pos], pos + 1);
        if (pos == npos) {
            return text_.size();
        }
        ++pos;
    }
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

int TokenPos::unterminated(NodePos& node, std::string_view openKind) {
    node.results.push_back({ResultUnterminatedTagSyntax, openKind, RESULT_TYPE, node.start});
    return endNode(node, NodeSyntaxError, text_.size());
}
