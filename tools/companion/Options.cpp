// By hand, since getopt takes the names of streams such as "-::buffer:64" for options, and the
// library that the other programs use is not there wherever these have to be built.

#include "tools/companion/Options.h"

#include <algorithm>

#include "tools/companion/Program.h"

namespace companion {

namespace {

bool isOption(std::string_view argument) {
    return argument.starts_with('-') && argument != "-" && !argument.starts_with("-:");
}

void turnOn(std::string_view option, std::initializer_list<Switch> switches) {
    const auto* const found = std::ranges::find(switches, option, &Switch::name);
    if (found == switches.end()) {
        throw UsageError("there is no option " + std::string(option));
    }
    *found->isOn = true;
}

}  // namespace

std::optional<std::vector<std::string>> readOperands(int argc, const char* const* argv,
                                                     std::string_view help,
                                                     std::string_view version,
                                                     std::initializer_list<Switch> switches) {
    std::vector<std::string> operands;
    bool takesOptions = true;
    for (int i = 1; i < argc; ++i) {
        const std::string_view argument = argv[i];
        if (!takesOptions || !isOption(argument)) {
            operands.emplace_back(argument);
        } else if (argument == "--") {
            takesOptions = false;
        } else if (argument == "--help" || argument == "--version") {
            print(argument == "--help" ? help : version);
            return std::nullopt;
        } else {
            turnOn(argument, switches);
        }
    }
    return operands;
}

}  // namespace companion
