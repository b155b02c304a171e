#pragma once

#include <string>
#include <string_view>

#include "markup/Markup.h"

/// Moves to the next sibling element called `name` and returns its text; "" when there is none,
/// although another element is still the current one then.
std::string findElementText(MarkupDocument& document, const char* name);
/// The same as a view, valid until the next call with this `storage` and while the document stays.
std::string_view findElementText(MarkupDocument& document, const PathPos& name,
                                 std::string& storage);

/// The number at the start of a text, as strtol reads it in base 10: white space before it is
/// skipped, what follows is ignored, none is 0, and one out of range is the nearest limit.
long toInteger(std::string_view text);
