// The parser: turns the nodes of the tokenizer into element records.

#include <algorithm>

#include "markup/Markup.h"
#include "markup/OpenTagStack.h"
#include "markup/ResultLog.h"

/// What one run of x_ParseElem keeps beside the document.
struct MarkupDocument::Parse {
    OpenTagStack tags;
    int parent;     ///< record under which the parse runs
    int current;    ///< innermost open element, `parent` when there is none
    int levelBase;  ///< level of `parent`
    int first = 0;  ///< first record made
};

bool MarkupDocument::x_ParseDoc() {
    x_ResetRecords();
    if (!docText_.empty()) {
        TokenPos token(docText_.view(), docFlags_);
        const int first = x_ParseElem(0, token);
        tree_[0].length = static_cast<int>(docText_.size());
        tree_[0].child = first;
        if (first == 0) {
            x_AddResult(resultText_, "no_root_element");
        } else if (tree_[first].next != 0) {
            x_AddResult(resultText_, "root_has_sibling");
        }
    }
    pos_ = {};
    return IsWellFormed();
}

/// Leaves no records but the document's own, without needing memory: what any earlier text left
/// must not be followed, whatever fails next.
void MarkupDocument::x_ForgetRecords() noexcept {
    pos_ = {};
    attribWalk_ = {};
    savedPos_.RemoveAll();
    freePos_ = 1;
    deletedPos_ = 0;
    if (tree_.size() != 0) {
        tree_[0] = {};
    }
}

/// Leaves the records of an empty document, with room for those of the text.
void MarkupDocument::x_ResetRecords() {
    x_ForgetRecords();
    // One record for each 64 bytes of text is about what parameter files need.
    x_AllocElemPos(static_cast<int>(docText_.size() / 64 + 8));
    tree_[0] = {};
}

int MarkupDocument::x_ParseElem(int parent, TokenPos& token) {
    if (!isRecord(parent)) {
        return 0;
    }
    Parse parse{OpenTagStack(hasFlag(DocFlagIgnoreCase)), parent, parent, tree_[parent].level()};
    NodePos node;
    while (true) {
        switch (token.ParseNode(node)) {
            case NodeElement:
                x_OpenElem(parse, token, node);
                break;
            case NodeEndTag:
                x_EndElem(parse, token, node);
                break;
            case NodeSyntaxError:
                tree_[parent].setFlag(ElemFlagIllFormed);
                tree_[parse.current].setFlag(ElemFlagIllData);
                x_AppendResults(node.results);
                break;
            case NodeEndOfText:
                x_CloseUnended(parse, 0, static_cast<int>(docText_.size()));
                return parse.first;
            default:
                break;
        }
    }
}

/// Appends results of the tokenizer under the size limit that x_AddResult keeps.
void MarkupDocument::x_AppendResults(const std::string& results) {
    if (resultText_.size() < resultLogLimit) {
        resultText_ += results;
    }
}

void MarkupDocument::x_OpenElem(Parse& parse, const TokenPos& token, const NodePos& node) {
    const int pos = x_GetFreePos();
    ElemPos& elem = tree_[pos];
    // A level beyond 16 bits keeps its low bits; it must not run into the flags.
    const int level = parse.levelBase + parse.tags.depth();
    elem.start = node.start;
    elem.length = node.length;
    elem.setStartTagLength(node.length);
    elem.levelAndFlags = static_cast<std::uint32_t>(level) & ElemPos::levelMask;
    x_LinkLastChild(parse.current, pos);
    if (parse.first == 0) {
        parse.first = pos;
    }
    if ((node.flags & NodeFlagEmpty) == 0) {
        parse.tags.push(pos, token.token());
        parse.current = pos;
    }
}

/// Links a fresh record as the last child of `parent`.
void MarkupDocument::x_LinkLastChild(int parent, int pos) {
    ElemPos& elem = tree_[pos];
    ElemPos& above = tree_[parent];
    elem.parent = parent;
    if (above.child == 0) {
        above.child = pos;
        elem.previous = pos;
        elem.setFlag(ElemFlagFirst);
        return;
    }
    ElemPos& firstChild = tree_[above.child];
    elem.previous = firstChild.previous;
    tree_[firstChild.previous].next = pos;
    firstChild.previous = pos;
}

void MarkupDocument::x_EndElem(Parse& parse, const TokenPos& token, const NodePos& node) {
    const int depth = parse.tags.findMatch(token.token());
    if (depth == 0) {
        tree_[parse.parent].setFlag(ElemFlagIllFormed);
        tree_[parse.current].setFlag(ElemFlagIllData);
        x_AddResult(resultText_, "lone_end_tag", token.token(), 0, node.start);
        return;
    }
    x_CloseUnended(parse, depth, token.left - 1);
    ElemPos& elem = tree_[parse.current];
    elem.length = node.start + node.length - elem.start;
    elem.setEndTagLength(node.length);
    parse.current = elem.parent;
    parse.tags.pop();
}

/// Closes the open elements above `depth` as unended; their children become siblings that follow
/// them. All are lifted in one go: each child list is spliced behind its element at once, but the
/// parent links are set by one walk at the end. Lifting level by level would touch every element of
/// a file of unended tags once for each level above it.
void MarkupDocument::x_CloseUnended(Parse& parse, int depth, int closedAt) {
    if (parse.tags.depth() == depth) {
        return;
    }
    tree_[parse.parent].setFlag(ElemFlagIllFormed);
    int lowest = 0;
    while (parse.tags.depth() > depth) {
        const OpenTagStack::Tag tag = parse.tags.top();
        ElemPos& elem = tree_[tag.elem];
        const int above = elem.parent;
        elem.setFlag(ElemFlagUnended);
        if (elem.hasFlag(ElemFlagIllData)) {
            elem.clearFlag(ElemFlagIllData);
            tree_[above].setFlag(ElemFlagIllData);
        }
        x_LiftChildren(tag.elem, above);
        x_AddResult(resultText_, "unended_start_tag", tag.name(), 0, elem.start, closedAt);
        lowest = tag.elem;
        parse.current = above;
        parse.tags.pop();
    }
    for (int pos = lowest; pos != 0; pos = tree_[pos].next) {
        tree_[pos].parent = parse.current;
    }
}

/// Splices the child list of `pos`, which is the last child of `parent`, behind it; the parent
/// links of the lifted records are left to the caller. Levels stay as they were.
void MarkupDocument::x_LiftChildren(int pos, int parent) {
    ElemPos& elem = tree_[pos];
    if (elem.child == 0) {
        return;
    }
    ElemPos& lifted = tree_[elem.child];
    elem.next = elem.child;
    elem.child = 0;
    tree_[tree_[parent].child].previous = lifted.previous;
    lifted.previous = pos;
    lifted.clearFlag(ElemFlagFirst);
}

int MarkupDocument::x_GetFreePos() {
    if (freePos_ == tree_.size()) {
        const int size = tree_.size();
        tree_.GrowElemPosTree(std::max({size + size / 2, size + 1, 8}));
    }
    tree_[freePos_] = {};
    return freePos_++;
}

int MarkupDocument::x_ReleasePos(int pos) {
    if (!isElement(pos)) {
        return 0;
    }
    ElemPos& elem = tree_[pos];
    const int next = elem.next;
    elem.levelAndFlags = ElemFlagDeleted;
    elem.next = deletedPos_;
    deletedPos_ = pos;
    return next;
}

bool MarkupDocument::x_AllocElemPos(int n) {
    const int wanted = n == 0 ? freePos_ + freePos_ / 2 : n;
    while (tree_.size() < wanted) {
        tree_.GrowElemPosTree(wanted);
    }
    return true;
}
