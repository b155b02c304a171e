#pragma once

#include <cstddef>
#include <utility>

/// A block of memory whose content is not defined at first, owned by one object. The only code that
/// maps memory and says how the system should hold it.
class Pages {
  public:
    /// Whether a large block should lie in huge pages, for what will be filled to its end.
    enum PageSize { usual, huge };

    /// An empty block.
    Pages() = default;
    /// A block of at least `size` bytes, aligned for any type. `huge` is a wish: where the system
    /// has none they are as usual. Throws std::bad_alloc.
    Pages(std::size_t size, PageSize pages);
    Pages(Pages&& other) noexcept
        : data_(std::exchange(other.data_, nullptr)), size_(std::exchange(other.size_, 0)) {}
    Pages& operator=(Pages&& other) noexcept {
        std::swap(data_, other.data_);
        std::swap(size_, other.size_);
        return *this;
    }
    ~Pages();

    char* data() const { return data_; }
    /// Bytes that may be used, 0 for an empty block.
    std::size_t size() const { return size_; }

    /// Gives back to the system what lies before `end`, once a text has been read from `begin` to
    /// there; both lie in the block. Only whole huge pages are given back, and only those whose end
    /// was passed on the way, so that calls for one stretch after the other give back each once.
    /// What was there is lost; the block may be filled anew.
    void discard(const char* begin, const char* end);

    /// Whether a block of this size is mapped from the system.
    static constexpr bool isLarge(std::size_t size) { return size >= leastMapped; }

    /// Throws std::bad_alloc unless the system would give `size` bytes more: for a caller of what
    /// doesn't tell want of memory from other failures.
    static void requireRoom(std::size_t size) { const Pages room(size, usual); }

  private:
    static constexpr std::size_t leastMapped = std::size_t{1} << 18;

    char* data_ = nullptr;
    std::size_t size_ = 0;
};
