#include "converter/HeapTuning.h"

#include <malloc.h>
#include <sys/mman.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <utility>

namespace heap {

namespace {

constexpr std::size_t hugePage = std::size_t{1} << 21;

}  // namespace

void keepFreedMemory() {
    ::mallopt(M_MMAP_THRESHOLD, 32 << 20);  // the largest that malloc accepts
    ::mallopt(M_TRIM_THRESHOLD, -1);
}

// The C library can be told to use huge pages, but only by an environment variable. So its heap is
// made to end where a huge page begins: a block that reaches beyond the next one is cut down to end
// there, and what was cut off is what malloc hands out from then on. The block itself is never
// touched and hence takes no memory; it is not freed, or it would be handed out first.
void useHugePage() {
    static bool isDone = false;
    if (std::exchange(isDone, true)) {
        return;
    }
    static char* untouched = nullptr;
    untouched = static_cast<char*>(std::malloc(2 * hugePage));
    if (untouched == nullptr) {
        return;
    }
    const std::size_t before = -reinterpret_cast<std::uintptr_t>(untouched) % hugePage;
    // Only a hint: where it is refused, pages are as usual.
    static_cast<void>(::madvise(untouched + before, hugePage, MADV_HUGEPAGE));
    void* const shrunk = std::realloc(untouched, before > 64 ? before - 64 : 1);
    untouched = shrunk != nullptr ? static_cast<char*>(shrunk) : untouched;
}

}  // namespace heap
