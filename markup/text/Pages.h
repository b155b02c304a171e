#pragma once

#include <cstddef>
#include <utility>

/// A block of memory whose content is not defined at first, owned by one object. Large ones are
/// mapped straight from the system: what is never touched costs nothing then, whole huge pages may
/// be had, and blocks of ever other sizes don't leave holes in malloc's memory.
class Pages {
  public:
    /// Touching memory for the first time costs more than parsing it, and ten times less in huge
    /// pages; but a huge page is taken whole with its first byte.
    enum PageSize { usual, huge };

    /// An empty block.
    Pages() = default;
    /// A block of at least `size` bytes, aligned for any type. `huge` is a wish: where the
    /// system has none they are as usual. Throws std::bad_alloc.
    Pages(std::size_t size, PageSize pages);
    Pages(Pages&& other) noexcept
        : data_(std::exchange(other.data_, nullptr)),
          size_(std::exchange(other.size_, 0)),
          isMapped_(other.isMapped_),
          discarded_(other.discarded_) {}
    Pages& operator=(Pages&& other) noexcept {
        std::swap(data_, other.data_);
        std::swap(size_, other.size_);
        std::swap(isMapped_, other.isMapped_);
        std::swap(discarded_, other.discarded_);
        return *this;
    }
    ~Pages();

    char* data() const { return data_; }
    /// Bytes that may be used, 0 for an empty block.
    std::size_t size() const { return size_; }
    /// Gives memory before `end`, which lies in the block, back to the system where the block is
    /// mapped: what was there is lost.
    void discard(const char* end);
    /// Tells that the block is to be filled anew: what `discard` gave back may be given back again.
    void renew() { discarded_ = 0; }
    /// Whether a block of this size is mapped.
    static bool isLarge(std::size_t size) { return size >= leastMapped; }
    /// True when the block is large enough to be mapped.
    bool isMapped() const { return isMapped_; }

  private:
    static constexpr std::size_t leastMapped = std::size_t{1} << 18;

    char* data_ = nullptr;
    std::size_t size_ = 0;
    bool isMapped_ = false;
    std::size_t discarded_ = 0;  ///< bytes at the start given back and not filled since
};
