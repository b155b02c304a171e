#pragma once

#include <CLI/CLI.hpp>
#include <functional>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "record/RecordReader.h"

namespace eqrecord {

inline constexpr const char* programName = "eqrecord";

/// What a verb is to do once the command line is known; returns the exit status.
using Work = std::function<int()>;

/// What all verbs that read records take.
struct Arguments {
    std::vector<std::string> records;
    std::string format = "text";
    std::string netcdfKind = "4";
    std::string byteOrder = "auto";
    std::size_t reading = 0;    ///< from 1; 0 when none is chosen
    bool takesPartial = false;  ///< also what is whole of a record that isn't
    std::string output = "-";
    bool overwrites = false;  ///< an output that is there

    /// The record of a verb that takes one. Throws companion::UsageError when none is given.
    const std::string& record() const;
    /// The order that is asked for, if one is.
    std::optional<record::ByteOrder> order() const;
};

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

/// Tells on standard error why a record can't be read, and returns the status of that.
int sayUnreadable(const std::runtime_error& error);

/// Runs `tell` on each record, and returns the worst of its statuses; a record that can't be read,
/// or does not have the reading that was chosen, is told on standard error, and the next one's turn
/// comes.
int forEachRecord(const Arguments& arguments,
                  const std::function<int(const std::string& path, record::RecordReader&)>& tell);

/// Makes the reading that was chosen, if one was, the only one. Throws std::runtime_error, with a
/// message that names the path, when it isn't there.
void chooseReading(const Arguments& arguments, const std::string& path,
                   record::RecordReader& reader);

}  // namespace eqrecord
