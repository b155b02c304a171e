// To check a record that is damaged is no trouble but a finding; only a file that can't be read is.
// Nothing is said of a record without findings, as compilers do it.

#include "tools/eqrecord/Check.h"

#include <algorithm>
#include <memory>
#include <ostream>

#include "lint/Printable.h"
#include "tools/companion/OutputFile.h"
#include "tools/companion/Program.h"
#include "tools/eqrecord/JsonWriter.h"
#include "tools/eqrecord/RecordCheck.h"
#include "tools/eqrecord/Telling.h"
#include "tools/eqrecord/Verb.h"

namespace eqrecord {

namespace {

constexpr const char* footer =
    "Status 0: nothing found, or notes only; 1: something found; 2: a record that can't be read.\n"
    "\n"
    "Examples:\n"
    "  eqrecord check *.record             tell what is wrong\n"
    "  eqrecord check --strict EQ.record   let notes count";

constexpr std::string_view severityOf(const Finding& finding) {
    return finding.isError ? "error" : "note";
}

void writeText(const std::string& path, const std::vector<Finding>& findings, std::ostream& out) {
    for (const Finding& finding : findings) {
        out << lint::printable(path) << ':' << hexNumber(finding.offset) << ": "
            << severityOf(finding) << ": " << finding.message << " [" << finding.id << "]\n";
    }
}

/// As docs/eqrecord-check-1.schema.json says.
void writeJson(const std::string& path, const record::RecordReader& reader,
               const std::vector<Finding>& findings, std::ostream& out) {
    JsonWriter json(out);
    const auto writeText = [&json](std::string_view key, std::string_view text) {
        json.key(key);
        json.text(text);
    };
    json.beginObject();
    writeText("schema", "eqrecord-check-1");
    writeText("path", path);
    writeText("state", nameOf(reader.outcome().state));
    json.key("findings");
    json.beginArray();
    for (const Finding& finding : findings) {
        json.beginObject();
        writeText("id", finding.id);
        writeText("severity", severityOf(finding));
        json.key("offset");
        json.number(finding.offset);
        writeText("message", finding.message);
        json.endObject();
    }
    json.endArray();
    json.endObject();
    out << '\n';
}

int tellFindings(const Arguments& arguments, bool isStrict) {
    companion::OutputFile output("-", false);
    const int status =
        forEachRecord(arguments, [&](const std::string& path, record::RecordReader& reader) -> int {
            std::vector<Finding> findings;
            try {
                findings = checkRecord(reader);
            } catch (const std::runtime_error& error) {
                return sayUnreadable(error);
            }
            if (arguments.format == "json") {
                writeJson(path, reader, findings, output.stream());
            } else {
                writeText(path, findings, output.stream());
            }
            const bool isFound = std::ranges::any_of(
                findings, [&](const Finding& finding) { return isStrict || finding.isError; });
            return isFound ? companion::somethingFound : companion::nothingFound;
        });
    output.commit();
    return status;
}

}  // namespace

void addCheck(CLI::App& app, Work& work) {
    Verb verb(app, "check", "[OPTION...] RECORD...", "Tell what is wrong with records");
    const auto arguments = std::make_shared<Arguments>();
    const auto isStrict = std::make_shared<bool>(false);
    verb.addOperands("RECORD", true, arguments->records);
    verb.addFlag("Output", "--strict", *isStrict, "Let notes count for the status");
    verb.addFormat(*arguments, {"text", "json"});
    verb.addReading(*arguments);
    verb.end(footer, [arguments, isStrict, &work] {
        work = [arguments, isStrict] { return tellFindings(*arguments, *isStrict); };
    });
}

}  // namespace eqrecord
