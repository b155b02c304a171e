// The output is opened before the JSON is read, so that one that is there already is told at once.
// The record is only written when all of it is known to be one.

#include "tools/eqrecord/Build.h"

#include <memory>
#include <ostream>

#include "lint/Printable.h"
#include "tools/companion/OutputFile.h"
#include "tools/companion/Program.h"
#include "tools/eqrecord/RecordJson.h"
#include "tools/eqrecord/Verb.h"

namespace eqrecord {

namespace {

constexpr const char* footer =
    "JSON is what 'eqrecord dump --format json' writes, or a file like it: the names in an object\n"
    "may be in any order. The record has the byte order that it says. What no record can hold is\n"
    "refused with the place in the JSON, and nothing is written then.\n"
    "\n"
    "Status 0: done; 2: refused, or one of the files can't be read or written.\n"
    "\n"
    "Examples:\n"
    "  eqrecord build -o copy.record EQ_B4.json\n"
    "  eqrecord dump --format json EQ_B4.record | jq '.files[0].band = 5' |\n"
    "      eqrecord build -o EQ_B5.record -";

/// Lets a record go to a stream, which throws when it can't be written.
class StreamSink : public record::Sink {
  public:
    explicit StreamSink(std::ostream& out) : out_(out) {}
    void write(std::string_view bytes) override {
        out_.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    }

  private:
    std::ostream& out_;
};

/// A record with fewer configurations than counted can be made, but it may be a slip.
void tellCounts(const std::string& path, const record::Reading& reading) {
    for (std::size_t i = 0; i < reading.files.size(); ++i) {
        const record::File& file = reading.files[i];
        const std::size_t there = file.configurations.size();
        if (there < file.counted || (there - file.counted) % 256 != 0) {
            companion::say(programName, lint::printable(path) + ": /files/" + std::to_string(i) +
                                            "/configurations_counted: note: is " +
                                            std::to_string(file.counted) + ", and the list has " +
                                            std::to_string(there) +
                                            ": a reader will take the record for one that was cut");
        }
    }
}

int build(const Arguments& arguments) {
    if (arguments.records.empty()) {
        throw companion::UsageError("no JSON is given");
    }
    const std::string& path = arguments.records.front();
    companion::OutputFile output(arguments.output, arguments.overwrites);
    if (output.isTerminal()) {
        throw companion::UsageError("a record is nothing for a terminal; -o writes it to a file");
    }
    JsonInput input(path);
    RecordBuilder builder;
    try {
        readRecordJson(input, builder);
    } catch (const std::system_error&) {
        throw;  // names the file that can't be read or written
    } catch (const std::runtime_error& error) {
        throw std::runtime_error(path + ": " + error.what());
    }
    StreamSink sink(output.stream());
    builder.write(sink);
    output.commit();
    tellCounts(path, builder.reading());
    return companion::nothingFound;
}

}  // namespace

void addBuild(CLI::App& app, Work& work) {
    Verb verb(app, "build", "[OPTION...] JSON", "Make the record that a JSON file describes");
    const auto arguments = std::make_shared<Arguments>();
    verb.addOperands("JSON", false, arguments->records);
    verb.addOutput(*arguments);
    verb.end(footer, [arguments, &work] { work = [arguments] { return build(*arguments); }; });
}

}  // namespace eqrecord
