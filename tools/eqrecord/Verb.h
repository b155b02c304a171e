#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "tools/companion/CommandLineFwd.h"
#include "tools/eqrecord/Arguments.h"

namespace eqrecord {

/// How an option with a value stands in the help.
struct OptionHelp {
    const char* group;
    const char* name;       ///< with its dashes
    const char* valueName;  ///< what its value is called, also in messages
    const char* text;
};

/// A verb of the program while its options are added. All that is passed by reference has to
/// outlive the parsing of the command line, which sets it.
class Verb {
  public:
    /// Adds a verb to `app`, which the help shows with `usage`, its arguments, and `text` in one
    /// line.
    Verb(CLI::App& app, const char* name, const std::string& usage, const char* text);
    /// A program that does what a verb does.
    explicit Verb(CLI::App& app) : app_(app) {}

    void addFlag(const char* group, const char* name, bool& value, const char* text);
    /// Adds an option whose value `set` gets; what that throws ends the program.
    void addOption(const OptionHelp& help, const std::function<void(const std::string&)>& set);
    /// Adds one whose value is one of these.
    void addChoice(const OptionHelp& help, std::string& value,
                   const std::vector<std::string>& choices, bool isRequired = false);
    /// Adds one with a finite number: above 0, or at least 0.
    void addReal(const OptionHelp& help, bool isAboveZero, const std::function<void(double)>& set);
    /// Adds one with a whole number from `least` to `most`, which is below 2^63.
    void addWhole(const OptionHelp& help, std::uint64_t least, std::uint64_t most,
                  const std::function<void(std::uint64_t)>& set);
    /// Adds one that may be given several times, with values that commas separate if `takesLists`.
    /// `refusalOf` tells why a value is refused, nothing when it isn't.
    void addMany(const OptionHelp& help, bool takesLists, std::vector<std::string>& values,
                 const std::function<std::string(const std::string&)>& refusalOf = {});

    /// Adds what stands without an option: one, or any number.
    void addOperands(const char* name, bool takesMany, std::vector<std::string>& values);
    /// Adds --format with these values, the first of which is the default.
    void addFormat(Arguments& arguments, const std::vector<std::string>& formats);
    /// Adds -o and --overwrite.
    void addOutput(Arguments& arguments, const char* valueName = "FILE",
                   const char* text = "Write to this file, which must be new");
    /// Adds --netcdf-kind.
    void addNetcdfKind(Arguments& arguments);
    /// Adds --byte-order, --reading and --partial.
    void addReading(Arguments& arguments);

    /// Adds what comes last: --help, the footer, and what the verb does when it is given.
    void end(const char* footer, const std::function<void()>& onGiven);

  private:
    CLI::App& app_;
};

}  // namespace eqrecord
