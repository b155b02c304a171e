#include "markup/TextBuffer.h"

#include <sys/mman.h>

#include <cstring>
#include <new>

namespace {

constexpr std::size_t hugePage = std::size_t{1} << 21;

/// Memory from malloc or, when it fills a huge page, in huge pages.
char* allocate(std::size_t& size) {
    if (size < hugePage) {
        return static_cast<char*>(std::malloc(size));
    }
    if (size > SIZE_MAX - hugePage) {
        return nullptr;
    }
    size = (size + hugePage - 1) / hugePage * hugePage;
    char* const block = static_cast<char*>(std::aligned_alloc(hugePage, size));
    if (block != nullptr) {
        // Only a hint: where it is refused, pages are as usual.
        static_cast<void>(::madvise(block, size, MADV_HUGEPAGE));
    }
    return block;
}

}  // namespace

char* TextBuffer::reset(std::size_t size) {
    if (size > capacity_) {
        clear();
        std::size_t capacity = size;
        data_.reset(allocate(capacity));
        if (!data_) {
            throw std::bad_alloc();
        }
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
