#pragma once

#include <cstdlib>
#include <memory>
#include <string_view>
#include <utility>

/// Memory for a document's text. Unlike std::string it is not cleared before a file is read into
/// it, and large ones lie in huge pages where the system has them: touching memory for the first
/// time costs more than parsing it.
class TextBuffer {
  public:
    TextBuffer() = default;
    TextBuffer(TextBuffer&& other) noexcept { *this = std::move(other); }
    TextBuffer& operator=(TextBuffer&& other) noexcept {
        data_ = std::move(other.data_);
        size_ = std::exchange(other.size_, 0);
        capacity_ = std::exchange(other.capacity_, 0);
        return *this;
    }

    std::string_view view() const { return {data_.get(), size_}; }
    char* data() { return data_.get(); }
    std::size_t size() const { return size_; }
    bool empty() const { return size_ == 0; }

    /// Makes room for `size` bytes, whose content is not defined, and returns the first. What was
    /// there before is lost. Throws std::bad_alloc, leaving the buffer empty.
    char* reset(std::size_t size);
    /// Keeps the first `size` bytes. Requires: size <= size().
    void truncate(std::size_t size) { size_ = size; }
    /// Copies `text`, which must not lie in the buffer.
    void assign(std::string_view text);
    /// Frees the memory.
    void clear();

  private:
    struct Release {
        Release() : mapped(0) {}
        explicit Release(std::size_t bytes) : mapped(bytes) {}
        void operator()(char* block) const;

        std::size_t mapped;  ///< bytes of a mapping, 0 for a block from malloc
    };

    std::unique_ptr<char[], Release> data_;
    std::size_t size_ = 0;
    std::size_t capacity_ = 0;
};
