#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

#include "lint/Finding.h"

namespace lint {

/// Tells for offsets into a text where they are, in lines and columns as an editor counts them.
/// Asking about one offset after the other, in whatever order, takes constant time each, however
/// long the lines are.
class Locator {
  public:
    /// The text, UTF-8 or nearly so, is not owned and must outlive the object. Nothing is read
    /// before the first question.
    explicit Locator(std::string_view text) : text_(text) {}

    /// The place of `length` bytes from `offset` on; both are limited to the text.
    Place place(std::size_t offset, std::size_t length);

    /// What stands around the place of `length` bytes from `offset` on, on its first line and at
    /// most `width` characters of that.
    Excerpt excerpt(std::size_t offset, std::size_t length, int width) const;

  private:
    struct Point {
        int line = 1;
        int column = 1;
    };

    /// A point is kept every so many bytes.
    static constexpr std::size_t step = 128;

    Point pointAt(std::size_t offset);
    std::size_t excerptBegin(std::size_t offset, int most) const;
    std::size_t excerptEnd(std::size_t begin, std::size_t offset, int width) const;
    void advance(Point& point, std::size_t from, std::size_t to) const;

    std::string_view text_;
    std::vector<Point> points_;  ///< at each multiple of `step`
};

}  // namespace lint
