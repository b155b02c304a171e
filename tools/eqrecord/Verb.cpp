// The library of the command line takes longer to compile than all of a verb, so what verbs ask of
// it stands here, and in no header. The arguments outlive the parsing, as the work of a verb is
// only done when all of the command line is known to be right.

#include "tools/eqrecord/Verb.h"

#include <CLI/CLI.hpp>
#include <cmath>

#include "tools/companion/CommandLine.h"

namespace eqrecord {

namespace {

CLI::Option* describe(CLI::Option* option, const OptionHelp& help) {
    return option->type_name(help.valueName)->option_text(help.valueName)->group(help.group);
}

CLI::Option* addTo(CLI::App& app, const OptionHelp& help, std::string& value) {
    return describe(app.add_option(help.name, value, help.text), help);
}

CLI::Validator finiteNumber(bool isAboveZero) {
    return {[isAboveZero](const std::string& text) -> std::string {
                double value = 0;
                const bool isNumber = CLI::detail::lexical_cast(text, value);
                if (isNumber && std::isfinite(value) && (isAboveZero ? value > 0 : value >= 0)) {
                    return "";
                }
                return text + " is no finite number " + (isAboveZero ? "above 0" : "from 0 on");
            },
            ""};
}

/// Left to itself, an option takes -1 for the largest number that there is.
CLI::Validator wholeNumber(std::uint64_t least, std::uint64_t most) {
    return CLI::Range(static_cast<std::int64_t>(least), static_cast<std::int64_t>(most));
}

CLI::App& addVerb(CLI::App& app, const char* name, const std::string& usage, const char* text) {
    CLI::App& verb = *app.add_subcommand(name, text);
    companion::prepare(verb, usage);
    return verb;
}

}  // namespace

Verb::Verb(CLI::App& app, const char* name, const std::string& usage, const char* text)
    : app_(addVerb(app, name, usage, text)) {}

void Verb::addFlag(const char* group, const char* name, bool& value, const char* text) {
    app_.add_flag(name, value, text)->group(group);
}

void Verb::addOption(const OptionHelp& help, const std::function<void(const std::string&)>& set) {
    describe(app_.add_option_function<std::string>(help.name, set, help.text), help);
}

void Verb::addChoice(const OptionHelp& help, std::string& value,
                     const std::vector<std::string>& choices, bool isRequired) {
    addTo(app_, help, value)->check(CLI::IsMember(choices))->required(isRequired);
}

void Verb::addReal(const OptionHelp& help, bool isAboveZero,
                   const std::function<void(double)>& set) {
    describe(app_.add_option_function<double>(help.name, set, help.text), help)
        ->check(finiteNumber(isAboveZero));
}

void Verb::addWhole(const OptionHelp& help, std::uint64_t least, std::uint64_t most,
                    const std::function<void(std::uint64_t)>& set) {
    describe(app_.add_option_function<std::uint64_t>(help.name, set, help.text), help)
        ->check(wholeNumber(least, most));
}

void Verb::addMany(const OptionHelp& help, bool takesLists, std::vector<std::string>& values,
                   const std::function<std::string(const std::string&)>& refusalOf) {
    CLI::Option* const option = describe(app_.add_option(help.name, values, help.text), help)
                                    ->allow_extra_args(false)
                                    ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
    if (takesLists) {
        option->delimiter(',');
    }
    if (refusalOf) {
        option->check(CLI::Validator(refusalOf, ""));
    }
}

void Verb::addOperands(const char* name, bool takesMany, std::vector<std::string>& values) {
    // Left to its defaults, an option with any number of values takes "[a,b]" for two of them.
    constexpr int anyNumber = 1 << 28;
    app_.add_option(name, values)
        ->expected(takesMany ? anyNumber : 1)
        ->allow_extra_args(false)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
}

void Verb::addFormat(Arguments& arguments, const std::vector<std::string>& formats) {
    std::string text = formats[0] + " (default)";
    for (std::size_t i = 1; i < formats.size(); ++i) {
        text += (i + 1 < formats.size() ? ", " : " or ") + formats[i];
    }
    arguments.format = formats[0];
    addChoice({"Output", "--format", "FORMAT", text.c_str()}, arguments.format, formats);
}

void Verb::addOutput(Arguments& arguments, const char* valueName, const char* text) {
    addTo(app_, {"Output", "-o", valueName, text}, arguments.output);
    addFlag("Output", "--overwrite", arguments.overwrites, "Replace the file of -o");
}

void Verb::addNetcdfKind(Arguments& arguments) {
    addChoice({"Output", "--netcdf-kind", "KIND",
               "4 (default), compressed, or 64, the classic format\nwith 64-bit data"},
              arguments.netcdfKind, {"4", "64"});
}

void Verb::addReading(Arguments& arguments) {
    constexpr const char* group = "Reading";
    constexpr std::uint64_t mostReadings = 1'000'000;
    addChoice({group, "--byte-order", "ORDER", "auto (default), little or big"},
              arguments.byteOrder, {"auto", "little", "big"});
    addWhole(
        {group, "--reading", "N", "Of a record that can be read in several ways,\ntake the Nth"}, 1,
        mostReadings, [&arguments](std::uint64_t number) { arguments.reading = number; });
    addFlag(group, "--partial", arguments.takesPartial,
            "Take what is whole of a record that is not\n(info and check always do)");
}

void Verb::end(const char* footer, const std::function<void()>& onGiven) {
    app_.set_help_flag("--help", "Print this")->group("Other");
    app_.footer(footer);
    app_.callback(onGiven);
}

}  // namespace eqrecord
