#pragma once

#include <array>
#include <string>
#include <string_view>
#include <vector>

/// Counts the tags of a text by name and nesting: pushing a tag tells how many of its name its
/// parent has had so far, which numbers elements in paths and checks text to be inserted.
class ElemStack {
  public:
    static constexpr int slotCount = 23;
    static constexpr int initialTags = 7;

    explicit ElemStack(bool ignoreCase = false) : ignoreCase_(ignoreCase) { slots_.fill(0); }

    /// Makes room for `n` tags in all; pushing does it by itself, doubling from `initialTags`.
    void Alloc(int n) { tags_.reserve(static_cast<std::size_t>(n < 0 ? 0 : n)); }

    /// Opens a tag inside the current one and returns how many tags of this name, itself included,
    /// have been opened there.
    int PushTagAndCount(std::string_view name);

    /// Closes the current tag. Does nothing when none is open.
    void PopTag();

    /// Number of open tags.
    int depth() const { return depth_; }

    /// The slot of a name: the sum of its bytes as signed 8-bit values, with 32 added for each "A"
    /// to "Z" when `ignoreCase` is set, modulo 23 as an unsigned number; 0 for an empty name.
    static int CalcSlot(const char* name, int length, bool ignoreCase);

  private:
    /// One name at one place of nesting; links are indices into the tags from 1, 0 means none.
    struct Tag {
        std::string name;
        int count;
        int parent;
        int nextInSlot;
    };

    std::vector<Tag> tags_;
    std::array<int, slotCount> slots_;
    int current_ = 0;
    int depth_ = 0;
    bool ignoreCase_;
};
