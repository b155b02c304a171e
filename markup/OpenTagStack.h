#pragma once

#include <forward_list>
#include <map>
#include <string>
#include <string_view>
#include <vector>

/// The parser's stack of open tags, with an index that finds the innermost tag an end tag closes
/// without walking the stack, however deep it is.
///
/// An end tag closes an open tag when its name equals the tag's name up to the end of that name or
/// up to a "=", "[" or "]" in it: "</a>" closes "<a>" and "<a=1>", "</a=1>" does not close "<a>".
/// The index is a tree of names cut before each of these bytes; every open tag is entered at the
/// node of each prefix that an end tag may name. It is built only when an end tag does not close
/// the innermost tag, which in a well-formed document never happens.
class OpenTagStack {
  public:
    /// Kept small: a hostile file has as many open tags as records.
    struct Tag {
        const char* nameStart;  ///< the name as in its start tag, in the document text
        int nameLength;
        int elem;  ///< its element record

        std::string_view name() const { return {nameStart, static_cast<std::size_t>(nameLength)}; }
    };

    explicit OpenTagStack(bool ignoreCase) : ignoreCase_(ignoreCase) { tags_.reserve(7); }

    /// Number of open tags; also the depth of the innermost one.
    int depth() const { return static_cast<int>(tags_.size()); }
    /// The tag at `depth`. Requires: 1 <= depth <= depth().
    const Tag& at(int depth) const { return tags_[static_cast<std::size_t>(depth) - 1]; }
    /// Requires: depth() > 0.
    const Tag& top() const { return tags_.back(); }

    void push(int elem, std::string_view name) {
        tags_.push_back({name.data(), static_cast<int>(name.size()), elem});
    }
    void pop();

    /// The depth of the innermost tag that an end tag of this name closes, 0 when there is none.
    int findMatch(std::string_view endName);

  private:
    struct Key {
        int parent;                ///< node of the part of the name before the segment, 0 = root
        std::string_view segment;  ///< begins with the byte that it was cut before
        bool operator<(const Key& other) const {
            return parent != other.parent ? parent < other.parent : segment < other.segment;
        }
    };
    struct Node {
        int depth = 0;       ///< depth of the innermost tag entered here, 0 = none
        int firstChild = 0;  ///< kept apart from the others: most nodes of long names have only one
        std::string_view firstSegment;
    };
    /// An open tag at a node, and the depth that stood there before it.
    struct Entry {
        int node;
        int depth;
        int outerDepth;
    };

    void enterPending();
    void enter(int depth);
    int findChild(int node, std::string_view segment) const;
    int addChild(int node, std::string_view segment);
    Node& at(Entry entry) { return nodes_[static_cast<std::size_t>(entry.node)]; }

    bool ignoreCase_;
    std::vector<Tag> tags_;
    int entered_ = 0;                   ///< tags up to this depth are in the index
    std::vector<Node> nodes_;           ///< by number; 0 is the root
    std::map<Key, int> otherChildren_;  ///< numbers of the children that aren't their node's first
    std::vector<Entry> entries_;        ///< in the order of entering; undone from the back
    std::forward_list<std::string> folded_;  ///< owns the folded names that keys view
};
