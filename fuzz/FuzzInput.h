#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <string_view>

/// The bytes of one run, taken from the front, so that a seed can be written down as choices and
/// then a text. What is missing reads as zero: in every choice 0 is the plain one.
class FuzzInput {
  public:
    explicit FuzzInput(std::string_view bytes) : left_(bytes) {}
    FuzzInput(const std::uint8_t* data, std::size_t size)
        : FuzzInput({reinterpret_cast<const char*>(data), size}) {}

    bool isEmpty() const { return left_.empty(); }

    /// The next `count` bytes, fewer at the end.
    std::string_view bytes(std::size_t count) {
        const std::string_view taken = left_.substr(0, count);
        left_.remove_prefix(taken.size());
        return taken;
    }
    /// A text whose length is the first byte.
    std::string_view shortText() { return bytes(raw<unsigned char>()); }
    /// All that is left.
    std::string_view rest() { return bytes(left_.size()); }

    /// The bytes of one value of a plain type.
    template <class T>
    T raw() {
        T value{};
        const std::string_view next = bytes(sizeof value);
        std::copy(next.begin(), next.end(), reinterpret_cast<char*>(&value));
        return value;
    }
    /// A number from `low`, the plain choice, to `high`, by two bytes when there are more than 256.
    int pick(long low, long high) {
        const long count = high - low + 1;
        const long choice = count > 256 ? raw<std::uint16_t>() : raw<std::uint8_t>();
        return static_cast<int>(low + choice % count);
    }
    /// One of the elements of an array.
    template <class Array>
    const auto& choose(const Array& array) {
        return array[static_cast<std::size_t>(pick(0, std::ssize(array) - 1))];
    }

  private:
    std::string_view left_;
};
