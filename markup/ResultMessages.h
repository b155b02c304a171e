#pragma once

#include <string>
#include <string_view>

namespace markup {

/// Renders a whole result log as one line for people; of the parse errors only the first is shown.
/// What has an unknown name or no message adds nothing.
std::string renderResults(std::string_view log);

}  // namespace markup
