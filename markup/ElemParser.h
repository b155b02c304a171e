#pragma once

#include <string>
#include <string_view>

#include "markup/ElemPosTree.h"
#include "markup/OpenTagStack.h"
#include "markup/Result.h"
#include "markup/TokenPos.h"

/// Turns the nodes of the tokenizer into element records. It never fails: what is ill-formed is
/// tolerated, flagged in the records and told to a result log. An object is for one parse.
class ElemParser {
  public:
    /// Neither the tree nor the log is owned. `ignoreCase` is the rule by which end tags find their
    /// start tags.
    ElemParser(ElemPosTree& tree, std::string& log, bool ignoreCase)
        : tree_(tree), log_(log), tags_(ignoreCase) {}

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
    OpenTagStack tags_;
    int parent_ = 0;     ///< record under which the parse runs
    int levelBase_ = 0;  ///< its level
    int current_ = 0;    ///< innermost open element, `parent_` when there is none
    int last_ = 0;       ///< last child of that, 0 when it has none
    int first_ = 0;      ///< first record made
};
