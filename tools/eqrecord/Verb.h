#pragma once

#include <CLI/CLI.hpp>
#include <functional>
#include <string>
#include <vector>

#include "tools/eqrecord/Arguments.h"

namespace eqrecord {

/// Adds a verb to the program, which `usage` shows with its arguments, and `text` in one line.
CLI::App& addVerb(CLI::App& app, const char* name, const std::string& usage, const char* text);
/// Adds an option with a value, which the help and messages call `valueName`.
template <class Value>
CLI::Option* addOption(CLI::App& verb, const char* group, const char* name, const char* valueName,
                       Value& value, const char* text) {
    return verb.add_option(name, value, text)
        ->type_name(valueName)
        ->option_text(valueName)
        ->group(group);
}
/// Checks that the value of an option is a finite number: above 0, or at least 0.
CLI::Validator finiteNumber(bool isAboveZero);
/// Adds what comes last: --help, the footer, and what the verb does when it is given.
void endVerb(CLI::App& verb, const char* footer, const std::function<void()>& onGiven);
/// Adds the records, one or any number of them.
void addRecords(CLI::App& verb, Arguments& arguments, bool takesMany);
/// Adds --format with these values, the first of which is the default.
void addFormat(CLI::App& verb, Arguments& arguments, const std::vector<std::string>& formats);
/// Adds -o, which it returns, and --overwrite.
CLI::Option* addOutput(CLI::App& verb, Arguments& arguments);
/// Adds --netcdf-kind.
void addNetcdfKind(CLI::App& verb, Arguments& arguments);
/// Adds --byte-order, --reading and --partial.
void addReading(CLI::App& verb, Arguments& arguments);

}  // namespace eqrecord
