#pragma once

#include <string_view>
#include <utility>

#include "markup/text/Pages.h"

/// Memory for a document's text, which ends in a NUL that doesn't count. Unlike std::string it is
/// not cleared before a file is read into it, and large ones lie in huge pages where the system has
/// them.
class TextBuffer {
  public:
    TextBuffer() = default;
    TextBuffer(TextBuffer&& other) noexcept { *this = std::move(other); }
    TextBuffer& operator=(TextBuffer&& other) noexcept {
        block_ = std::move(other.block_);
        size_ = std::exchange(other.size_, 0);
        return *this;
    }

    /// The text; its data pointer is never null, and behind the text lies a NUL.
    std::string_view view() const { return {size_ == 0 ? "" : block_.data(), size_}; }
    char* data() { return block_.data(); }
    std::size_t size() const { return size_; }
    bool empty() const { return size_ == 0; }

    /// The block that the text lies in, from its first byte on.
    Pages& block() { return block_; }

    /// Makes room for `size` bytes, whose content is not defined, and returns the first. What was
    /// there before is lost. Throws std::bad_alloc, leaving the buffer empty.
    char* reset(std::size_t size);
    /// Keeps the first `size` bytes. Requires: size <= size().
    void truncate(std::size_t size);
    /// Copies `text`, which must not lie in the buffer.
    void assign(std::string_view text);
    /// Gives the memory up.
    void clear() noexcept;

  private:
    Pages block_;
    std::size_t size_ = 0;  ///< below the size of the block, for the NUL, where there is a block
};
