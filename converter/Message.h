#pragma once

#include <algorithm>
#include <array>
#include <charconv>
#include <concepts>
#include <cstddef>
#include <limits>
#include <string>
#include <string_view>

/// A message for people, put together from texts and decimal integers; usual ones without taking
/// memory. It is built to be written at once.
class Message {
  public:
    /// Adds the parts, texts and integers, one after another.
    template <class... Parts>
    void add(const Parts&... parts) {
        (addPart(parts), ...);
    }

    /// The whole text; valid until something is added.
    std::string_view view() {
        const std::string_view end(text_.data(), used_);
        if (longStart_.empty()) {
            return end;
        }
        used_ = 0;
        return longStart_.append(end);
    }

  private:
    void addPart(std::string_view text) {
        if (text.size() > text_.size() - used_) {
            addLong(text);
            return;
        }
        std::copy(text.begin(), text.end(), text_.begin() + static_cast<std::ptrdiff_t>(used_));
        used_ += text.size();
    }
    template <std::integral Number>
    void addPart(Number number) {
        std::array<char, std::numeric_limits<Number>::digits10 + 2> digits;
        char* const end = std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr;
        addPart(std::string_view(digits.data(), static_cast<std::size_t>(end - digits.data())));
    }
    void addLong(std::string_view text);

    std::size_t used_ = 0;
    std::array<char, 256> text_;
    std::string longStart_;  ///< the start of a message that is longer than usual
};

/// Writes a message to a descriptor, in one system call if that takes it whole. What can't be
/// written is dropped: there is nobody left to tell.
void writeMessage(int descriptor, std::string_view message);
