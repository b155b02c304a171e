// The arguments outlive the parsing of the command line, as the work of a verb is only done
// when all of it is known to be right.

#include "tools/eqrecord/Verb.h"

#include <cmath>

#include "tools/companion/CommandLine.h"

namespace eqrecord {

CLI::App& addVerb(CLI::App& app, const char* name, const std::string& usage, const char* text) {
    CLI::App& verb = *app.add_subcommand(name, text);
    companion::prepare(verb, usage);
    return verb;
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

void endVerb(CLI::App& verb, const char* footer, const std::function<void()>& onGiven) {
    verb.set_help_flag("--help", "Print this")->group("Other");
    verb.footer(footer);
    verb.callback(onGiven);
}

void addRecords(CLI::App& verb, Arguments& arguments, bool takesMany) {
    // Left to its defaults, an option with any number of values takes "[a,b]" for two of them.
    constexpr int anyNumber = 1 << 28;
    verb.add_option("RECORD", arguments.records)
        ->expected(takesMany ? anyNumber : 1)
        ->allow_extra_args(false)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
}

void addFormat(CLI::App& verb, Arguments& arguments, const std::vector<std::string>& formats) {
    std::string text = formats[0] + " (default)";
    for (std::size_t i = 1; i < formats.size(); ++i) {
        text += (i + 1 < formats.size() ? ", " : " or ") + formats[i];
    }
    arguments.format = formats[0];
    addOption(verb, "Output", "--format", "FORMAT", arguments.format, text.c_str())
        ->check(CLI::IsMember(formats));
}

CLI::Option* addOutput(CLI::App& verb, Arguments& arguments) {
    CLI::Option* const output = addOption(verb, "Output", "-o", "FILE", arguments.output,
                                          "Write to this file, which must be new");
    verb.add_flag("--overwrite", arguments.overwrites, "Replace the file of -o")->group("Output");
    return output;
}

void addNetcdfKind(CLI::App& verb, Arguments& arguments) {
    addOption(verb, "Output", "--netcdf-kind", "KIND", arguments.netcdfKind,
              "4 (default), compressed, or 64, the classic format\nwith 64-bit data")
        ->check(CLI::IsMember({"4", "64"}));
}

void addReading(CLI::App& verb, Arguments& arguments) {
    constexpr const char* group = "Reading";
    addOption(verb, group, "--byte-order", "ORDER", arguments.byteOrder,
              "auto (default), little or big")
        ->check(CLI::IsMember({"auto", "little", "big"}));
    addOption(verb, group, "--reading", "N", arguments.reading,
              "Of a record that can be read in several ways,\ntake the Nth")
        ->check(CLI::Range(1, 1'000'000));
    verb.add_flag("--partial", arguments.takesPartial,
                  "Take what is whole of a record that is not\n(info and check always do)")
        ->group(group);
}

}  // namespace eqrecord
