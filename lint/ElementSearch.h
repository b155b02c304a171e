#pragma once

#include <string>
#include <string_view>

#include "markup/Markup.h"

namespace lint {

/// The next sibling of element `elem` with this name, 0 when there is none.
int nextNamed(const MarkupDocument& document, int elem, std::string_view name);

/// The first child of element `parent` with this name, 0 when there is none.
int firstNamed(const MarkupDocument& document, int parent, std::string_view name);

/// Why an element was not found among the children of `parent`, as an addition to a message: one
/// stands before the place where it was sought, one has a name that is nearly the same, or "".
std::string whyNotFound(const MarkupDocument& document, int parent, std::string_view name);

}  // namespace lint
