// Whether parameter files give the record again is not worked out here but tried: the converter
// itself reads them back, and what it writes is compared as it comes. What is tested before is
// what can be told better than by the first byte that differs, or what must not be written at
// all. Of the record only names of files become paths. They hold no slash, a file is made only
// where there is nothing, and the folder that they are put in is a new one.

#include "tools/eqrecord/XmlExport.h"

#include <cerrno>
#include <climits>
#include <cstdint>
#include <filesystem>
#include <span>
#include <stdexcept>
#include <string_view>
#include <system_error>
#include <vector>

#include "converter/Converter.h"
#include "converter/Messages.h"
#include "lint/Printable.h"
#include "lint/Teller.h"
#include "record/Layout.h"
#include "tools/companion/OutputFile.h"
#include "tools/companion/OutputFolder.h"
#include "tools/companion/Program.h"
#include "tools/eqrecord/ParameterFile.h"
#include "tools/eqrecord/RecordComparison.h"
#include "tools/eqrecord/Telling.h"

namespace eqrecord {

namespace {

/// The converter reads no file that is larger.
constexpr std::uintmax_t largestFile = INT_MAX - 1;

/// Drops what the converter says: where it ends is told by the record.
class Silence : public MessageSink {
  public:
    void say(std::string_view) override {}
};

void checkPrologue(const OpenRecord& record) {
    const std::string_view type = record.reading().fileType;
    if (record.outcome().order != record::machineOrder) {
        throw Inexpressible("the values: it is " + std::string(nameOf(record.outcome().order)) +
                            "-endian, and the converter of this machine writes no such record");
    }
    if (!isElementName(type.substr(record::fileTypePrefix.size()))) {
        throw Inexpressible("field 3 (file type), " + lint::inQuotes(type) +
                            ": what is behind the slash is no end of an element's name");
    }
}

void checkFile(const OpenRecord& record, const ExportedFile& file, bool takesShort) {
    const std::string_view name = file.file->name;
    if (name.empty() || name == "." || name == ".." || name.size() > NAME_MAX) {
        throw Inexpressible("field 11 (file name) of " + placeOf(file) + ", " +
                            lint::inQuotes(name) + ": no file can have this name");
    }
    if (!takesShort && !file.isCounted()) {
        throw Inexpressible(tellCount(record.outcome(), record.reading(), file.number - 1) +
                            "; --partial takes what is there");
    }
    if (name.starts_with('.')) {
        companion::say(programName, lint::printable(record.path()),
                       ": note: the name of " + placeOf(file) + ", " + lint::inQuotes(name) +
                           ", begins with a dot: FOLDER/*/* leaves it out");
    }
}

/// The name of the n-th folder, from 1; of the same width for all, so that they can be sorted.
std::string numbered(std::size_t n, std::size_t count) {
    constexpr std::size_t leastWidth = 3;
    const std::size_t width = std::max(leastWidth, std::to_string(count).size());
    const std::string digits = std::to_string(n);
    return std::string(width - digits.size(), '0') + digits;
}

/// Makes a folder with the file, whose path it returns.
std::string writeFile(OpenRecord& record, const ExportedFile& file, const std::string& folder) {
    std::string path = folder + '/' + file.file->name;
    try {
        if (!std::filesystem::create_directory(folder)) {
            throw std::system_error(EEXIST, std::generic_category());
        }
        companion::OutputFile output(path, false);
        writeParameterFile(record.reader(), record.reading(), file, output.stream());
        output.commit();
    } catch (const std::system_error& error) {  // whose text may have the name as it is
        throw std::system_error(error.code(), "cannot write " + placeOf(file));
    }
    if (std::filesystem::file_size(path) > largestFile) {
        throw Inexpressible(placeOf(file) + ": it would be larger than what the converter reads");
    }
    return path;
}

void convertBack(OpenRecord& record, const ExportedPart& part,
                 const std::vector<std::string>& paths) {
    std::vector<const char*> arguments;
    std::size_t longest = 0;
    for (const std::string& path : paths) {
        arguments.push_back(path.c_str());
        longest = std::max(longest, path.size());
    }
    RecordComparison comparison(record.reader(), part);
    Silence silence;
    Messages messages(silence, longest);
    try {
        Converter(comparison, messages).run(arguments);
    } catch (const std::out_of_range&) {  // so it does when it can't read the first file
        throw Inexpressible(placeOf(part.files.front()) + ": it can't be read back");
    }
    comparison.end();
}

}  // namespace

void exportXml(OpenRecord& record, const ExportedPart& part, bool takesShort,
               const std::string& folder) {
    checkPrologue(record);
    for (const ExportedFile& file : part.files) {
        checkFile(record, file, takesShort);
    }
    companion::OutputFolder output(folder);
    std::vector<std::string> paths;
    for (const ExportedFile& file : part.files) {
        const std::string name = numbered(paths.size() + 1, part.files.size());
        paths.push_back(writeFile(record, file, output.temporary() + '/' + name));
    }
    convertBack(record, part, paths);
    output.commit();
}

}  // namespace eqrecord
