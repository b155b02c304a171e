#include "markup/text/Pages.h"

#include <sys/mman.h>

#include <cstdint>
#include <cstdlib>
#include <new>

namespace {

constexpr std::size_t page = 4096;
constexpr std::size_t hugePage = std::size_t{1} << 21;

/// Maps memory; null when there is none.
char* map(std::size_t size) {
    void* const area =
        ::mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    return area == MAP_FAILED ? nullptr : static_cast<char*>(area);
}

/// Maps `size` bytes, whole pages, that begin a huge page; null when there are none to be had.
char* mapAligned(std::size_t size) {
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
    return block;
}

/// Maps at least `size` bytes in huge pages and sets `size` to how many they are.
char* mapHuge(std::size_t& size) {
    // A last huge page of which three quarters would be unused is not worth its memory.
    const std::size_t inHugePages = (size + hugePage / 4 * 3) / hugePage * hugePage;
    size = size > inHugePages ? size : inHugePages;
    char* const block = mapAligned(size);
    if (block != nullptr && inHugePages != 0) {
        // Only a hint: where it is refused, pages are as usual.
        static_cast<void>(::madvise(block, inHugePages, MADV_HUGEPAGE));
    }
    return block;
}

}  // namespace

Pages::Pages(std::size_t size, PageSize pages) : size_(size), isMapped_(isLarge(size)) {
    if (size > SIZE_MAX / 2) {
        throw std::bad_alloc();
    }
    if (isMapped_) {
        size_ = (size + page - 1) / page * page;
        data_ = pages == huge ? mapHuge(size_) : map(size_);
    } else {
        data_ = static_cast<char*>(std::malloc(size == 0 ? 1 : size));
    }
    if (data_ == nullptr) {
        throw std::bad_alloc();
    }
}

Pages::~Pages() {
    if (data_ != nullptr && isMapped_) {
        ::munmap(data_, size_);
    } else {
        std::free(data_);
    }
}

void Pages::discard(const char* end) {
    // Huge pages are not broken up.
    const std::size_t whole = static_cast<std::size_t>(end - data_) / hugePage * hugePage;
    if (isMapped_ && whole > discarded_) {
        static_cast<void>(::madvise(data_ + discarded_, whole - discarded_, MADV_DONTNEED));
        discarded_ = whole;
    }
}
