// Both records are opened before anything is written: whatever is wrong with one of them is
// trouble, not a difference.

#include "tools/eqrecord/Diff.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <map>
#include <memory>

#include "tools/companion/OutputFile.h"
#include "tools/companion/Program.h"
#include "tools/eqrecord/DiffJson.h"
#include "tools/eqrecord/DiffText.h"
#include "tools/eqrecord/RecordDiff.h"
#include "tools/eqrecord/Verb.h"

namespace eqrecord {

namespace {

constexpr const char* footer =
    "Two values are equal when all their bits are; when both are NaN, unless --nan-differs; when\n"
    "|a-b| <= X + Y * max(|a|, |b|), with X of --abs and Y of --rel, if one of them is given; or\n"
    "when they are at most N representable numbers apart, with N of --ulp. An infinity is equal\n"
    "to itself only; 0 and -0 are equal for --abs, --rel and --ulp, whatever the bound. Which\n"
    "record is A makes no difference. What is listed, counted and returned follows from this "
    "test;\n"
    "epsilon is a value, too. Counted are pairs of which at least one is not the fill value.\n"
    "\n"
    "Fields are named as in the JSON of dump: file_type, creation_date, applicability_start,\n"
    "applicability_end, files_counted, nuc_table_id, band, name, configurations_counted, label,\n"
    "epsilon, pixels, COEFF_A1, COEFF_A2, COEFF_ZS, COEFF_D, byte_order. Another byte order is\n"
    "noted and not counted: values are compared, not how they are stored. A selection chooses\n"
    "files, configurations and values; the fields of the record are compared all the same.\n"
    "\n"
    "Status 0: the same; 1: different; 2: trouble.\n"
    "\n"
    "Examples:\n"
    "  eqrecord diff old.record new.record\n"
    "  eqrecord diff --rel 1e-9 --ignore creation_date,nuc_table_id old.record new.record\n"
    "  eqconvert EQ_B4.xml | eqrecord diff --quiet old.record -";

struct DiffArguments {
    Arguments common;
    DiffOptions options;
    bool isQuiet = false;
};

/// Takes what there is to say, and says nothing.
class NoReport : public DiffReport {
  public:
    void writeField(const BlockPair* /*pair*/, const FieldDifference& /*field*/) override {}
    void writeVariable(const BlockPair& /*pair*/, int /*kind*/,
                       const ValueDifferences& /*differences*/) override {}
    void writeMissing(const BlockPair& /*pair*/) override {}
    void end(const DiffTotals& /*totals*/) override {}
};

std::unique_ptr<DiffReport> makeReport(const DiffArguments& arguments, OpenRecord& a, OpenRecord& b,
                                       std::ostream& out) {
    if (arguments.isQuiet) {
        return std::make_unique<NoReport>();
    }
    if (arguments.common.format == "json") {
        return std::make_unique<DiffJson>(a, b, arguments.options, out);
    }
    return std::make_unique<DiffText>(a, b, arguments.options, out);
}

int tellDiff(DiffArguments& arguments) {
    const std::vector<std::string>& paths = arguments.common.records;
    if (paths.size() != 2) {
        throw companion::UsageError("two records are needed, A and B");
    }
    if (paths[0] == "-" && paths[1] == "-") {
        throw companion::UsageError("only one of the records can be standard input");
    }
    OpenRecord a(paths[0], arguments.common);
    OpenRecord b(paths[1], arguments.common);
    arguments.options.stopsEarly = arguments.isQuiet;
    companion::OutputFile output("-", false);
    const auto report = makeReport(arguments, a, b, output.stream());
    const DiffTotals totals = RecordDiff(a, b, arguments.options, *report).run();
    output.commit();
    return totals.isSame() ? companion::nothingFound : companion::somethingFound;
}

/// Left to itself, an option takes -1 for the largest number that there is.
CLI::Validator wholeNumber() {
    return CLI::Range(std::int64_t{0}, std::numeric_limits<std::int64_t>::max());
}

void addTolerance(CLI::App& verb, Tolerance& tolerance) {
    constexpr const char* group = "Tolerance";
    addOption(verb, group, "--abs", "X", tolerance.absolute, "Let values be so far apart")
        ->check(finiteNumber(false));
    addOption(verb, group, "--rel", "Y", tolerance.relative,
              "The same, times the larger of them; both are added")
        ->check(finiteNumber(false));
    addOption(verb, group, "--ulp", "N", tolerance.ulp, "Or so many representable numbers apart")
        ->check(wholeNumber());
    verb.add_flag("--nan-differs", tolerance.nanDiffers, "Tell NaN of other bits apart")
        ->group(group);
}

void addIgnore(CLI::App& verb, std::vector<std::string>& ignored) {
    const auto known = comparedFields();
    addOption(verb, "Comparison", "--ignore", "FIELD[,...]", ignored,
              "Leave out fields; may be given several times")
        ->delimiter(',')
        ->allow_extra_args(false)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll)
        ->check(CLI::Validator(
            [known](const std::string& field) {
                return std::ranges::find(known, field) == known.end()
                           ? '"' + field + "\" is no field, see eqrecord diff --help"
                           : "";
            },
            ""));
}

void addMatch(CLI::App& verb, Match& match) {
    static const std::map<std::string, Match> matches{
        {"band", Match::band}, {"position", Match::position}, {"name", Match::name}};
    verb.add_option_function<std::string>(
            "--match", [&match](const std::string& name) { match = matches.at(name); },
            "How configurations belong together: by band\nand label (default), position, or file\n"
            "name and label")
        ->check(CLI::IsMember({"band", "position", "name"}))
        ->type_name("HOW")
        ->option_text("HOW")
        ->group("Comparison");
}

}  // namespace

void addDiff(CLI::App& app, Work& work) {
    CLI::App& verb = addVerb(app, "diff", "[OPTION...] A B", "Tell what two records differ in");
    const auto arguments = std::make_shared<DiffArguments>();
    DiffOptions& options = arguments->options;
    addRecords(verb, arguments->common, true);
    addTolerance(verb, options.tolerance);
    addIgnore(verb, options.ignored);
    addMatch(verb, options.match);
    options.selection.addTo(verb);
    addFormat(verb, arguments->common, {"text", "json"});
    addOption(verb, "Output", "--max-lines", "N", options.mostPairs,
              "List at most so many values of a variable\n(default 20)")
        ->check(wholeNumber());
    verb.add_flag("--quiet", arguments->isQuiet, "Tell by the status only")->group("Output");
    addReading(verb, arguments->common);
    endVerb(verb, footer,
            [arguments, &work] { work = [arguments] { return tellDiff(*arguments); }; });
}

}  // namespace eqrecord
