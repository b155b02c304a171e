#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <memory>
#include <string_view>

/// The bytes of one run, taken from the front, so that a seed can be written down as choices and
/// then a text. What is missing reads as zero: in every choice 0 is the plain one.
class FuzzInput {
  public:
    FuzzInput(const std::uint8_t* data, std::size_t size)
        : left_(reinterpret_cast<const char*>(data), size) {}

    bool isEmpty() const { return left_.empty(); }

    /// The next byte.
    unsigned byte() {
        const std::string_view next = bytes(1);
        return next.empty() ? 0 : static_cast<unsigned char>(next.front());
    }

    /// A number from 0 to `most`; one above 255 takes two bytes. Requires: most <= 65535.
    unsigned upTo(unsigned most) {
        const unsigned low = byte();
        return (most > 0xFF ? low | byte() << 8 : low) % (most + 1);
    }

    /// A number from `low` to `high`; `low` is the plain choice.
    long pick(long low, long high) {
        return low +
               static_cast<long>(raw<std::uint16_t>() % static_cast<unsigned long>(high - low + 1));
    }

    /// True once in `n` times; false is the plain choice.
    bool oneIn(unsigned n) { return byte() % n == n - 1; }

    /// The bytes of one value of a plain type.
    template <class T>
    T raw() {
        T value{};
        const std::string_view next = bytes(sizeof value);
        if (!next.empty()) {
            std::memcpy(&value, next.data(), next.size());
        }
        return value;
    }

    /// One of the elements of an array.
    template <class Array>
    const auto& choose(const Array& array) {
        return array[upTo(static_cast<unsigned>(std::size(array)) - 1)];
    }

    /// The next `count` bytes, fewer at the end.
    std::string_view bytes(std::size_t count) {
        const std::string_view taken = left_.substr(0, count);
        left_.remove_prefix(taken.size());
        return taken;
    }

    /// A text whose length is the first byte.
    std::string_view shortText() { return bytes(byte()); }

    /// All that is left.
    std::string_view rest() { return bytes(left_.size()); }

  private:
    std::string_view left_;
};

/// A copy of a text in a block of exactly its size, so that the sanitizer sees every byte read
/// behind it.
class ExactCopy {
  public:
    explicit ExactCopy(std::string_view text) : block_(new char[text.size()]), size_(text.size()) {
        std::copy(text.begin(), text.end(), block_.get());
    }

    const char* data() const { return block_.get(); }
    std::string_view view() const { return {block_.get(), size_}; }

  private:
    std::unique_ptr<char[]> block_;
    std::size_t size_;
};
