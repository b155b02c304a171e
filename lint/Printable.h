#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace lint {

/// A text of anybody's as people may safely see it on a terminal: control characters, those that
/// turn the direction of writing, and bytes that are no UTF-8 are written as "\n", "\x1b" or
/// "\u202e". What it gives can't be turned back: a backslash stays one.
std::string printable(std::string_view text);

/// The same with one "?" for each such character or byte, so that columns stay what they are.
std::string masked(std::string_view text);

/// How many cells of a terminal a text without harmful characters takes.
std::size_t cellsOf(std::string_view text);

}  // namespace lint
