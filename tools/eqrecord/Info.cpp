// Of a damaged record there is nothing to show: it is told on standard error, as a file is that
// can't be read, and the records behind it are shown all the same.

#include "tools/eqrecord/Info.h"

#include <algorithm>
#include <memory>
#include <ostream>

#include "lint/Printable.h"
#include "tools/companion/OutputFile.h"
#include "tools/companion/Program.h"
#include "tools/eqrecord/InfoJson.h"
#include "tools/eqrecord/InfoText.h"
#include "tools/eqrecord/Telling.h"
#include "tools/eqrecord/Verb.h"

namespace eqrecord {

namespace {

constexpr const char* footer =
    "Status 0: complete; 1: short, incomplete, ambiguous, or followed by other bytes; 2: no\n"
    "record, or one that can't be read.\n"
    "\n"
    "Examples:\n"
    "  eqrecord info EQ_B4.record\n"
    "  eqconvert EQ_B4.xml | eqrecord info --format json -";

int tellInfo(const Arguments& arguments) {
    companion::OutputFile output("-", false);
    bool isFirst = true;
    const int result =
        forEachRecord(arguments, [&](const std::string& path, record::RecordReader& reader) -> int {
            const record::State state = reader.outcome().state;
            if (state == record::State::damaged) {
                companion::say(programName, lint::printable(path) + ": ", tell(reader).front());
                return companion::trouble;
            }
            if (arguments.format == "json") {
                writeInfoJson(path, reader, output.stream());
            } else {
                output.stream() << (isFirst ? "" : "\n");
                writeInfoText(path, reader, output.stream());
            }
            isFirst = false;
            return state == record::State::complete ? companion::nothingFound
                                                    : companion::somethingFound;
        });
    output.commit();
    return result;
}

}  // namespace

void addInfo(CLI::App& app, Work& work) {
    Verb verb(app, "info", "[OPTION...] RECORD...", "Tell what records consist of");
    const auto arguments = std::make_shared<Arguments>();
    verb.addOperands("RECORD", true, arguments->records);
    verb.addFormat(*arguments, {"text", "json"});
    verb.addReading(*arguments);
    verb.end(footer, [arguments, &work] { work = [arguments] { return tellInfo(*arguments); }; });
}

}  // namespace eqrecord
