#pragma once

#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace companion {

/// An option without a value.
struct Switch {
    std::string_view name;  ///< with its "--"
    bool* isOn;             ///< set to true when it is given
};

/// Reads the command line of a program that has few options, and returns its operands; nothing when
/// it asks for `help` or for `version`, both whole lines, which are printed then. Options may stand
/// anywhere before "--"; what begins with "-" is one, but for "-" itself and what begins with "-:".
/// Throws UsageError for an unknown option.
std::optional<std::vector<std::string>> readOperands(int argc, const char* const* argv,
                                                     std::string_view help,
                                                     std::string_view version,
                                                     std::initializer_list<Switch> switches = {});

}  // namespace companion
