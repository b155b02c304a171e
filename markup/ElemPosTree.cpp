// Every page but the last is full, so that an index is split into page and slot by its bits. Only
// the last page is ever replaced by a larger one, and only its records are copied: one array of all
// records would move every record each time it grew, and need the memory of both while it does.

#include "markup/ElemPosTree.h"

#include <algorithm>

void ElemPosTree::GrowElemPosTree(int newSize) {
    if (newSize <= size_) {
        return;
    }
    // An empty tree counts as one page without records.
    const std::size_t last = size_ == 0 ? 0 : page(size_ - 1);
    const std::size_t pageCount = last + 1;
    std::size_t target = page(newSize - 1);
    if (target > pageCount) {
        target = pageCount;
        newSize = static_cast<int>((pageCount + 1) << pageBits);
    }
    // Where there is no memory for what follows, the tree stays as large as it was.
    const int usedInLast = size_ - static_cast<int>(last << pageBits);
    if (target >= pages_.capacity()) {
        pages_.reserve(target * 2 + 4);
        records_.reserve(pages_.capacity());
    }
    pages_.resize(std::max(pages_.size(), target + 1));
    records_.resize(pages_.size());
    if (target > last && usedInLast < pageRecords) {
        replacePage(last, usedInLast, pageRecords);
    }
    replacePage(target, target == last ? usedInLast : 0,
                newSize - static_cast<int>(target << pageBits));
    size_ = newSize;
}

int ElemPosTree::release(int index) {
    ElemPos& record = (*this)[index];
    const int next = record.next;
    record.levelAndFlags = ElemFlagDeleted;
    record.next = deleted_;
    deleted_ = index;
    return next;
}

/// Makes room for half as many records again, and for eight at least.
void ElemPosTree::grow() {
    GrowElemPosTree(std::max({size_ + size_ / 2, size_ + 1, 8}));
}

void ElemPosTree::reserve(int n) {
    const int wanted = n == 0 ? free_ + free_ / 2 : n;
    while (size_ < wanted) {
        GrowElemPosTree(wanted);
    }
}

void ElemPosTree::restart() noexcept {
    free_ = 1;
    deleted_ = 0;
    if (size_ != 0) {
        (*this)[0] = {};
    }
}

void ElemPosTree::Clear() {
    std::vector<Pages>().swap(pages_);
    std::vector<ElemPos*>().swap(records_);
    size_ = 0;
    free_ = 0;
    deleted_ = 0;
}

/// Puts a page of `count` records, the first `keep` as they were, in the place of page `index`.
void ElemPosTree::replacePage(std::size_t index, int keep, int count) {
    // Once a page is full the next one is likely to be, and a full one is just a huge page.
    Pages fresh(static_cast<std::size_t>(count) * sizeof(ElemPos),
                index > 0 ? Pages::huge : Pages::usual);
    std::copy_n(records_[index], keep, reinterpret_cast<ElemPos*>(fresh.data()));
    pages_[index] = std::move(fresh);
    records_[index] = reinterpret_cast<ElemPos*>(pages_[index].data());
}
