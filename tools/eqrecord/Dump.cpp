// The output is opened last: neither a record that is not taken nor a selection of nothing leaves
// an empty file, or replaces one.

#include "tools/eqrecord/Dump.h"

#include <memory>

#include "tools/companion/OutputFile.h"
#include "tools/companion/Program.h"
#include "tools/eqrecord/DumpCsv.h"
#include "tools/eqrecord/DumpJson.h"
#include "tools/eqrecord/DumpText.h"
#include "tools/eqrecord/OpenRecord.h"
#include "tools/eqrecord/Verb.h"

namespace eqrecord {

namespace {

constexpr const char* footer =
    "Of json 'eqrecord build' makes the record again, to the bit: there the fill value, a NaN,\n"
    "is null, and any other NaN its bits. In csv every NaN is empty, or what --nan says.\n"
    "\n"
    "Status 0: done; 2: no record, or one that can't be read or is not whole.\n"
    "\n"
    "Examples:\n"
    "  eqrecord dump EQ_B4.record                         what each byte is\n"
    "  eqrecord dump --format json EQ_B4.record | jq .    to change it: see 'eqrecord build'\n"
    "  eqrecord dump --format csv --kind D --configuration ALL -o d.csv EQ_B4.record";

struct DumpArguments {
    Arguments common;
    Selection selection;
    DumpOptions options;
    bool hasNan = false;
};

int dump(const DumpArguments& arguments) {
    if (arguments.common.records.empty()) {
        throw companion::UsageError("no RECORD is given");
    }
    const std::string& format = arguments.common.format;
    if (arguments.hasNan && format != "csv") {
        throw companion::UsageError("--nan is for --format csv");
    }
    OpenRecord record(arguments.common.records.front(), arguments.common);
    DumpSource source(record.reader(), record.reading(), arguments.selection);
    companion::OutputFile output(arguments.common.output, arguments.common.overwrites);
    const auto write = format == "json"  ? writeDumpJson
                       : format == "csv" ? writeDumpCsv
                                         : writeDumpText;
    write(source, arguments.options, output.stream());
    output.commit();
    return companion::nothingFound;
}

}  // namespace

void addDump(CLI::App& app, Work& work) {
    Verb verb(app, "dump", "[OPTION...] RECORD",
              "Show all that stands in a record, or turn it into JSON or CSV");
    const auto arguments = std::make_shared<DumpArguments>();
    verb.addOperands("RECORD", false, arguments->common.records);
    arguments->selection.addTo(verb);
    verb.addFormat(arguments->common, {"text", "json", "csv"});
    verb.addFlag("Output", "--all", arguments->options.leavesNothingOut,
                 "Shorten and fold no vectors, leave out no rows");
    verb.addFlag("Output", "--hex", arguments->options.writesBits,
                 "Values as their bits: 0x3ff0000000000000 for 1");
    verb.addOption({"Output", "--nan", "TEXT", "In csv: what stands for NaN (nothing by default)"},
                   [arguments = arguments.get()](const std::string& text) {
                       arguments->options.nan = text;
                       arguments->hasNan = true;
                   });
    verb.addOutput(arguments->common);
    verb.addReading(arguments->common);
    verb.end(footer, [arguments, &work] { work = [arguments] { return dump(*arguments); }; });
}

}  // namespace eqrecord
