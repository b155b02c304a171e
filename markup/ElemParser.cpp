// Records are made in the order of the start tags and linked as they are made: the parser knows the
// innermost open element and its last child, and the stack of open tags finds the one that an end
// tag closes. Elements that are never ended are found out only when an outer one ends, or the text
// does. They keep their start tag; what they seemed to hold is lifted out behind them.

#include "markup/ElemParser.h"

#include "markup/ResultLog.h"

// That there are several top-level elements, or none, sets no flag: the links show it.
void ElemParser::parseDocument(TokenPos token) {
    const int first = parse(0, token);
    tree_[0].length = token.next;
    tree_[0].child = first;
    if (first == 0) {
        addResult({ResultNoRootElement});
    } else if (tree_[first].next != 0) {
        addResult({ResultRootHasSibling});
    }
}

int ElemParser::parse(int parent, TokenPos& token) {
    parent_ = parent;
    levelBase_ = tree_[parent].level();
    current_ = parent;
    last_ = lastChild(parent);
    NodePos node;
    while (true) {
        switch (token.ParseNode(node)) {
            case NodeElement:
                openElem(node, token.token());
                break;
            case NodeEndTag:
                endElem(node, token.token());
                break;
            case NodeSyntaxError:
                markIllData();
                for (const Result& result : node.results) {
                    addResult(result);
                }
                break;
            case NodeEndOfText:
                closeUnended(0, node.start);
                return first_;
            default:
                break;  // is found again in the text by those who ask for it
        }
    }
}

/// Every result of a parse goes through here.
void ElemParser::addResult(const Result& result) {
    x_AddResult(log_, result);
    if (listener_ != nullptr) {
        listener_->tolerated(result);
    }
}

/// Notes that something ill-formed lies directly in the innermost open element.
void ElemParser::markIllData() {
    tree_[parent_].setFlag(ElemFlagIllFormed);
    tree_[current_].setFlag(ElemFlagIllData);
}

/// The last child of record `pos`, 0 when it has none.
int ElemParser::lastChild(int pos) const {
    const int first = tree_[pos].child;
    return first == 0 ? 0 : tree_[first].previous;
}

void ElemParser::openElem(const NodePos& node, std::string_view name) {
    const int pos = addElem(node.start, node.length);
    if ((node.flags & NodeFlagEmpty) == 0) {
        current_ = pos;
        last_ = 0;
        tags_.push(pos, name);
    }
}

/// Makes a record for the element with this start tag, as the last child of the innermost open one.
int ElemParser::addElem(int start, int tagLength) {
    const int pos = tree_.take();
    ElemPos& elem = tree_[pos];
    elem.open(start, tagLength, levelBase_ + tags_.depth());
    linkLastChild(pos, elem);
    first_ = first_ == 0 ? pos : first_;
    return pos;
}

/// Links a fresh record, `elem` at `pos`, as the last child of the innermost open element.
void ElemParser::linkLastChild(int pos, ElemPos& elem) {
    ElemPos& above = tree_[current_];
    elem.parent = current_;
    if (last_ == 0) {
        above.child = pos;
        elem.previous = pos;
        elem.setFlag(ElemFlagFirst);
    } else {
        elem.previous = last_;
        tree_[last_].next = pos;
        tree_[above.child].previous = pos;
    }
    last_ = pos;
}

/// Ends the innermost open element that has this name, and all in it as unended.
void ElemParser::endElem(const NodePos& node, std::string_view name) {
    const int depth = tags_.findMatch(name);
    if (depth == 0) {
        markIllData();
        addResult({ResultLoneEndTag, name, 0, node.start});
        return;
    }
    closeUnended(depth, node.start + 1);
    ElemPos& elem = tree_[current_];
    elem.close(node.start + node.length, node.length);
    last_ = current_;
    current_ = elem.parent;
    tags_.pop();
}

/// Closes the open elements above `depth` as unended; their children become siblings that follow
/// them. All are lifted in one go: each child list is spliced behind its element at once, but the
/// parent links are set by one walk at the end. Lifting level by level would touch every element of
/// a file of unended tags once for each level above it.
void ElemParser::closeUnended(int depth, int closedAt) {
    if (tags_.depth() == depth) {
        return;
    }
    tree_[parent_].setFlag(ElemFlagIllFormed);
    int lowest = 0;
    while (tags_.depth() > depth) {
        lowest = tags_.top().elem;
        unendInnermost(closedAt);
    }
    last_ = lastChild(current_);
    for (int pos = lowest; pos != 0; pos = tree_[pos].next) {
        tree_[pos].parent = current_;
    }
}

/// Closes the innermost open element as unended, with its children behind it.
void ElemParser::unendInnermost(int closedAt) {
    const OpenTagStack::Tag tag = tags_.top();
    ElemPos& elem = tree_[tag.elem];
    current_ = elem.parent;
    elem.setFlag(ElemFlagUnended);
    if (elem.hasFlag(ElemFlagIllData)) {
        elem.clearFlag(ElemFlagIllData);
        tree_[current_].setFlag(ElemFlagIllData);
    }
    if (elem.child != 0) {
        liftChildren(tag.elem, elem);
    }
    addResult({ResultUnendedStartTag, tag.name(), 0, elem.start, closedAt});
    tags_.pop();
}

/// Splices the child list of `elem` at `pos`, which is the last child of the current element,
/// behind it; the parent links of the lifted records are left to the caller. Levels stay as they
/// were.
void ElemParser::liftChildren(int pos, ElemPos& elem) {
    ElemPos& lifted = tree_[elem.child];
    elem.next = elem.child;
    elem.child = 0;
    tree_[tree_[current_].child].previous = lifted.previous;
    lifted.previous = pos;
    lifted.clearFlag(ElemFlagFirst);
}
