#include "markup/text/TextBuffer.h"

#include <algorithm>

char* TextBuffer::reset(std::size_t size) {
    if (size >= block_.size()) {
        clear();  // given back first: there may not be memory for both
        block_ = Pages(size + 1, Pages::huge);
    }
    size_ = size;
    block_.data()[size] = '\0';
    return block_.data();
}

void TextBuffer::truncate(std::size_t size) {
    if (size < size_) {
        size_ = size;
        block_.data()[size] = '\0';
    }
}

void TextBuffer::assign(std::string_view text) {
    std::copy(text.begin(), text.end(), reset(text.size()));
}

void TextBuffer::clear() noexcept {
    size_ = 0;
    block_ = Pages();
}
