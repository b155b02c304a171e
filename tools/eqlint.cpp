// Tells what the converter would do with a set of parameter files that is not what they say:
//
//     eqlint [OPTIONS] FILE...
//
// The checks are those of lint/; here are the command line and the way to the reports.

#include <CLI/CLI.hpp>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "lint/Check.h"
#include "lint/FilteringReport.h"
#include "lint/JsonReport.h"
#include "lint/RuleList.h"
#include "lint/SarifReport.h"
#include "lint/TextReport.h"
#include "lint/Threshold.h"
#include "tools/companion/Colour.h"
#include "tools/companion/CommandLine.h"
#include "tools/companion/OutputFile.h"
#include "tools/companion/Program.h"

namespace {

using Texts = std::vector<std::string>;

struct Options {
    Texts files;
    std::string format = "text";
    std::string failOn = "warning";
    Texts only;
    Texts disabled;
    long maxPerVector = lint::CheckOptions{}.maxPerVector;
    std::string expectation;
    bool strictXml = false;
    bool noContext = false;
    std::string colour = "auto";
    std::string output = "-";
    bool overwrites = false;
    bool listsRules = false;
    std::optional<std::string> explained;
};

#ifdef EQCONVERT_EXPAT
constexpr bool hasExpat = true;
#else
constexpr bool hasExpat = false;
#endif

constexpr const char* programName = "eqlint";

constexpr const char* version = hasExpat ? "eqlint " EQCONVERT_VERSION " (with expat)"
                                         : "eqlint " EQCONVERT_VERSION " (without expat)";

constexpr const char* description =
    "Tells where the record that eqconvert would make of these files, in this order, is\n"
    "not what they say, and where the conversion would end.";

constexpr const char* footer =
    "Status 0: nothing found from the --fail-on severity on; 1: something found; 2: trouble\n"
    "with the command line or the output. A FILE that can't be read is a finding.\n"
    "\n"
    "Examples:\n"
    "  eqlint EQ_*.xml                               check a set\n"
    "  eqlint --fail-on error --disable EQ705 *.xml  be content with less\n"
    "  eqlint --format sarif -o set.sarif *.xml      for code hosts and editors\n"
    "  eqlint --explain EQ701                        what a finding means";

/// Adds an option with a value, which the help and messages call `valueName`.
template <class Value>
CLI::Option* add(CLI::App& app, const char* group, const char* name, const char* valueName,
                 Value& value, const char* text) {
    return app.add_option(name, value, text)
        ->type_name(valueName)
        ->option_text(valueName)
        ->group(group);
}

void addSelection(CLI::App& app, Options& options) {
    constexpr const char* group = "What is checked";
    const auto addIds = [&](const char* name, Texts& ids, const char* text) {
        add(app, group, name, "ID[,ID]", ids, text)
            ->delimiter(',')
            ->allow_extra_args(false)
            ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
    };
    addIds("--only", options.only, "Tell findings of these rules only");
    addIds("--disable", options.disabled, "Tell no findings of these rules");
    add(app, group, "--max-per-vector", "N", options.maxPerVector,
        "Tell N findings of a rule in a vector and\ncount the others (default 3)")
        ->check(CLI::Range(1L, 1'000'000'000L));
    add(app, group, "--expect", "FILE", options.expectation,
        "Hold the set against this JSON: nuc_table_id,\n"
        "bands, labels, detectors, pixels by band");
    app.add_flag("--strict-xml", options.strictXml, "Tell what another XML parser, expat, refuses")
        ->group(group);
    add(app, group, "--fail-on", "SEVERITY", options.failOn,
        "End with status 1 from this severity on: error,\nwarning (default), note or never")
        ->check(CLI::IsMember({"error", "warning", "note", "never"}));
}

void addOutput(CLI::App& app, Options& options) {
    constexpr const char* group = "Output";
    add(app, group, "--format", "FORMAT", options.format, "text (default), json or sarif")
        ->check(CLI::IsMember({"text", "json", "sarif"}));
    app.add_flag("--no-context", options.noContext, "Leave out the lines of the files")
        ->group(group);
    add(app, group, "--color", "WHEN", options.colour, "auto (default), always or never")
        ->check(CLI::IsMember({"auto", "always", "never"}));
    add(app, group, "-o", "FILE", options.output, "Write to this file, which must be new");
    app.add_flag("--overwrite", options.overwrites, "Replace the file of -o")->group(group);
}

void addOptions(CLI::App& app, Options& options) {
    companion::prepare(app,
                       "[OPTION...] FILE...\n"
                       "       eqlint --list-rules [--format json]\n"
                       "       eqlint --explain ID");
    // Left to its defaults, an option with any number of values takes "[a,b]" for two of them.
    constexpr int anyNumber = 1 << 28;
    app.add_option("FILE", options.files)
        ->expected(anyNumber)
        ->allow_extra_args(false)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
    addSelection(app, options);
    addOutput(app, options);
    app.add_flag("--list-rules", options.listsRules, "List what is looked for")->group("Rules");
    add(app, "Rules", "--explain", "ID", options.explained,
        "Explain a rule, and how to mend files");
    app.footer(footer);
}

const lint::Rule& ruleOf(const std::string& id) {
    const lint::Rule* const rule = lint::findRule(id);
    if (rule == nullptr) {
        throw companion::UsageError("no such rule: " + id);
    }
    return *rule;
}

std::vector<const lint::Rule*> rulesOf(const Texts& ids) {
    std::vector<const lint::Rule*> rules;
    for (const std::string& id : ids) {
        rules.push_back(&ruleOf(id));
    }
    return rules;
}

lint::Threshold thresholdOf(const std::string& name) {
    for (const auto severity :
         {lint::Severity::note, lint::Severity::warning, lint::Severity::error}) {
        if (name == lint::nameOf(severity)) {
            return {severity};
        }
    }
    return {std::nullopt};
}

lint::CheckOptions checkOptionsOf(const Options& options) {
    if (options.strictXml && !hasExpat) {
        throw companion::UsageError("--strict-xml: this eqlint is built without expat");
    }
    lint::CheckOptions result;
    result.maxPerVector = options.maxPerVector;
    result.strictXml = options.strictXml;
    result.withExcerpts = options.format == "text" && !options.noContext;
    result.withPaths = options.format != "text";
    result.keepsMessages = options.format == "json";
    if (!options.expectation.empty()) {
        result.expectation = lint::readExpectation(options.expectation);
    }
    return result;
}

std::unique_ptr<lint::Report> makeReport(const Options& options, companion::OutputFile& output) {
    if (options.format == "json") {
        return std::make_unique<lint::JsonReport>(output.stream());
    }
    if (options.format == "sarif") {
        return std::make_unique<lint::SarifReport>(output.stream(), EQCONVERT_VERSION,
                                                   thresholdOf(options.failOn));
    }
    return std::make_unique<lint::TextReport>(
        output.stream(), companion::isColoured(options.colour, output.isTerminal()));
}

int checkFiles(const Options& options) {
    const lint::CheckOptions checkOptions = checkOptionsOf(options);
    const lint::Selection selection{rulesOf(options.only), rulesOf(options.disabled)};
    std::vector<const char*> paths;
    for (const std::string& file : options.files) {
        paths.push_back(file.c_str());
    }
    companion::OutputFile output(options.output, options.overwrites);
    const std::unique_ptr<lint::Report> report = makeReport(options, output);
    lint::FilteringReport filter(*report, selection);
    const lint::Conversion conversion = lint::check(paths, checkOptions, filter);
    filter.end(filter.counts(), conversion);
    output.commit();
    return thresholdOf(options.failOn).statusFor(filter.counts());
}

/// Prints what the program knows by itself.
int tellRules(const Options& options) {
    if (options.format == "sarif" || (options.format == "json" && !options.listsRules)) {
        throw companion::UsageError("--format " + options.format + " does not go with " +
                                    (options.listsRules ? "--list-rules" : "--explain"));
    }
    const lint::Rule* const rule = options.listsRules ? nullptr : &ruleOf(*options.explained);
    companion::OutputFile output(options.output, options.overwrites);
    if (rule != nullptr) {
        lint::explain(*rule, output.stream());
    } else if (options.format == "json") {
        lint::listRulesJson(output.stream());
    } else {
        lint::listRules(output.stream());
    }
    output.commit();
    return companion::nothingFound;
}

int runEqlint(int argc, char** argv) {
    CLI::App app(description, programName);
    Options options;
    addOptions(app, options);
    return companion::parseAndRun(app, version, argc, argv, [&] {
        const bool isAboutRules = options.listsRules || options.explained;
        if (isAboutRules != options.files.empty()) {
            throw companion::UsageError(isAboutRules ? "--list-rules and --explain take no FILE"
                                                     : "no FILE is given");
        }
        return isAboutRules ? tellRules(options) : checkFiles(options);
    });
}

}  // namespace

int main(int argc, char** argv) {
    return companion::runProgram(programName, [&] { return runEqlint(argc, argv); });
}
