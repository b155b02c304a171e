#pragma once

#include <algorithm>
#include <array>
#include <charconv>
#include <concepts>
#include <cstddef>
#include <limits>
#include <string>
#include <string_view>

/// Writes progress and diagnostic messages to a file descriptor, each in one system call, so that
/// they appear at once and whole. A message that can't be written is dropped: there is nobody left
/// to tell.
class Diagnostics {
  public:
    /// The descriptor is not owned and stays open.
    explicit Diagnostics(int descriptor) : descriptor_(descriptor) {}

    /// Writes the parts, texts and decimal integers, one after another; a line end is a part too.
    template <class... Parts>
    void say(const Parts&... parts) {
        used_ = 0;
        longStart_.clear();
        (add(parts), ...);
        write();
    }

  private:
    void add(std::string_view text) {
        if (text.size() > message_.size() - used_) {
            addLong(text);
            return;
        }
        std::copy(text.begin(), text.end(), message_.begin() + static_cast<std::ptrdiff_t>(used_));
        used_ += text.size();
    }
    template <std::integral Number>
    void add(Number number) {
        std::array<char, std::numeric_limits<Number>::digits10 + 2> digits;
        char* const end = std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr;
        add(std::string_view(digits.data(), static_cast<std::size_t>(end - digits.data())));
    }
    void addLong(std::string_view text);
    void write();

    int descriptor_;
    std::size_t used_ = 0;
    std::array<char, 256> message_;
    std::string longStart_;  ///< the start of a message that is longer than usual
};
