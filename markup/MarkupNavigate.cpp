// Moving the current position over elements and other nodes. Elements are found by the links of
// their records; the nodes between them have none, and are tokenized again on the way.

#include "markup/Markup.h"
#include "markup/text/CharClass.h"
#include "markup/text/NameCompare.h"

/// Moves to an element, or before the first at its level when `main` is 0; never to another node.
void MarkupDocument::setPos(int parent, int main, int child) {
    pos_ = {parent, main, child, main != 0 ? NodeElement : 0, 0, 0};
}

bool MarkupDocument::FindElem(const PathPos& path) {
    const bool mayFind = !hasFlag(DocFlagWriteFile) && recordCount() != 0;
    const int found = mayFind ? x_FindElem(pos_.parent, pos_.main, path) : 0;
    if (found == 0) {
        return false;
    }
    setPos(tree_[found].parent, found, 0);
    return true;
}

int MarkupDocument::x_FindElem(int parent, int from, const PathPos& path) const {
    if (!isRecord(parent) || !isRecord(from)) {
        return 0;
    }
    int pos = from != 0 ? tree_[from].next : tree_[parent].child;
    if (path.type == PathAny) {
        return pos;
    }
    if (path.type != PathRelative || !path.mayNameTag()) {
        return 0;
    }
    return pos == 0 ? 0 : findNamed(pos, path.firstName());
}

/// The first element called `name` among sibling `pos` and those behind it; 0 when there is none. A
/// damaged file may have each of many siblings ask for a name that none of them has: they are
/// looked through for it once.
int MarkupDocument::findNamed(int pos, std::string_view name) const {
    const int parent = tree_[pos].parent;
    const int start = tree_[pos].start;
    if (!vainSearches_.empty()) {
        const auto search = vainSearches_.find({parent, std::string(name)});
        if (search != vainSearches_.end() && search->second <= start) {
            return 0;
        }
    }
    int length = 0;
    for (; pos != 0 && !isCalled(pos, name); ++length) {
        pos = tree_[pos].next;
    }
    constexpr int longLength = 64;  // a shorter one costs less than to remember it
    if (pos == 0 && length > longLength) {
        vainSearches_[{parent, std::string(name)}] = start;
    }
    return pos;
}

/// Whether the tag of record `pos` has this name, which may be one: its end in the tag need not be
/// looked for then.
bool MarkupDocument::isCalled(int pos, std::string_view name) const {
    const std::string_view text = behindTagMark(pos);
    const std::size_t end = name.size();
    return markup::namesEqual(text.substr(0, end), name, hasFlag(DocFlagIgnoreCase)) &&
           (end == text.size() || markup::isClass(text[end], ClassName));
}

bool MarkupDocument::FindChildElem(TextArg name) {
    if (inFileMode() || recordCount() == 0 || (pos_.main == 0 && !FindElem())) {
        return false;
    }
    const int found = x_FindElem(pos_.main, pos_.child, PathPos::parsed(name));
    if (found == 0) {
        return false;
    }
    const int main = tree_[found].parent;
    setPos(tree_[main].parent, main, found);
    return true;
}

bool MarkupDocument::IntoElem() {
    if (pos_.main == 0 || pos_.nodeType != NodeElement) {
        return false;
    }
    setPos(pos_.main, pos_.child, 0);
    return true;
}

bool MarkupDocument::OutOfElem() {
    if (pos_.parent == 0) {
        return false;
    }
    setPos(tree_[pos_.parent].parent, pos_.parent, pos_.main);
    return true;
}

/// Where FindNode starts to scan: behind the current node, else at the start of the parent's
/// content; -1 when the parent has no content.
int MarkupDocument::nodeSearchStart() const {
    if (isOnOtherNode()) {
        return pos_.nodeOffset + pos_.nodeLength;
    }
    if (pos_.main != 0) {
        return tree_[pos_.main].start + tree_[pos_.main].length;
    }
    if (pos_.parent == 0) {
        return 0;
    }
    const int tagLength = startTagLength(pos_.parent);
    return tagLength == tree_[pos_.parent].length ? -1 : tree_[pos_.parent].start + tagLength;
}

/// Scans the next node and returns its type as FindNode does; 0 where the parent or the text ends.
int MarkupDocument::nextNode(TokenPos& token, NodePos& node) const {
    const ElemPos& parent = tree_[pos_.parent];
    switch (token.ParseNode(node)) {
        case NodeEndOfText:
            return 0;
        case NodeEndTag:
            // The parent's is known by where it ends: the length in the record may be cut off.
            return pos_.parent != 0 && node.start + node.length == parent.start + parent.length
                       ? 0
                       : NodeLoneEndTag;
        case NodeSyntaxError:
            return NodeError;
        default:
            return node.type;
    }
}

int MarkupDocument::FindNode(int typeMask) {
    const int start = recordCount() == 0 ? -1 : nodeSearchStart();
    if (start < 0) {
        return 0;
    }
    TokenPos token = tokenAt(start);
    NodePos node;
    int elem = pos_.main;
    while (true) {
        const int type = nextNode(token, node);
        const bool isElem = type == NodeElement;
        if (isElem) {
            elem = elem != 0 ? tree_[elem].next : tree_[pos_.parent].child;
        }
        if (type == 0 || (isElem && elem == 0)) {
            return 0;
        }
        if (typeMask == 0 || (typeMask & type) != 0) {
            // On another node the main element is the last one passed: a search goes on behind it.
            pos_ = {pos_.parent, elem, 0, type, isElem ? 0 : node.start, isElem ? 0 : node.length};
            return type;
        }
        if (isElem) {  // what it holds is passed over by its record
            token.next = tree_[elem].start + tree_[elem].length;
        }
    }
}

bool MarkupDocument::SavePos(TextArg name, int map) {
    SavedPosMap* const positions = inFileMode() || name.isNull() ? nullptr : savedPos_.GetMap(map);
    if (positions == nullptr) {
        return false;
    }
    positions->Save(name.view(), pos_.child != 0  ? SavedPos{pos_.child, SavedPosChild}
                                 : pos_.main != 0 ? SavedPos{pos_.main, SavedPosMain}
                                                  : SavedPos{pos_.parent, 0});
    return true;
}

bool MarkupDocument::RestorePos(TextArg name, int map) {
    SavedPosMap* const positions = inFileMode() || name.isNull() ? nullptr : savedPos_.GetMap(map);
    const SavedPos* const entry = positions == nullptr ? nullptr : positions->Find(name.view());
    if (entry == nullptr) {
        return false;
    }
    const int pos = entry->pos;
    if (entry->flags == 0) {
        setPos(pos, 0, 0);
    } else if (entry->flags == SavedPosMain) {
        setPos(tree_[pos].parent, pos, 0);
    } else {
        setPos(tree_[tree_[pos].parent].parent, tree_[pos].parent, pos);
    }
    return true;
}

bool MarkupDocument::SetMapSize(int size, int map) {
    return !inFileMode() && savedPos_.SetMapSize(size, map);
}

void MarkupDocument::x_CheckSavedPos() {
    savedPos_.KeepOnly(
        [this](int pos) { return isRecord(pos) && !tree_[pos].hasFlag(ElemFlagDeleted); });
}
