// Memory is taken anew only for a text that does not fit, and then the old is given back first:
// there may not be room for both. The NUL behind the text is set wherever its end moves to.

#include "markup/text/TextBuffer.h"

#include <algorithm>

char* TextBuffer::reset(std::size_t size) {
    if (size >= block_.size()) {
        clear();
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
