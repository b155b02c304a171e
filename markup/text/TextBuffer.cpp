#include "markup/text/TextBuffer.h"

#include <algorithm>

namespace {

/// A mapped block that its text no longer needs. One is kept for the next text: files come one
/// after another, and fresh pages would have to be cleared for each. It is never destroyed: texts
/// may outlive it.
union Spare {
    Pages block;
    constexpr Spare() : block() {}
    ~Spare() {}
};
constinit Spare spare;
constexpr std::size_t mostKept = std::size_t{1} << 26;

/// Puts `block` in the place of the spare one and returns that.
Pages exchangeSpare(Pages block) {
    // NOLINTNEXTLINE(cppcoreguidelines-pro-type-union-access): the only member, always there
    return std::exchange(spare.block, std::move(block));
}

}  // namespace

char* TextBuffer::reset(std::size_t size) {
    const std::size_t needed = size + 1;
    if (needed > block_.size()) {
        clear();
        block_ = Pages::isLarge(needed) ? exchangeSpare({}) : Pages();
        // Neither too small nor so large that another text would keep much memory for nothing.
        if (needed > block_.size() || needed < block_.size() / 4) {
            block_ = {};  // given back first: there may not be memory for both
            block_ = Pages(needed, Pages::huge);
        }
    }
    size_ = size;
    block_.data()[size] = '\0';
    return block_.data();
}

void TextBuffer::truncate(std::size_t size) {
    if (size < size_) {
        size_ = size;
        block_.data()[size] = '\0';
    }
}

void TextBuffer::assign(std::string_view text) {
    std::copy(text.begin(), text.end(), reset(text.size()));
}

void TextBuffer::clear() noexcept {
    size_ = 0;
    Pages given = std::move(block_);
    if (Pages::isLarge(given.size()) && given.size() <= mostKept) {
        exchangeSpare(std::move(given));
    }
}
