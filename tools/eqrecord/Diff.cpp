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
    std::string match = "band";
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

constexpr std::uint64_t mostNumber = std::numeric_limits<std::int64_t>::max();

void addTolerance(Verb& verb, Tolerance& tolerance) {
    constexpr const char* group = "Tolerance";
    verb.addReal({group, "--abs", "X", "Let values be so far apart"}, false,
                 [&tolerance](double bound) { tolerance.absolute = bound; });
    verb.addReal({group, "--rel", "Y", "The same, times the larger of them; both are added"}, false,
                 [&tolerance](double bound) { tolerance.relative = bound; });
    verb.addWhole({group, "--ulp", "N", "Or so many representable numbers apart"}, 0, mostNumber,
                  [&tolerance](std::uint64_t count) { tolerance.ulp = count; });
    verb.addFlag(group, "--nan-differs", tolerance.nanDiffers, "Tell NaN of other bits apart");
}

void addIgnore(Verb& verb, std::vector<std::string>& ignored) {
    verb.addMany(
        {"Comparison", "--ignore", "FIELD[,...]", "Leave out fields; may be given several times"},
        true, ignored, [known = comparedFields()](const std::string& field) {
            return std::ranges::find(known, field) == known.end()
                       ? '"' + field + "\" is no field, see eqrecord diff --help"
                       : "";
        });
}

Match matchOf(const std::string& name) {
    static const std::map<std::string, Match> matches{
        {"band", Match::band}, {"position", Match::position}, {"name", Match::name}};
    return matches.at(name);
}

}  // namespace

void addDiff(CLI::App& app, Work& work) {
    Verb verb(app, "diff", "[OPTION...] A B", "Tell what two records differ in");
    const auto arguments = std::make_shared<DiffArguments>();
    DiffOptions& options = arguments->options;
    verb.addOperands("RECORD", true, arguments->common.records);
    addTolerance(verb, options.tolerance);
    addIgnore(verb, options.ignored);
    verb.addChoice(
        {"Comparison", "--match", "HOW",
         "How configurations belong together: by band\nand label (default), position, or file\n"
         "name and label"},
        arguments->match, {"band", "position", "name"});
    options.selection.addTo(verb);
    verb.addFormat(arguments->common, {"text", "json"});
    verb.addWhole(
        {"Output", "--max-lines", "N", "List at most so many values of a variable\n(default 20)"},
        0, mostNumber, [&options](std::uint64_t count) { options.mostPairs = count; });
    verb.addFlag("Output", "--quiet", arguments->isQuiet, "Tell by the status only");
    verb.addReading(arguments->common);
    verb.end(footer, [arguments, &work] {
        arguments->options.match = matchOf(arguments->match);
        work = [arguments] { return tellDiff(*arguments); };
    });
}

}  // namespace eqrecord
