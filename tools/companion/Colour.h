#pragma once

#include <string_view>

namespace companion {

/// Whether output is to be coloured. `when` is "always", "never", or "auto": on a terminal that is
/// not "dumb", unless NO_COLOR is set to something.
bool isColoured(std::string_view when, bool isTerminal);

}  // namespace companion
