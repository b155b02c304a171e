#include "markup/TextBuffer.h"

#include <sys/mman.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <new>

namespace {

constexpr std::size_t hugePage = std::size_t{1} << 21;
/// Texts from here on get pages of their own: left to malloc they would add up, since hardly two
/// are of one size.
constexpr std::size_t leastMapped = std::size_t{1} << 20;

/// Maps at least `size` bytes that begin a huge page and sets `size` to how many they are; null
/// when there are none to be had.
char* mapAligned(std::size_t& size) {
    if (size > SIZE_MAX - 2 * hugePage) {
        return nullptr;
    }
    // A last huge page that would be less than half used is not worth its memory.
    constexpr std::size_t page = 4096;
    const std::size_t inHugePages = (size + hugePage / 2) / hugePage * hugePage;
    const std::size_t wanted = std::max((size + page - 1) / page * page, inHugePages);
    const std::size_t whole = wanted + hugePage;
    void* const area =
        ::mmap(nullptr, whole, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (area == MAP_FAILED) {
        return nullptr;
    }
    char* const start = static_cast<char*>(area);
    const std::size_t before = -reinterpret_cast<std::uintptr_t>(area) % hugePage;
    char* const block = start + before;
    if (before != 0) {
        ::munmap(start, before);
    }
    ::munmap(block + wanted, whole - before - wanted);
    // Only a hint: where it is refused, pages are as usual.
    static_cast<void>(::madvise(block, inHugePages, MADV_HUGEPAGE));
    size = wanted;
    return block;
}

/// A mapping that its text no longer needs. One is kept for the next text: files come one after
/// another, and fresh pages would have to be cleared for each.
class SpareMapping {
  public:
    SpareMapping() = default;
    SpareMapping(const SpareMapping&) = delete;
    SpareMapping& operator=(const SpareMapping&) = delete;
    ~SpareMapping() { drop(); }

    /// Takes the mapping over, or gives it back to the system when it is too large to be kept.
    void keep(char* block, std::size_t size) {
        drop();
        if (size > mostKept) {
            ::munmap(block, size);
            return;
        }
        block_ = block;
        size_ = size;
    }

    /// Hands the mapping out, with its size, if it has `size` bytes and not many more; else gives
    /// it back to the system and returns null.
    char* take(std::size_t& size) {
        if (size > size_ || size < size_ / 4) {
            drop();
            return nullptr;
        }
        size = size_;
        size_ = 0;
        return block_;
    }

  private:
    static constexpr std::size_t mostKept = std::size_t{1} << 26;

    void drop() {
        if (size_ != 0) {
            ::munmap(block_, size_);
        }
        size_ = 0;
    }

    char* block_ = nullptr;
    std::size_t size_ = 0;
};

thread_local SpareMapping spare;

}  // namespace

void TextBuffer::Release::operator()(char* block) const {
    if (mapped != 0) {
        spare.keep(block, mapped);
    } else {
        std::free(block);
    }
}

char* TextBuffer::reset(std::size_t size) {
    if (size > capacity_) {
        clear();
        std::size_t capacity = size;
        const bool isMapped = size >= leastMapped;
        char* block = isMapped ? spare.take(capacity) : static_cast<char*>(std::malloc(size));
        if (isMapped && block == nullptr) {
            block = mapAligned(capacity);
        }
        if (block == nullptr) {
            throw std::bad_alloc();
        }
        data_ = {block, Release(isMapped ? capacity : 0)};
        capacity_ = capacity;
    }
    size_ = size;
    return data_.get();
}

void TextBuffer::assign(std::string_view text) {
    reset(text.size());
    if (!text.empty()) {
        std::memcpy(data_.get(), text.data(), text.size());
    }
}

void TextBuffer::clear() {
    data_.reset();
    size_ = 0;
    capacity_ = 0;
}
