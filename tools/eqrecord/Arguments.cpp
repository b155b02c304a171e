#include "tools/eqrecord/Arguments.h"

#include <algorithm>
#include <system_error>

#include "lint/Printable.h"
#include "tools/companion/Program.h"

namespace eqrecord {

const std::string& Arguments::record() const {
    if (records.empty()) {
        throw companion::UsageError("no RECORD is given");
    }
    return records.front();
}

std::optional<record::ByteOrder> Arguments::order() const {
    if (byteOrder == "auto") {
        return std::nullopt;
    }
    return byteOrder == "little" ? record::ByteOrder::little : record::ByteOrder::big;
}

int sayUnreadable(const std::runtime_error& error) {
    companion::say(programName, lint::printable(error.what()));
    return companion::trouble;
}

int forEachRecord(const Arguments& arguments,
                  const std::function<int(const std::string& path, record::RecordReader&)>& tell) {
    if (arguments.records.empty()) {
        throw companion::UsageError("no RECORD is given");
    }
    int status = companion::nothingFound;
    for (const std::string& path : arguments.records) {
        std::optional<record::RecordReader> reader;
        try {
            reader.emplace(path, arguments.order());
            chooseReading(arguments, path, *reader);
        } catch (const std::runtime_error& error) {
            status = sayUnreadable(error);
            continue;
        }
        status = std::max(status, tell(path, *reader));
    }
    return status;
}

void chooseReading(const Arguments& arguments, const std::string& path,
                   record::RecordReader& reader) {
    const std::size_t count = reader.outcome().readings.size();
    if (arguments.reading == 0 || count == 0) {
        return;
    }
    if (arguments.reading > count) {
        throw std::runtime_error(path + ": there is no reading " +
                                 std::to_string(arguments.reading));
    }
    reader.choose(arguments.reading);
}

}  // namespace eqrecord
