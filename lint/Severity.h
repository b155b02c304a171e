#pragma once

#include <string_view>

namespace lint {

/// What a finding means for the record, the least first.
enum class Severity {
    note,     ///< nothing is lost
    warning,  ///< the run goes on, and the record is not what the file says
    error,    ///< the run ends
};

/// "note", "warning" or "error".
constexpr std::string_view nameOf(Severity severity) {
    constexpr std::string_view names[] = {"note", "warning", "error"};
    return names[static_cast<int>(severity)];
}

}  // namespace lint
