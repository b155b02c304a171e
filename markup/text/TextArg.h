#pragma once

#include <string>
#include <string_view>

/// A text handed to an operation of the document layer: a view that also knows whether the caller
/// passed a null pointer. The text is not owned, must outlive the call, and need not end in a NUL.
/// A null text reads as "" except in the operations that give null a meaning of its own.
class TextArg {
  public:
    /// Takes a NUL-terminated text; null is allowed.
    constexpr TextArg(const char* text)
        : text_(text == nullptr ? std::string_view("") : std::string_view(text)),
          isNull_(text == nullptr) {}

    TextArg(const std::string& text) : text_(text) {}

    /// A view is never null, not even one without storage.
    constexpr TextArg(std::string_view text)
        : text_(text.data() == nullptr ? std::string_view("") : text) {}

    /// Tells whether the caller passed a null pointer.
    constexpr bool isNull() const { return isNull_; }

    /// The text, embedded NULs included; its data pointer is never null.
    constexpr std::string_view view() const { return text_; }

  private:
    std::string_view text_;
    bool isNull_ = false;
};
