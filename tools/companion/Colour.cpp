#include "tools/companion/Colour.h"

#include <cstdlib>

namespace companion {

namespace {

std::string_view environment(const char* name) {
    const char* const value = std::getenv(name);
    return value == nullptr ? "" : value;
}

}  // namespace

bool isColoured(std::string_view when, bool isTerminal) {
    if (when != "auto") {
        return when == "always";
    }
    const std::string_view terminal = environment("TERM");
    return isTerminal && environment("NO_COLOR").empty() && !terminal.empty() && terminal != "dumb";
}

}  // namespace companion
