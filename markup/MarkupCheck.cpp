// The rules between records, position and text, each a sentence and the condition that it states.
// Those that follow links stand in a list of their own, behind the one that has found all links to
// name records.

#include "markup/Markup.h"

namespace {

struct Rule {
    bool holds;
    const char* text;
};

std::string firstBroken(std::initializer_list<Rule> rules) {
    for (const Rule& rule : rules) {
        if (!rule.holds) {
            return rule.text;
        }
    }
    return {};
}

}  // namespace

// Records are taken one after another, each with its neighbours: no list of children is walked, so
// that the time is linear and broken links end the check instead of leading it in a circle.
std::string MarkupDocument::checkInvariants() const {
    const int count = recordCount();
    std::string broken = firstBroken({
        {count >= 1 && count <= tree_.size(), "a document has a record 0 and no more than fit"},
        {count < 1 || tree_[0].start == 0, "record 0 starts with the text"},
    });
    for (int pos = 1; broken.empty() && pos < count; ++pos) {
        broken = checkRecord(pos);
        if (!broken.empty()) {
            broken += " (record " + std::to_string(pos) + ")";
        }
    }
    return broken.empty() ? checkPosition() : broken;
}

std::string MarkupDocument::checkRecord(int pos) const {
    const ElemPos& elem = tree_[pos];
    std::string broken = firstBroken({
        {isRecord(elem.parent) && isRecord(elem.child) && isRecord(elem.next) &&
             isRecord(elem.previous),
         "links name records"},
        {elem.start >= 0 && elem.length > 0, "an element has a place in the text"},
        {elem.start <= static_cast<int>(docText_.size()) - elem.length,
         "an element ends within the text"},
    });
    if (!broken.empty()) {
        return broken;
    }
    const ElemPos& parent = tree_[elem.parent];
    const int tagLength = startTagLength(pos);
    const bool isFirst = elem.hasFlag(ElemFlagFirst);
    return firstBroken({
        {docText_.view()[static_cast<std::size_t>(elem.start)] == '<',
         "an element starts with its tag"},
        {tagLength <= elem.length - elem.endTagLength(), "the tags lie within the element"},
        {elem.parent < pos && (elem.child == 0 || elem.child > pos),
         "parents come before children"},
        {isFirst == (parent.child == pos), "the first child is flagged, and no other"},
        {isFirst || tree_[elem.previous].next == pos, "next and previous agree"},
        {!isFirst || tree_[elem.previous].next == 0, "the first child's previous is the last"},
        {elem.next == 0 || tree_[elem.next].previous == pos, "previous and next agree"},
        {elem.next == 0 || tree_[elem.next].parent == elem.parent, "siblings share a parent"},
        {elem.next == 0 || tree_[elem.next].start >= elem.start + elem.length,
         "siblings follow one another"},
        {elem.parent == 0 || (elem.start > parent.start &&
                              elem.start + elem.length <= parent.start + parent.length),
         "a child lies within its parent"},
        {elem.child == 0 || tree_[elem.child].parent == pos, "a child knows its parent"},
        {!elem.hasFlag(ElemFlagUnended) || (elem.length == tagLength && elem.child == 0),
         "an unended element is its start tag"},
    });
}

std::string MarkupDocument::checkPosition() const {
    const auto size = static_cast<int>(docText_.size());
    const bool inRange = isRecord(pos_.parent) && isRecord(pos_.main) && isRecord(pos_.child);
    return firstBroken({
        {inRange, "the position names records"},
        {!inRange || pos_.main == 0 || tree_[pos_.main].parent == pos_.parent,
         "main is a child of parent"},
        {!inRange || pos_.child == 0 || (pos_.main != 0 && tree_[pos_.child].parent == pos_.main),
         "child is a child of main"},
        {pos_.nodeOffset >= 0 && pos_.nodeLength >= 0 && pos_.nodeOffset <= size - pos_.nodeLength,
         "the current node lies within the text"},
        {pos_.main == 0 || pos_.nodeType != 0, "on an element the node has a type"},
    });
}
