#pragma once

#include <cstddef>
#include <cstdio>
#include <iterator>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace eqrecord {

/// The text of a file, of which a piece is in memory: for the JSON library an iterator, and for who
/// reads numbers the bytes themselves. Both may take turns.
class JsonInput {
  public:
    /// What is looked at in one piece is at most so long.
    static constexpr std::size_t longestPiece = 4096;

    /// Opens a file; "-" is standard input. Throws std::system_error, whose text names the path.
    explicit JsonInput(std::string path);
    /// A text in memory, which is not owned.
    static JsonInput ofText(std::string_view text) { return JsonInput("", text); }

    /// The bytes ahead: at least longestPiece of them, or all that are left. Valid until bytes are
    /// skipped and this is called again. Throws std::system_error when the file can't be read.
    std::string_view ahead() {
        if (isMore_ && left_.size() < longestPiece) {
            fill();
        }
        return left_;
    }
    /// Whether there are more bytes than those that were ahead.
    bool isMore() const { return isMore_; }
    /// Goes on by so many of the bytes ahead.
    void skip(std::size_t count);

    /// Line and column, from 1 and in bytes, of the last byte that was skipped.
    std::string place() const;

    /// Takes the bytes one by one, of blanks between two parts the first alone; all iterators
    /// share one place.
    class Iterator {
      public:
        using iterator_category = std::input_iterator_tag;
        using value_type = char;
        using difference_type = std::ptrdiff_t;
        using pointer = const char*;
        using reference = char;

        Iterator() = default;
        explicit Iterator(JsonInput& input) : input_(&input) {}
        char operator*() const { return input_->character(); }
        Iterator& operator++() {
            input_->skipCharacter();
            return *this;
        }
        /// Only for comparing with the end.
        bool operator==(const Iterator& other) const { return isAtEnd() == other.isAtEnd(); }

      private:
        bool isAtEnd() const { return input_ == nullptr || input_->ahead().empty(); }

        JsonInput* input_ = nullptr;
    };
    Iterator begin() { return Iterator(*this); }
    static Iterator end() { return {}; }

  private:
    JsonInput(std::string path, std::string_view text) : path_(std::move(path)), left_(text) {}
    char character();
    void skipCharacter();
    void fill();
    [[noreturn]] void fail() const;

    std::string path_;
    std::unique_ptr<std::FILE, int (*)(std::FILE*)> file_{nullptr, nullptr};
    std::vector<char> buffer_;
    std::string_view left_;
    bool isMore_ = false;
    bool isInText_ = false;   ///< what the iterator comes to is part of a string
    bool isEscaped_ = false;  ///< and stands behind a backslash
    std::size_t line_ = 1;
    std::size_t column_ = 0;
};

}  // namespace eqrecord
