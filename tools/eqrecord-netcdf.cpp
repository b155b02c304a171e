// Writes records as netCDF:
//
//     eqrecord-netcdf -o FILE [OPTION...] RECORD
//
// A program of its own, so that only those need the library who want such files. eqrecord runs it
// for 'export --format netcdf', with the arguments that it has been given itself.

#include <netcdf.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>

#include "lint/Printable.h"
#include "tools/companion/CommandLine.h"
#include "tools/companion/OutputFile.h"
#include "tools/companion/Program.h"
#include "tools/eqrecord/Arguments.h"
#include "tools/eqrecord/NetcdfExport.h"
#include "tools/eqrecord/NetcdfFile.h"
#include "tools/eqrecord/OpenRecord.h"
#include "tools/eqrecord/Selection.h"
#include "tools/eqrecord/Verb.h"

namespace {

constexpr const char* name = "eqrecord-netcdf";
constexpr const char* ownVersion = "eqrecord-netcdf " EQCONVERT_VERSION;

constexpr const char* description =
    "Writes a record as netCDF, for 'eqrecord export --format netcdf'.";

constexpr const char* footer =
    "Status 0: written; 2: not, as standard error tells, and nothing is left.\n"
    "\n"
    "Examples:\n"
    "  eqrecord-netcdf -o EQ.nc EQ.record\n"
    "  eqrecord-netcdf --band 4 --kind A1,D --netcdf-kind 64 -o EQ_B4.nc EQ.record";

/// "eqrecord-netcdf 1.0.0 (with netCDF 4.9.0)"; behind that the library tells when it was built.
std::string version() {
    const std::string library = ::nc_inq_libvers();
    return std::string(ownVersion) + " (with netCDF " + library.substr(0, library.find(' ')) + ")";
}

/// An argument as a shell would need it.
std::string quoted(std::string_view argument) {
    const auto isPlain = [](unsigned char c) {
        return std::isalnum(c) != 0 ||
               std::string_view("-_./,:=@%+").find(static_cast<char>(c)) != std::string_view::npos;
    };
    if (!argument.empty() && std::ranges::all_of(argument, isPlain)) {
        return std::string(argument);
    }
    std::string text = "'";
    for (const char c : argument) {
        text += c == '\'' ? std::string("'\\''") : std::string(1, c);
    }
    return text + '\'';
}

std::string historyOf(std::span<char*> arguments) {
    std::string history = name;
    for (const char* const argument : arguments) {
        history += ' ' + quoted(argument);
    }
    return history;
}

int writeNetcdf(const eqrecord::Arguments& arguments, const eqrecord::Selection& selection,
                const std::string& history) {
    using Kind = eqrecord::NetcdfFile::Kind;
    if (arguments.output == "-") {
        throw companion::UsageError(
            "netCDF can't be written to standard output: -o FILE is needed");
    }
    eqrecord::OpenRecord record(arguments.record(), arguments);
    companion::OutputFile output(arguments.output, arguments.overwrites);
    if (output.newFile() < 0) {
        throw std::runtime_error(arguments.output + ": netCDF can only be written to a file");
    }
    eqrecord::NetcdfFile file(lint::printable(arguments.output), output.newFile(),
                              arguments.netcdfKind == "4" ? Kind::netcdf4 : Kind::data64);
    eqrecord::exportNetcdf(record, selection, history, file);
    output.commit();
    return companion::nothingFound;
}

int run(int argc, char** argv) {
    CLI::App app(description, name);
    eqrecord::Arguments arguments;
    eqrecord::Selection selection;
    companion::prepare(app, "-o FILE [OPTION...] RECORD");
    eqrecord::Verb verb(app);
    verb.addOperands("RECORD", false, arguments.records);
    // So that the arguments of 'eqrecord export' can be passed on as they are.
    verb.addChoice({"", "--format", "FORMAT", "netcdf"}, arguments.format, {"netcdf"});
    verb.addNetcdfKind(arguments);
    verb.addOutput(arguments);
    selection.addTo(verb);
    verb.addReading(arguments);
    app.footer(footer);
    const std::span<char*> given(argv, static_cast<std::size_t>(argc));
    return companion::parseAndRun(app, version(), argc, argv, [&] {
        return writeNetcdf(arguments, selection, historyOf(given.subspan(argc > 0 ? 1 : 0)));
    });
}

}  // namespace

int main(int argc, char** argv) {
    const int status = companion::runProgram(name, [&] { return run(argc, argv); });
    if (status == companion::trouble) {
        std::_Exit(status);  // the library below netCDF tries a failed write again, and crashes
    }
    return status;
}
