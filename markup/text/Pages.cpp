// Small blocks come from malloc, large ones straight from the system: what is never touched costs
// nothing then, and blocks of ever other sizes leave no holes in malloc's memory.
//
// Touching memory for the first time costs more than parsing it, as the system clears each page and
// enters it in its tables; in huge pages it costs a tenth. But a huge page is taken whole with its
// first byte. So a block has them only where it will be filled, and the last one only if at least a
// quarter of it will be: else the rest of the block lies in usual pages.
//
// A file that is converted needs memory twice, for its bytes and for the text. The bytes are read
// once, from start to end, so what has been read is given back while the text grows (discard), and
// both never lie in memory at once. It is done by huge pages, which are not broken up.

#include "markup/text/Pages.h"

#include <sys/mman.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <new>

namespace {

// Bytes of the pages that x86-64 has.
constexpr std::size_t page = 4096;
constexpr std::size_t hugePage = std::size_t{1} << 21;

/// Maps `size` bytes, whole pages; null when there are none to be had.
char* map(std::size_t size) {
    void* const area =
        ::mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    return area == MAP_FAILED ? nullptr : static_cast<char*>(area);
}

/// The same from where a huge page begins, with huge pages for the first `inHugePages` bytes.
char* mapHuge(std::size_t size, std::size_t inHugePages) {
    // One more than needed, so that a huge page begins within the first; what is too much goes
    // back.
    const std::size_t whole = size + hugePage;
    char* const area = map(whole);
    if (area == nullptr) {
        return nullptr;
    }
    const std::size_t before = -reinterpret_cast<std::uintptr_t>(area) % hugePage;
    char* const block = area + before;
    if (before != 0) {
        ::munmap(area, before);
    }
    ::munmap(block + size, whole - before - size);
    // Only a hint: where it is refused, pages are as usual.
    static_cast<void>(::madvise(block, inHugePages, MADV_HUGEPAGE));
    return block;
}

}  // namespace

Pages::Pages(std::size_t size, PageSize pages) : size_(size) {
    if (size > SIZE_MAX / 2) {
        throw std::bad_alloc();
    }
    if (isLarge(size)) {
        const std::size_t inHugePages =
            pages == huge ? (size + hugePage / 4 * 3) / hugePage * hugePage : 0;
        size_ = std::max((size + page - 1) / page * page, inHugePages);
        data_ = inHugePages != 0 ? mapHuge(size_, inHugePages) : map(size_);
    } else {
        data_ = static_cast<char*>(std::malloc(size == 0 ? 1 : size));
    }
    if (data_ == nullptr) {
        throw std::bad_alloc();
    }
}

Pages::~Pages() {
    if (isLarge(size_)) {
        ::munmap(data_, size_);
    } else {
        std::free(data_);
    }
}

void Pages::discard(const char* begin, const char* end) {
    const std::size_t first = static_cast<std::size_t>(begin - data_) / hugePage * hugePage;
    const std::size_t last = static_cast<std::size_t>(end - data_) / hugePage * hugePage;
    if (isLarge(size_) && last > first) {
        static_cast<void>(::madvise(data_ + first, last - first, MADV_DONTNEED));
    }
}
