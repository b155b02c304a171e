#include "markup/TextBuffer.h"

#include <cstring>

namespace {

/// A mapped block that its text no longer needs. One is kept for the next text: files come one
/// after another, and fresh pages would have to be cleared for each.
thread_local MemoryBlock spare;
constexpr std::size_t mostKept = std::size_t{1} << 26;

}  // namespace

char* TextBuffer::reset(std::size_t size) {
    if (size > block_.size()) {
        clear();
        // Neither too small nor so large that another text would keep much memory for nothing.
        const bool spareFits = size <= spare.size() && size >= spare.size() / 4;
        MemoryBlock kept = std::move(spare);
        block_ = spareFits ? std::move(kept) : MemoryBlock(size, MemoryBlock::HugePages);
    }
    size_ = size;
    return block_.data();
}

void TextBuffer::assign(std::string_view text) {
    reset(text.size());
    if (!text.empty()) {
        std::memcpy(block_.data(), text.data(), text.size());
    }
}

void TextBuffer::clear() noexcept {
    size_ = 0;
    MemoryBlock given = std::move(block_);
    if (given.isMapped() && given.size() <= mostKept) {
        spare = std::move(given);
    }
}
