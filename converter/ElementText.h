#pragma once

#include <string>

#include "markup/Markup.h"

/// Moves to the next sibling element that the path names and returns its text; "" when there is
/// none, although another element is still the current one then.
std::string findElementText(MarkupDocument& document, const PathPos& path);
std::string findElementText(MarkupDocument& document, const char* name);

/// The number at the start of a text: white space before it is skipped, what follows is ignored,
/// none is 0, and one out of range is the nearest limit.
long toInteger(const std::string& text);
