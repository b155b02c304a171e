#pragma once

#include <string>
#include <string_view>

#include "markup/ElemPosTree.h"
#include "markup/OpenTagStack.h"
#include "markup/Result.h"
#include "markup/TokenPos.h"

/// Is told of all that a parse tolerates; a result log has room for the first of it only.
class ParseListener {
  public:
    ParseListener() = default;
    ParseListener(const ParseListener&) = delete;
    ParseListener& operator=(const ParseListener&) = delete;
    virtual ~ParseListener() = default;

    /// The parse has met this; the texts may be gone after the call.
    virtual void tolerated(const Result& result) = 0;
};

/// Turns the nodes of the tokenizer into element records. It never fails: what is ill-formed is
/// tolerated, flagged in the records and told to a result log. An object is for one parse.
class ElemParser {
  public:
    /// Nothing is owned; the listener may be null. `ignoreCase` is the rule by which end tags find
    /// their start tags.
    ElemParser(ElemPosTree& tree, std::string& log, bool ignoreCase,
               ParseListener* listener = nullptr)
        : tree_(tree), log_(log), listener_(listener), tags_(ignoreCase) {}

    /// Parses a whole document under its own record, which it completes.
    void parseDocument(TokenPos token);
    /// Parses nodes from the token's next offset to the end of the text, making the elements
    /// children of record `parent`, behind those it has. Returns the first record made, 0 if none.
    /// Requires: 0 <= parent < tree.count().
    int parse(int parent, TokenPos& token);

  private:
    void openElem(const NodePos& node, std::string_view name);
    int addElem(int start, int tagLength);
    void linkLastChild(int pos, ElemPos& elem);
    void endElem(const NodePos& node, std::string_view name);
    void closeUnended(int depth, int closedAt);
    void unendInnermost(int closedAt);
    void liftChildren(int pos, ElemPos& elem);
    int lastChild(int pos) const;
    void markIllData();
    void addResult(const Result& result);

    ElemPosTree& tree_;
    std::string& log_;
    ParseListener* listener_;
    OpenTagStack tags_;
    int parent_ = 0;     ///< record under which the parse runs
    int levelBase_ = 0;  ///< its level
    int current_ = 0;    ///< innermost open element, `parent_` when there is none
    int last_ = 0;       ///< last child of that, 0 when it has none
    int first_ = 0;      ///< first record made
};
