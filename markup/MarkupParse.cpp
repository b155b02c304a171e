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
    int last;       ///< last child of that, 0 when it has none
    int levelBase;  ///< level of `parent`
    int first = 0;  ///< first record made
};

namespace {

/// A record is reserved for so many bytes of text, before it is known how many there will be.
constexpr std::size_t bytesForRecord = 64;

/// True when a long text seems, by samples from all over it, to need the records that are reserved
/// for it.
bool isDense(std::string_view text) {
    constexpr std::size_t leastSize = std::size_t{1} << 22;
    constexpr std::size_t sampleCount = 16;
    constexpr std::size_t sampleSize = 4096;
    const auto isSampleDense = [text](std::size_t n) {
        const std::string_view sample = text.substr(text.size() / sampleCount * n, sampleSize);
        const auto tags = static_cast<std::size_t>(std::count(sample.begin(), sample.end(), '<'));
        return tags / 2 >= sampleSize / bytesForRecord;  // most have a start and an end tag
    };
    bool isDense = text.size() >= leastSize;
    for (std::size_t n = 0; isDense && n < sampleCount; ++n) {
        isDense = isSampleDense(n);
    }
    return isDense;
}

}  // namespace

bool MarkupDocument::x_ParseDoc() {
    resetRecords();
    if (!docText_.empty()) {
        TokenPos token(docText_.view(), docFlags_);
        const int first = x_ParseElem(0, token);
        tree_[0].length = static_cast<int>(docText_.size());
        tree_[0].child = first;
        if (first == 0) {
            x_AddResult(resultText_, ResultNoRootElement);
        } else if (tree_[first].next != 0) {
            x_AddResult(resultText_, ResultRootHasSibling);
        }
    }
    pos_ = {};
    return IsWellFormed();
}

/// Leaves no records but the document's own, without needing memory: what any earlier text left
/// must not be followed, whatever fails next.
void MarkupDocument::forgetRecords() noexcept {
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
void MarkupDocument::resetRecords() {
    forgetRecords();
    tree_.expectFull(isDense(docText_.view()));
    x_AllocElemPos(static_cast<int>(docText_.size() / bytesForRecord + 8));
    tree_[0] = {};
}

int MarkupDocument::x_ParseElem(int parent, TokenPos& token) {
    if (!isRecord(parent)) {
        return 0;
    }
    Parse parse{OpenTagStack(hasFlag(DocFlagIgnoreCase)), parent, parent, lastChild(parent),
                tree_[parent].level()};
    NodePos node;
    while (true) {
        switch (token.ParseNode(node)) {
            case NodeElement:
                openElem(parse, token, node);
                break;
            case NodeEndTag:
                endElem(parse, token, node);
                break;
            case NodeSyntaxError:
                tree_[parent].setFlag(ElemFlagIllFormed);
                tree_[parse.current].setFlag(ElemFlagIllData);
                for (const Result& result : node.results) {
                    x_AddResult(resultText_, result);
                }
                break;
            case NodeEndOfText:
                closeUnended(parse, 0, static_cast<int>(docText_.size()));
                return parse.first;
            default:
                break;
        }
    }
}

/// The last child of record `pos`, 0 when it has none.
int MarkupDocument::lastChild(int pos) const {
    const int first = tree_[pos].child;
    return first == 0 ? 0 : tree_[first].previous;
}

/// Links a fresh record, `elem` at `pos`, as the last child of the innermost open element.
inline void MarkupDocument::linkLastChild(Parse& parse, int pos, ElemPos& elem) {
    ElemPos& above = tree_[parse.current];
    elem.parent = parse.current;
    if (parse.last == 0) {
        above.child = pos;
        elem.previous = pos;
        elem.setFlag(ElemFlagFirst);
    } else {
        elem.previous = parse.last;
        tree_[parse.last].next = pos;
        tree_[above.child].previous = pos;
    }
    parse.last = pos;
}

/// Takes a record for an element with this start tag, makes it the last child of the innermost open
/// one and returns it.
ElemPos& MarkupDocument::addElem(Parse& parse, int start, int tagLength) {
    const int pos = x_GetFreePos();
    ElemPos& elem = tree_[pos];
    // A level beyond 16 bits keeps its low bits; it must not run into the flags.
    const int level = parse.levelBase + parse.tags.depth();
    elem.start = start;
    elem.length = tagLength;
    elem.setStartTagLength(tagLength);
    elem.levelAndFlags = static_cast<std::uint32_t>(level) & ElemPos::levelMask;
    linkLastChild(parse, pos, elem);
    if (parse.first == 0) {
        parse.first = pos;
    }
    return elem;
}

/// Makes the element added last, which is called `name`, the innermost open one.
void MarkupDocument::enter(Parse& parse, std::string_view name) const {
    parse.current = freePos_ - 1;
    parse.last = 0;
    parse.tags.push(parse.current, name);
}

void MarkupDocument::openElem(Parse& parse, const TokenPos& token, const NodePos& node) {
    addElem(parse, node.start, node.length);
    if ((node.flags & NodeFlagEmpty) == 0) {
        enter(parse, token.token());
    }
}

void MarkupDocument::endElem(Parse& parse, const TokenPos& token, const NodePos& node) {
    const int depth = parse.tags.findMatch(token.token());
    if (depth == 0) {
        tree_[parse.parent].setFlag(ElemFlagIllFormed);
        tree_[parse.current].setFlag(ElemFlagIllData);
        x_AddResult(resultText_, ResultLoneEndTag, token.token(), 0, node.start);
        return;
    }
    closeUnended(parse, depth, token.left - 1);
    ElemPos& elem = tree_[parse.current];
    elem.close(node.start + node.length, node.length);
    parse.last = parse.current;
    parse.current = elem.parent;
    parse.tags.pop();
}

/// Closes the open elements above `depth` as unended; their children become siblings that follow
/// them. All are lifted in one go: each child list is spliced behind its element at once, but the
/// parent links are set by one walk at the end. Lifting level by level would touch every element of
/// a file of unended tags once for each level above it.
void MarkupDocument::closeUnended(Parse& parse, int depth, int closedAt) {
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
        liftChildren(tag.elem, above);
        x_AddResult(resultText_, ResultUnendedStartTag, tag.name(), 0, elem.start, closedAt);
        lowest = tag.elem;
        parse.current = above;
        parse.tags.pop();
    }
    parse.last = lastChild(parse.current);
    for (int pos = lowest; pos != 0; pos = tree_[pos].next) {
        tree_[pos].parent = parse.current;
    }
}

/// Splices the child list of `pos`, which is the last child of `parent`, behind it; the parent
/// links of the lifted records are left to the caller. Levels stay as they were.
void MarkupDocument::liftChildren(int pos, int parent) {
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
