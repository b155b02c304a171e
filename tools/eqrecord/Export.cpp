#include "tools/eqrecord/Export.h"

#include <memory>
#include <stdexcept>

#include "tools/companion/Program.h"
#include "tools/eqrecord/ExportedPart.h"
#include "tools/eqrecord/NetcdfProgram.h"
#include "tools/eqrecord/OpenRecord.h"
#include "tools/eqrecord/Selection.h"
#include "tools/eqrecord/Verb.h"
#include "tools/eqrecord/XmlExport.h"

namespace eqrecord {

namespace {

constexpr const char* footer =
    "xml makes parameter files FOLDER/NNN/NAME. The folder is there when the converter has made\n"
    "the same record of them: 'eqconvert FOLDER/*/*' gives it again.\n"
    "netcdf is what eqrecord-netcdf makes, which may have to be installed.\n"
    "\n"
    "Status 0: exported; 2: not, as standard error tells, and nothing is left.\n"
    "\n"
    "Examples:\n"
    "  eqrecord export --format xml -o parameters EQ.record\n"
    "  eqrecord export --format netcdf --band 4 -o EQ_B4.nc EQ.record";

int runXml(const Arguments& arguments, const Selection& selection) {
    if (arguments.output == "-") {
        throw companion::UsageError("--format xml needs -o FOLDER");
    }
    if (arguments.netcdfKind != Arguments().netcdfKind) {
        throw companion::UsageError("--netcdf-kind goes with --format netcdf");
    }
    if (arguments.overwrites) {
        throw companion::UsageError("--overwrite: a folder is never replaced");
    }
    if (!selection.takesAllOfBlocks()) {
        throw companion::UsageError(
            "--format xml takes whole configurations: no --detector, --kind and --pixel");
    }
    OpenRecord record(arguments.record(), arguments);
    try {
        exportXml(record, exportedPart(record, selection), arguments.takesPartial,
                  arguments.output);
    } catch (const Inexpressible& error) {
        throw std::runtime_error(record.path() + ": can't be expressed as XML: " + error.what());
    }
    return companion::nothingFound;
}

}  // namespace

void addExport(CLI::App& app, Work& work, std::span<char* const> given) {
    Verb verb(app, "export", "--format FORMAT -o PATH [OPTION...] RECORD",
              "Write records in other formats");
    const auto arguments = std::make_shared<Arguments>();
    const auto selection = std::make_shared<Selection>();
    verb.addOperands("RECORD", false, arguments->records);
    verb.addChoice({"Output", "--format", "FORMAT", "netcdf or xml"}, arguments->format,
                   {"netcdf", "xml"}, true);
    verb.addNetcdfKind(*arguments);
    verb.addOutput(*arguments, "PATH", "Write to this file, or folder of xml, which must\nbe new");
    selection->addTo(verb);
    verb.addReading(*arguments);
    verb.end(footer, [arguments, selection, &work, given] {
        work = [arguments, selection, given] {
            if (arguments->format == "netcdf") {
                becomeNetcdfProgram(given);
            }
            return runXml(*arguments, *selection);
        };
    });
}

}  // namespace eqrecord
