#pragma once

#include <concepts>
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
        message_.clear();
        (add(parts), ...);
        write();
    }

  private:
    void add(std::string_view text) { message_ += text; }
    template <std::integral Number>
    void add(Number number) {
        message_ += std::to_string(number);
    }
    void write() const;

    int descriptor_;
    std::string message_;
};
