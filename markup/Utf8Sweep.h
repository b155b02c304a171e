#pragma once

#include <string_view>

/// True when the text is valid UTF-8 by the letter (no overlong forms, no surrogates, nothing above
/// U+10FFFF) and holds no NUL. The system's conversion from UTF-8 to UTF-8 gives such a text back
/// unchanged, so that it need not be asked; what is false here it may still accept.
bool x_IsPlainUtf8(std::string_view text);
