#pragma once

#include <string>
#include <string_view>

namespace markup {

/// The encoding that an XML declaration at the very start of `text`, or the meta element of an HTML
/// head, names; "" when there is none. The text is read as ASCII, whatever it is.
std::string declaredEncoding(std::string_view text);

}  // namespace markup
