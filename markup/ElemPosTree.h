#pragma once

#include <vector>

#include "markup/ElemPos.h"
#include "markup/text/Pages.h"

/// The element position records of a document, in pages of 65,536, so that growth never moves more
/// than one page. Records are addressed by index and handed out one after another; record 0 is the
/// document's own. What a record holds that was not handed out is not defined.
class ElemPosTree {
  public:
    static constexpr int pageBits = 16;
    static constexpr int pageRecords = 1 << pageBits;

    /// Number of records that may be addressed.
    int size() const { return size_; }
    /// Number of records handed out, the document's own included; 0 while there is no room for any.
    int count() const { return size_ == 0 ? 0 : free_; }

    /// Record `index`. Requires: 0 <= index < size().
    ElemPos& operator[](int index) { return records_[page(index)][slot(index)]; }
    const ElemPos& operator[](int index) const { return records_[page(index)][slot(index)]; }

    /// Hands out the next record, all zero, and returns its index.
    int take() {
        if (free_ == size_) {
            grow();
        }
        (*this)[free_] = {};
        return free_++;
    }
    /// Puts record `index` on the list of deleted ones, none of which is handed out again, and
    /// returns its former next link. Requires: 0 < index < count(), and it is not on the list.
    int release(int index);

    /// Makes room for `n` records; 0 means half as many again as are handed out.
    void reserve(int n);
    /// Grows to `newSize` records, but by no more than one page beyond the current last one: the
    /// caller repeats until `size()` is enough. Does nothing when newSize is not above size().
    void GrowElemPosTree(int newSize);

    /// Takes all records back but the document's own, which becomes all zero. Needs no memory.
    void restart() noexcept;
    /// Frees every page.
    void Clear();

  private:
    static std::size_t page(int index) { return static_cast<std::size_t>(index) >> pageBits; }
    static std::size_t slot(int index) {
        return static_cast<std::size_t>(index) & (pageRecords - 1);
    }
    void grow();
    void replacePage(std::size_t index, int keep, int count);

    std::vector<Pages> pages_;
    std::vector<ElemPos*> records_;  ///< where each page begins
    int size_ = 0;
    int free_ = 0;     ///< the next record to hand out
    int deleted_ = 0;  ///< the record released last, linked to those before by `next`; 0 for none
};
