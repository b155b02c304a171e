// Moving the current position over elements and other nodes.

#include "markup/Markup.h"
#include "markup/text/CharClass.h"
#include "markup/text/NameCompare.h"

void MarkupDocument::setPos(int parent, int main, int child) {
    pos_ = {parent, main, child, main != 0 ? NodeElement : 0, 0, 0};
}

bool MarkupDocument::FindElem(const PathPos& path) {
    if (hasFlag(DocFlagWriteFile) || recordCount() == 0) {
        return false;
    }
    const int found = x_FindElem(pos_.parent, pos_.main, path);
    if (found == 0) {
        return false;
    }
    setPos(tree_[found].parent, found, 0);
    return true;
}

int MarkupDocument::x_FindElem(int parent, int from, const PathPos& path) const {
    if (!isRecord(parent) || !isRecord(from) ||
        (path.type != PathAny && path.type != PathRelative)) {
        return 0;
    }
    int pos = from != 0 ? tree_[from].next : tree_[parent].child;
    if (path.type == PathAny) {
        return pos;
    }
    const bool ignoreCase = hasFlag(DocFlagIgnoreCase);
    while (pos != 0 && !(ignoreCase ? markup::namesEqual(tagNameAt(pos), path.firstName(), true)
                                    : isCalled(pos, path))) {
        pos = tree_[pos].next;
    }
    return pos;
}

/// Whether the tag of record `pos` has the first name of the path, byte by byte: without looking
/// for the end of the tag's name first.
bool MarkupDocument::isCalled(int pos, const PathPos& path) const {
    const std::string_view text = docText_.view();
    const std::string_view name = path.firstName();
    const std::size_t first = static_cast<std::size_t>(tree_[pos].start) + 1;
    // A record fresh from x_GetFreePos lies nowhere in the text.
    if (first > text.size() || !path.mayNameTag() || !text.substr(first).starts_with(name)) {
        return false;
    }
    const std::size_t end = first + name.size();
    return end == text.size() || markup::isClass(text[end], ClassName);
}

bool MarkupDocument::FindChildElem(TextArg name) {
    if (inFileMode() || recordCount() == 0) {
        return false;
    }
    if (pos_.main == 0 && !FindElem()) {
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

/// Recognised by where the node ends: the end tag length in the record may be cut off.
bool MarkupDocument::isEndTagOf(int parent, const NodePos& node) const {
    return parent != 0 && node.start + node.length == tree_[parent].start + tree_[parent].length;
}

int MarkupDocument::FindNode(int typeMask) {
    const int start = recordCount() == 0 ? -1 : nodeSearchStart();
    if (start < 0) {
        return 0;
    }
    TokenPos token(docText_.view(), docFlags_, start);
    NodePos node;
    int lastElem = pos_.main;
    while (true) {
        int type = token.ParseNode(node);
        if (type == NodeEndOfText || (type == NodeEndTag && isEndTagOf(pos_.parent, node))) {
            return 0;
        }
        if (type == NodeEndTag) {
            type = NodeLoneEndTag;
        } else if (type == NodeSyntaxError) {
            type = NodeError;
        }
        if (type == NodeElement) {
            lastElem = lastElem != 0 ? tree_[lastElem].next : tree_[pos_.parent].child;
            if (lastElem == 0) {
                return 0;
            }
            token.next = tree_[lastElem].start + tree_[lastElem].length;
        }
        if (typeMask != 0 && (typeMask & type) == 0) {
            continue;
        }
        if (type == NodeElement) {
            setPos(pos_.parent, lastElem, 0);
        } else {
            pos_ = {pos_.parent, lastElem, 0, type, node.start, node.length};
        }
        return type;
    }
}

bool MarkupDocument::SavePos(TextArg name, int map) {
    SavedPosMap* const positions = inFileMode() || name.isNull() ? nullptr : savedPos_.GetMap(map);
    if (positions == nullptr) {
        return false;
    }
    SavedPos entry{std::string(name.view()), pos_.parent, 0};
    if (pos_.child != 0) {
        entry.pos = pos_.child;
        entry.flags = SavedPosChild;
    } else if (pos_.main != 0) {
        entry.pos = pos_.main;
        entry.flags = SavedPosMain;
    }
    positions->Save(std::move(entry));
    return true;
}

bool MarkupDocument::RestorePos(TextArg name, int map) {
    SavedPosMap* const positions = inFileMode() || name.isNull() ? nullptr : savedPos_.GetMap(map);
    const SavedPos* const entry = positions == nullptr ? nullptr : positions->Find(name.view());
    if (entry == nullptr) {
        return false;
    }
    if (entry->flags == SavedPosChild) {
        const int main = tree_[entry->pos].parent;
        setPos(tree_[main].parent, main, entry->pos);
    } else if (entry->flags == SavedPosMain) {
        setPos(tree_[entry->pos].parent, entry->pos, 0);
    } else {
        setPos(entry->pos, 0, 0);
    }
    return true;
}

bool MarkupDocument::SetMapSize(int size, int map) {
    return !inFileMode() && savedPos_.SetMapSize(size, map);
}

void MarkupDocument::x_CheckSavedPos() {
    savedPos_.KeepOnly([this](int pos) {
        return pos >= 0 && pos < recordCount() && !tree_[pos].hasFlag(ElemFlagDeleted);
    });
}
