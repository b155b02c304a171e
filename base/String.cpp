// How a vek::String comes to its text. Every change of length takes a new block of exactly that
// length; the old one lives until its text is copied, since the new text may lie in it. Searches
// are in StringScan.cpp, edits in StringEdit.cpp.

#include "base/String.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <istream>
#include <stdexcept>
#include <string>
#include <utility>

namespace vek {

static_assert(std::bit_cast<std::uint64_t>(String::nan) == 0x7FF8000000000000);

String::String(const char* text, int count) {
    if (text != nullptr) {
        assign({text, count < 0 ? std::strlen(text) : static_cast<std::size_t>(count)});
    }
}

String::String(int count, char c) {
    reallocate(std::max(count, 0));
    fill(c);
}

String::String(std::istream& stream, char delimiter) {
    std::string text;
    if (std::getline(stream, text, delimiter)) {
        assign(text);
    }
}

String::String(std::istream& stream, int count) {
    if (stream.fail()) {
        return;
    }
    if (count >= 0) {
        reallocate(count);
        stream.read(data_.get(), count);
        assign(view().substr(0, static_cast<std::size_t>(stream.gcount())));
        return;
    }
    // The pieces are collected in a growing buffer: a block of exact length after each of them
    // would take quadratic time.
    std::string text;
    char piece[4096];
    while (stream.read(piece, sizeof(piece)), stream.gcount() > 0) {
        text.append(piece, static_cast<std::size_t>(stream.gcount()));
    }
    assign(text);
}

String::String(const String& other) {
    *this = other;
}

String::String(String&& other) noexcept
    : length_(std::exchange(other.length_, 0)), data_(std::move(other.data_)) {}

String& String::operator=(const String& other) {
    if (other.isNull()) {
        setNull();
    } else {
        assign(other.view());
    }
    return *this;
}

String& String::operator=(String&& other) noexcept {
    length_ = std::exchange(other.length_, 0);
    data_ = std::move(other.data_);
    return *this;
}

String& String::operator=(const char* text) {
    if (text == nullptr) {
        setNull();
    } else {
        assign(text);
    }
    return *this;
}

void String::setNull() {
    length_ = 0;
    data_.reset();
}

char String::operator[](int index) const {
    return index >= 0 && index < length_ ? data_[static_cast<std::size_t>(index)] : '\0';
}

String String::substr(int first, int last) const {
    if (isNull()) {
        return {};
    }
    const int begin = std::max(first, 0);
    const int end = last < 0 || last >= length_ ? length_ - 1 : last;
    return begin > end ? String("") : String(c_str() + begin, end - begin + 1);
}

String String::words(int first, int last, char separator) const {
    if (isNull()) {
        return {};
    }
    const int firstWord = std::max(first, 0);
    if (last >= 0 && last < firstWord) {
        return String("");
    }
    const std::string_view text = view();
    std::size_t begin = 0;
    for (int word = 0; word < firstWord; ++word) {
        begin = text.find(separator, begin);
        if (begin == std::string_view::npos) {
            return String("");
        }
        ++begin;
    }
    std::size_t end = last < 0 ? text.size() : text.find(separator, begin);
    for (int word = firstWord; word < last && end < text.size(); ++word) {
        end = text.find(separator, end + 1);
    }
    return String(c_str() + begin, static_cast<int>(std::min(end, text.size()) - begin));
}

String String::word(int n, char separator) const {
    return words(n, n, separator);
}

void String::assign(std::string_view text) {
    const auto old = reallocate(static_cast<std::int64_t>(text.size()));
    std::copy_n(text.data(), text.size(), data_.get());
}

void String::checkLength(std::size_t length) {
    if (length > INT32_MAX) {
        throw std::length_error("vek::String longer than INT32_MAX");
    }
}

std::unique_ptr<char[]> String::reallocate(std::int64_t length) {
    checkLength(static_cast<std::size_t>(length));
    auto block = std::make_unique_for_overwrite<char[]>(static_cast<std::size_t>(length) + 1);
    block[static_cast<std::size_t>(length)] = '\0';
    length_ = static_cast<std::int32_t>(length);
    data_.swap(block);
    return block;
}

}  // namespace vek
