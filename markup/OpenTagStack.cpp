// In a document without mistakes the innermost tag is always the one to close, and nothing but the
// stack is needed. The index is for files that are broken on purpose: with 700,000 open tags, each
// of 700,000 end tags that close none would be compared with all of them. So as not to pay for it
// in vain, tags are entered when an end tag first fails to close the innermost one, and then only
// those pushed since the last time.
//
// A node is reached by as many segments as the name was cut into, each compared once: entering a
// name, and finding one, takes time linear in its length, also for a name made of "=" alone.

#include "markup/OpenTagStack.h"

#include "markup/text/CharClass.h"
#include "markup/text/NameCompare.h"

namespace {

/// True when the end tag `endName` closes a tag called `name`.
bool closes(std::string_view endName, std::string_view name, bool ignoreCase) {
    if (endName.size() > name.size() ||
        (endName.size() < name.size() && !markup::isClass(name[endName.size()], ClassPathName))) {
        return false;
    }
    return markup::namesEqual(endName, name.substr(0, endName.size()), ignoreCase);
}

/// Cuts the first segment off `name`: up to the next byte, beyond the first, that may end the name
/// of an open tag. An empty first segment stands before a name that begins with such a byte.
std::string_view cutSegment(std::string_view& name, bool isFirst) {
    std::size_t end = isFirst ? 0 : 1;
    while (end < name.size() && !markup::isClass(name[end], ClassPathName)) {
        ++end;
    }
    const std::string_view segment = name.substr(0, end);
    name.remove_prefix(segment.size());
    return segment;
}

}  // namespace

void OpenTagStack::pop() {
    // Entries are undone in the reverse order, so that each node has again what it had before.
    const int popped = depth();
    tags_.pop_back();
    while (!entries_.empty() && entries_.back().depth == popped) {
        at(entries_.back()).depth = entries_.back().outerDepth;
        entries_.pop_back();
    }
    entered_ = entered_ < popped ? entered_ : popped - 1;
}

int OpenTagStack::findMatch(std::string_view endName) {
    if (tags_.empty()) {
        return 0;
    }
    if (closes(endName, top().name(), ignoreCase_)) {
        return depth();
    }
    enterPending();
    const std::string folded = ignoreCase_ ? markup::foldName(endName) : std::string();
    std::string_view rest = ignoreCase_ ? std::string_view(folded) : endName;
    int node = 0;
    bool isFirst = true;
    do {
        node = findChild(node, cutSegment(rest, isFirst));
        if (node == 0) {
            return 0;
        }
        isFirst = false;
    } while (!rest.empty());
    return nodes_[static_cast<std::size_t>(node)].depth;
}

/// The child that continues a node's name by `segment`, 0 for none.
int OpenTagStack::findChild(int node, std::string_view segment) const {
    const Node& parent = nodes_[static_cast<std::size_t>(node)];
    if (parent.firstChild == 0 || parent.firstSegment == segment) {
        return parent.firstChild;
    }
    const auto found = otherChildren_.find({node, segment});
    return found == otherChildren_.end() ? 0 : found->second;
}

/// Adds such a child; the bytes of `segment` must stay as long as the index does.
int OpenTagStack::addChild(int node, std::string_view segment) {
    const int child = static_cast<int>(nodes_.size());
    nodes_.emplace_back();
    Node& parent = nodes_[static_cast<std::size_t>(node)];
    if (parent.firstChild == 0) {
        parent.firstChild = child;
        parent.firstSegment = segment;
    } else {
        otherChildren_.emplace(Key{node, segment}, child);
    }
    return child;
}

/// Enters the tags pushed since the last time.
void OpenTagStack::enterPending() {
    if (nodes_.empty()) {
        nodes_.emplace_back();
    }
    while (entered_ < depth()) {
        enter(++entered_);
    }
}

/// Enters the tag at `depth` at the node of each name that may end it.
void OpenTagStack::enter(int depth) {
    std::string_view rest = at(depth).name();
    if (ignoreCase_) {
        rest = folded_.emplace_front(markup::foldName(rest));
    }
    int node = 0;
    bool isFirst = true;
    do {
        const std::string_view segment = cutSegment(rest, isFirst);
        const int child = findChild(node, segment);
        node = child != 0 ? child : addChild(node, segment);
        int& innermost = nodes_[static_cast<std::size_t>(node)].depth;
        entries_.push_back({node, depth, innermost});
        innermost = depth;
        isFirst = false;
    } while (!rest.empty());
}
