#pragma once

#include <vector>

#include "markup/ElemPos.h"
#include "markup/text/Pages.h"

/// The element position records of a document, in pages of 65,536, so that growth never moves more
/// than one page. Records are addressed by index; what a fresh record holds is not defined.
class ElemPosTree {
  public:
    static constexpr int pageBits = 16;
    static constexpr int pageRecords = 1 << pageBits;

    /// Number of records that may be addressed.
    int size() const { return size_; }

    /// Record `index`. Requires: 0 <= index < size().
    ElemPos& operator[](int index) { return records(page(index))[slot(index)]; }
    const ElemPos& operator[](int index) const { return records(page(index))[slot(index)]; }

    /// Grows to `newSize` records, but by no more than one page beyond the current last one: the
    /// caller repeats until `size()` is enough. Does nothing when newSize is not above size().
    void GrowElemPosTree(int newSize);

    /// Tells whether what the tree is grown to will be used: pages may then be huge ones.
    void expectFull(bool isExpected) { isFullExpected_ = isExpected; }

    /// Frees every page.
    void Clear();

  private:
    static std::size_t page(int index) { return static_cast<std::size_t>(index) >> pageBits; }
    static std::size_t slot(int index) {
        return static_cast<std::size_t>(index) & (pageRecords - 1);
    }
    ElemPos* records(std::size_t page) const { return records_[page]; }
    void replacePage(std::size_t index, int keep, int count);

    std::vector<Pages> pages_;
    std::vector<ElemPos*> records_;  ///< where each page begins
    int size_ = 0;
    bool isFullExpected_ = false;
};
