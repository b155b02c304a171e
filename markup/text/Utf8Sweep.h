#pragma once

#include <cstddef>
#include <string_view>

namespace markup {

/// Length of the longest start of the text that is valid UTF-8 by the letter (no overlong forms, no
/// surrogates, nothing above U+10FFFF, no sequence cut off) and holds no NUL. The system's
/// conversion from UTF-8 to UTF-8 gives such a text back unchanged, so that it need not be asked;
/// what does not pass here it may still accept.
std::size_t plainUtf8Length(std::string_view text);

}  // namespace markup
