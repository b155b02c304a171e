#pragma once

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <memory>
#include <new>
#include <type_traits>
#include <unordered_set>

namespace vek {

/// Growable array of plain values: elements are only appended at the end and read by index.
/// The block is moved with realloc, hence T must be copyable byte by byte. Not copyable.
/// The destructor is not virtual: never delete a derived list through a pointer to this class.
template <class T>
class ObjAppendList {
    static_assert(std::is_trivially_copyable_v<T>, "the block is moved by realloc");

  public:
    /// Makes an empty list without storage. `increment` is the least number of slots added when
    /// the storage grows; a value below 1 acts as 1.
    explicit ObjAppendList(long increment = 1) : increment_(std::max(increment, 1L)) {}
    ObjAppendList(const ObjAppendList&) = delete;
    ObjAppendList& operator=(const ObjAppendList&) = delete;
    /// Releases the block. The elements are not destroyed.
    ~ObjAppendList() { std::free(static_cast<void*>(data_)); }

    /// Returns the element at `index` by reference; the reference holds until the next append.
    /// Requires: 0 <= index < count(), which is not checked.
    virtual T& operator[](long index) const { return data_[index]; }

    /// Adds `value` at the end. Throws std::bad_alloc, leaving the list as it was, when the
    /// storage cannot grow.
    void append(T value) {
        if (free_ < 1) {
            grow(1);
        }
        data_[count_] = value;
        ++count_;
        --free_;
    }

    /// Adds the `n` values at `values`, growing at most once; n <= 0 adds nothing. Fails as the
    /// single append does. Requires: `values` does not point into this list.
    void append(const T* values, long n) {
        if (n < 1) {
            return;
        }
        if (free_ < n) {
            grow(n);
        }
        std::memcpy(static_cast<void*>(data_ + count_), values,
                    static_cast<std::size_t>(n) * sizeof(T));
        count_ += n;
        free_ -= n;
    }

    /// Removes all elements and keeps the storage for others.
    void removeAll() {
        if (count_ > 0) {
            std::memset(static_cast<void*>(data_), 0, static_cast<std::size_t>(count_) * sizeof(T));
        }
        free_ += count_;
        count_ = 0;
    }

    /// Number of elements appended.
    long count() const { return count_; }
    /// Slots allocated beyond count(); their bytes are zero.
    long freeSlots() const { return free_; }
    /// First of the contiguous elements, owned by the list; null while there is no storage.
    const T* data() const { return data_; }

  private:
    /// Makes at least n slots free, for n values that the caller writes at once: only the slots
    /// behind those are zeroed here. Nothing has changed when it throws.
    void grow(long n) {
        constexpr long maxSlots = std::numeric_limits<long>::max() / static_cast<long>(sizeof(T));
        const long added = std::max(n - free_, increment_);
        void* block = nullptr;
        if (added <= maxSlots - count_ - free_) {
            const auto slots = static_cast<std::size_t>(count_ + free_ + added);
            block = std::realloc(static_cast<void*>(data_), slots * sizeof(T));
        }
        if (block == nullptr) {
            throw std::bad_alloc();
        }
        data_ = static_cast<T*>(block);
        free_ += added;
        std::memset(static_cast<void*>(data_ + count_ + n), 0,
                    static_cast<std::size_t>(free_ - n) * sizeof(T));
    }

    long increment_;
    T* data_ = nullptr;  // count_ + free_ slots from realloc, null without storage
    long count_ = 0;
    long free_ = 0;
};

/// List of pointers to objects that it owns. A pointer may be null or occur several times.
template <class T>
class ObjAppendListP : public ObjAppendList<T*> {
  public:
    using ObjAppendList<T*>::ObjAppendList;
    using ObjAppendList<T*>::append;

    /// As removeAll, and releases the block.
    ~ObjAppendListP() { removeAll(); }

    /// Takes the object over. Throws std::bad_alloc, with the object destroyed and the list as it
    /// was, when the storage cannot grow.
    void append(std::unique_ptr<T> object) {
        append(object.get());
        static_cast<void>(object.release());
    }

    /// Deletes every object once, in the order of its first occurrence, and keeps the storage for
    /// others. (That of the base class, by a reference to it, leaves the objects to the caller.)
    void removeAll() {
        std::unordered_set<T*> seen;
        for (long i = 0; i < this->count(); ++i) {
            T* object = ObjAppendListP::operator[](i);
            if (object != nullptr && isFirst(i, seen)) {
                delete object;
            }
        }
        ObjAppendList<T*>::removeAll();
    }

  private:
    /// Whether the pointer at `index` has not occurred before. Without memory for the set it looks
    /// through the list instead.
    bool isFirst(long index, std::unordered_set<T*>& seen) const {
        T* const* const end = this->data() + index;
        try {
            return seen.insert(*end).second;
        } catch (const std::bad_alloc&) {
            return std::find(this->data(), end, *end) == end;
        }
    }
};

}  // namespace vek
