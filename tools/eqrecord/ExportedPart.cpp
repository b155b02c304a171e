#include "tools/eqrecord/ExportedPart.h"

#include <utility>

#include "lint/Teller.h"
#include "record/Layout.h"
#include "tools/companion/Program.h"

namespace eqrecord {

ExportedPart exportedPart(OpenRecord& record, const Selection& selection) {
    const record::Reading& reading = record.reading();
    if (reading.files.empty()) {
        throw std::runtime_error(record.path() + ": no file of it is whole");
    }
    ExportedPart part{&reading, {}, reading.end == record.reader().size()};
    std::int16_t nucTableId = 0;
    for (std::size_t i = 0; i < reading.files.size(); ++i) {
        const record::File& file = reading.files[i];
        nucTableId = file.nucTableId.value_or(nucTableId);
        ExportedFile exported{&file, i + 1, nucTableId, {}};
        for (const record::Configuration& configuration : file.configurations) {
            if (selection.takesFile(file, i + 1) && selection.takesConfiguration(configuration)) {
                exported.configurations.push_back(&configuration);
            }
        }
        const std::size_t count = exported.configurations.size();
        part.isWhole = part.isWhole && count == file.configurations.size() && exported.isCounted();
        if (count > 0 || (file.configurations.empty() && selection.takesEmptyFile(file, i + 1))) {
            part.files.push_back(std::move(exported));
        }
    }
    if (part.files.empty()) {
        throw companion::UsageError("nothing of the record is selected");
    }
    part.isWhole = part.isWhole && part.files.size() == reading.filesCounted;
    return part;
}

std::string placeOf(const ExportedFile& file) {
    return "file " + std::to_string(file.number);
}

std::string placeOf(const ExportedFile& file, const record::Configuration& configuration) {
    const auto number = &configuration - file.file->configurations.data() + 1;
    return placeOf(file) + ", configuration " + std::to_string(number) + ' ' +
           lint::inQuotes(configuration.label);
}

std::string placeOfValue(const ExportedFile& file, const record::Configuration& configuration,
                         std::size_t index) {
    const auto pixels = static_cast<std::size_t>(configuration.pixels);
    const std::size_t vector = index / pixels;
    return std::string(record::kindNames[vector / record::detectorCount]) + " of detector " +
           std::to_string(vector % record::detectorCount + 1) + ", pixel " +
           std::to_string(index % pixels + 1) + " of " + placeOf(file, configuration);
}

}  // namespace eqrecord
