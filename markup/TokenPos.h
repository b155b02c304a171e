#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "markup/DocFlags.h"
#include "markup/NodeTypes.h"
#include "markup/Result.h"
#include "markup/text/TextArg.h"

/// One node as the tokenizer found it.
struct NodePos {
    int type = 0;                 ///< a `NodeType` bit or a `TokenizerResult`
    int start = 0;                ///< offset of the first byte
    int length = 0;               ///< in bytes
    int flags = 0;                ///< `NodeFlagEmpty` or 0
    std::vector<Result> results;  ///< for the result log, in this order
};

/// Token flag, beside the document flags: the current token was read from within quotes.
inline constexpr int TokenFlagQuoted = 0x8000;

/// The tokenizer's cursor over a document text. It scans nodes (`ParseNode`) and, inside a tag,
/// names and attributes. What is tolerated:
///
/// - anything after "<" that begins no node, up to the next ">" or before the next "<";
/// - attributes without a value, without quotes, or repeated;
/// - a ">" within a quoted attribute value. A quote opens only as the first byte of a token:
///   inside a name or an unquoted value it is content ("<a it's>" is one tag).
///
/// Offsets are into the text given at construction, which must outlive the cursor and be no longer
/// than INT32_MAX bytes. The text ends at its size; a NUL byte is an ordinary byte.
class TokenPos {
  public:
    /// Takes the document flags for the case rule and starts scanning at offset `start`.
    explicit TokenPos(std::string_view text, int flags = 0, int start = 0)
        : next(start), text_(text), flags_(flags & ~TokenFlagQuoted) {}

    /// Scans one node from `next`, fills `node`, moves `next` past it and returns its type. In a
    /// start or end tag the current token becomes the tag's name.
    int ParseNode(NodePos& node);

    /// Reads the next name after white space: up to white space or one of ! " ' / ; < = > ? \.
    /// False, with an empty token, where one of these bytes or the end of the text stands.
    bool FindName();

    /// Walks the attributes of a tag from `next`, which lies behind its "<". Finds the first
    /// attribute called `name` or, for a null name, the attribute number `index` counted from 0,
    /// whose name it stores in `attribName` when that is given. The current token becomes the
    /// value without its quotes, empty when the attribute has none.
    bool FindAttrib(TextArg name, int index = 0, std::string* attribName = nullptr);

    /// True when the current token equals `name`, by the case rule of the document.
    bool Match(TextArg name) const;

    /// The current token, a view into the text.
    std::string_view token() const;
    std::string GetTokenText() const { return std::string(token()); }

    /// `next`, or the end of the text when it lies outside.
    std::size_t position() const;

    int left = 0;    ///< offset of the first byte of the current token
    int right = -1;  ///< offset of its last byte; left - 1 for an empty token
    int next = 0;    ///< where scanning goes on
    /// Where the name before the attribute that `FindAttrib` found begins: another attribute's or
    /// the tag's own. A walk from there finds the same attribute at index 0.
    int priorName = 0;

  private:
    bool nextTagToken(bool afterEqual);
    bool nextAttribName();
    void moveToValue();
    /// The first byte of the current token, NUL for a quoted one. Requires: a token of a tag.
    char firstOfUnquoted() const {
        return (flags_ & TokenFlagQuoted) != 0 ? '\0' : text_[static_cast<std::size_t>(left)];
    }
    void setToken(std::size_t first, std::size_t end);

    int parseRun(NodePos& node);
    int parseTag(NodePos& node, int type);
    bool isEmptyTag(std::size_t tagEnd, std::size_t lastValueEnd) const;
    int parseDeclaration(NodePos& node);
    int parseDelimited(NodePos& node, int type, std::size_t opening, std::string_view terminator,
                       std::string_view openKind);
    int parseDocumentType(NodePos& node);
    bool skipSubset(std::size_t& pos) const;
    std::size_t skipSubsetMarkup(std::size_t pos) const;
    std::size_t findUnquoted(std::string_view marks, std::size_t pos) const;
    std::size_t behind(std::string_view mark, std::size_t from) const;
    int parseSyntaxError(NodePos& node, std::string_view result, std::size_t from);
    int unterminated(NodePos& node, std::string_view openKind);
    int endNode(NodePos& node, int type, std::size_t end);

    std::string_view text_;
    int flags_;
};
