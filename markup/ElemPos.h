#pragma once

#include <cstdint>

/// Flags in the upper half of `ElemPos::levelAndFlags`.
enum ElemFlag : std::uint32_t {
    ElemFlagDeleted = 0x20000,   ///< the record was released and is on the deleted list
    ElemFlagFirst = 0x80000,     ///< the record is the first child of its parent
    ElemFlagUnended = 0x100000,  ///< the start tag was never closed
    ElemFlagIllData = 0x200000,  ///< a lone end tag or a syntax error lies directly in its content
    ElemFlagIllFormed =
        0x800000,  ///< anything in the parse that ran under this record was ill-formed
};

/// Where one element lies in the document text and how it is linked to its neighbours. Links are
/// record indices; 0 is the document itself and means "none".
///
/// Left uninitialised on purpose: pages of records are handed out untouched and each record is
/// set whole when the parser takes it.
struct ElemPos {
    std::int32_t start;   ///< offset of the "<" of the start tag
    std::int32_t length;  ///< through the end tag's ">"; of an empty or unended element, of its tag
    /// Bits 0-21: length of the start tag; bits 22-31: length of the end tag, 0 when it has none.
    /// Longer tags keep only their low bits; `MarkupDocument::startTagLength` works out the rest.
    std::uint32_t tagLengths;
    std::uint32_t levelAndFlags;  ///< bits 0-15: nesting depth, its low 16 bits; above: `ElemFlag`
    std::int32_t parent;
    std::int32_t child;     ///< the first child
    std::int32_t next;      ///< the next sibling, 0 for the last
    std::int32_t previous;  ///< the previous sibling; the first child's is the last child

    static constexpr int startTagBits = 22;
    static constexpr std::uint32_t startTagMask = (1U << startTagBits) - 1;
    static constexpr std::uint32_t levelMask = 0xFFFF;

    int packedStartTagLength() const { return static_cast<int>(tagLengths & startTagMask); }
    int endTagLength() const { return static_cast<int>(tagLengths >> startTagBits); }
    int level() const { return static_cast<int>(levelAndFlags & levelMask); }
    bool hasFlag(ElemFlag flag) const { return (levelAndFlags & flag) != 0; }
    void setFlag(ElemFlag flag) { levelAndFlags |= flag; }
    void clearFlag(ElemFlag flag) { levelAndFlags &= ~static_cast<std::uint32_t>(flag); }

    /// Notes a start tag of `tagBytes` bytes at offset `at`, which makes the element unless an end
    /// tag follows. A level beyond 16 bits keeps its low bits: it must not run into the flags.
    void open(int at, int tagBytes, int level) {
        start = at;
        length = tagBytes;
        tagLengths = static_cast<std::uint32_t>(tagBytes) & startTagMask;
        levelAndFlags = static_cast<std::uint32_t>(level) & levelMask;
    }
    /// Notes an end tag of `tagBytes` bytes, which ends at offset `end`. The record keeps the low
    /// 10 bits of them; what that cuts off is told apart by the readers.
    void close(int end, int tagBytes) {
        length = end - start;
        tagLengths =
            (tagLengths & startTagMask) | (static_cast<std::uint32_t>(tagBytes) << startTagBits);
    }
};

static_assert(sizeof(ElemPos) == 32, "the memory of a document is counted in these");
