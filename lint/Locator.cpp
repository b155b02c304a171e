// Findings come roughly in the order of the text but not quite, there may be a million of them, and
// a line may have 30 MB. So neither lines nor findings are a measure: points at even distances are
// counted once, and from the nearest one it is never far.

#include "lint/Locator.h"

#include <algorithm>

namespace lint {

namespace {

constexpr std::size_t longestCharacter = 4;  // bytes

/// Whether a byte begins a character; what is no UTF-8 counts byte by byte or not at all.
bool isFirstOfCharacter(char c) {
    return (static_cast<unsigned char>(c) & 0xC0U) != 0x80U;
}

std::size_t charactersIn(std::string_view text) {
    return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), isFirstOfCharacter));
}

/// Moves `offset` by whole characters, forward or back, within the text.
std::size_t moved(std::string_view text, std::size_t offset, int characters) {
    while (characters < 0 && offset > 0) {
        --offset;
        characters += isFirstOfCharacter(text[offset]) ? 1 : 0;
    }
    while (characters > 0 && offset < text.size()) {
        ++offset;
        characters -= offset == text.size() || isFirstOfCharacter(text[offset]) ? 1 : 0;
    }
    return offset;
}

bool isBlank(char c) {
    return c == ' ' || c == '\t';
}

}  // namespace

/// Moves a point over a piece of the text.
void Locator::advance(Point& point, std::size_t from, std::size_t to) const {
    const std::string_view piece = text_.substr(from, to - from);
    const std::size_t lineEnd = piece.rfind('\n');
    if (lineEnd != std::string_view::npos) {
        point.line += static_cast<int>(std::count(piece.begin(), piece.end(), '\n'));
        point.column = 1;
    }
    const std::size_t rest = lineEnd == std::string_view::npos ? 0 : lineEnd + 1;
    point.column += static_cast<int>(charactersIn(piece.substr(rest)));
}

Locator::Point Locator::pointAt(std::size_t offset) {
    offset = std::min(offset, text_.size());
    if (points_.empty()) {
        points_.emplace_back();
    }
    while (points_.size() <= offset / step) {
        Point next = points_.back();
        advance(next, (points_.size() - 1) * step, points_.size() * step);
        points_.push_back(next);
    }
    Point point = points_[offset / step];
    advance(point, offset / step * step, offset);
    return point;
}

Place Locator::place(std::size_t offset, std::size_t length) {
    const Point first = pointAt(offset);
    Point last = first;
    if (length <= step) {
        offset = std::min(offset, text_.size());
        advance(last, offset, std::min(offset + length, text_.size()));
    } else {
        last = pointAt(offset + length);
    }
    return {first.line, first.column, last.line, last.column};
}

Excerpt Locator::excerpt(std::size_t offset, std::size_t length, int width) const {
    offset = std::min(offset, text_.size());
    const std::size_t begin = excerptBegin(offset, width / 2);
    const std::size_t end = excerptEnd(begin, offset, width);
    Excerpt excerpt;
    excerpt.line = text_.substr(begin, end - begin);
    std::ranges::replace_if(
        excerpt.line, [](char c) { return static_cast<unsigned char>(c) < ' ' || c == '\x7F'; },
        ' ');
    excerpt.begin = offset - begin;
    excerpt.length = std::max(std::min(offset + length, end), offset) - offset;
    return excerpt;
}

/// Where the line of an offset begins, but at most so many characters before that, and behind white
/// space.
std::size_t Locator::excerptBegin(std::size_t offset, int most) const {
    const auto bytes = static_cast<std::size_t>(most) * longestCharacter;
    const std::size_t near = offset - std::min(offset, bytes);
    const std::size_t lineEnd = text_.substr(near, offset - near).rfind('\n');
    std::size_t begin = lineEnd == std::string_view::npos ? near : near + lineEnd + 1;
    if (charactersIn(text_.substr(begin, offset - begin)) > static_cast<std::size_t>(most)) {
        begin = moved(text_, offset, -most);
    }
    while (begin < offset && isBlank(text_[begin])) {
        ++begin;
    }
    return begin;
}

/// Where the line of an offset ends, but at most `width` characters behind `begin`.
std::size_t Locator::excerptEnd(std::size_t begin, std::size_t offset, int width) const {
    const auto bytes = static_cast<std::size_t>(width) * longestCharacter;
    const std::string_view ahead = text_.substr(0, begin + bytes);
    const std::size_t end = std::min(ahead.find('\n', offset), ahead.size());
    const bool isLong =
        charactersIn(text_.substr(begin, end - begin)) > static_cast<std::size_t>(width);
    return isLong ? std::max(moved(text_, begin, width), offset) : end;
}

}  // namespace lint
