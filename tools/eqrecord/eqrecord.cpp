// Works with what the converter writes:
//
//     eqrecord VERB [OPTION...] RECORD...
//
// Records are read by record/; here are the verbs, one file each, and what they have in common.

#include <CLI/CLI.hpp>
#include <algorithm>
#include <span>

#include "tools/companion/CommandLine.h"
#include "tools/companion/Program.h"
#include "tools/eqrecord/Arguments.h"
#include "tools/eqrecord/Build.h"
#include "tools/eqrecord/Check.h"
#include "tools/eqrecord/Diff.h"
#include "tools/eqrecord/Dump.h"
#include "tools/eqrecord/Export.h"
#include "tools/eqrecord/Info.h"
#include "tools/eqrecord/Plot.h"
#include "tools/eqrecord/Stats.h"

namespace {

constexpr const char* version = "eqrecord " EQCONVERT_VERSION;

constexpr const char* description = "Works with the records that eqconvert writes.";

constexpr const char* footer =
    "A RECORD is a file, or - for standard input. 'eqrecord VERB --help' tells more.\n"
    "\n"
    "Status 0: nothing to tell; 1: something is; 2: trouble.";

int runEqrecord(int argc, char** argv) {
    CLI::App app(description, eqrecord::programName);
    companion::prepare(app, "VERB [OPTION...] RECORD...");
    app.require_subcommand(1);
    app.footer(footer);
    eqrecord::Work work;
    eqrecord::addInfo(app, work);
    eqrecord::addCheck(app, work);
    eqrecord::addDump(app, work);
    eqrecord::addBuild(app, work);
    eqrecord::addDiff(app, work);
    eqrecord::addStats(app, work);
    eqrecord::addPlot(app, work);
    const std::span<char* const> given(argv, static_cast<std::size_t>(argc));
    eqrecord::addExport(app, work, given.subspan(std::min<std::size_t>(given.size(), 2)));
    return companion::parseAndRun(app, version, argc, argv, [&] { return work(); });
}

}  // namespace

int main(int argc, char** argv) {
    return companion::runProgram(eqrecord::programName, [&] { return runEqrecord(argc, argv); });
}
