#pragma once

#include <string_view>

namespace lint {

/// Whether a text is a vector of plain numbers, one space between two of them: that of a file that
/// nobody has touched. Each piece is then plain as `isPlainNumber` says. An empty text is one, too.
bool isPlainVector(std::string_view text);

}  // namespace lint
