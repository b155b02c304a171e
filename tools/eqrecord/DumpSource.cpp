// A configuration that is not whole is kept by the outcome and not by the reading; here it becomes
// the last of its file, so that all formats show what is whole of it.

#include "tools/eqrecord/DumpSource.h"

#include "tools/companion/Program.h"

namespace eqrecord {

DumpSource::DumpSource(record::RecordReader& reader, const record::Reading& reading,
                       const Selection& selection)
    : reader_(reader), reading_(reading), selection_(selection) {
    for (std::size_t i = 0; i < reading.files.size(); ++i) {
        const record::File& file = reading.files[i];
        if (!selection.takesFile(file, i + 1)) {
            continue;
        }
        DumpedFile chosen = chosenOf(file, i + 1);
        // A file without configurations is shown, but not one of which none is wanted.
        if (!chosen.configurations.empty() || !selection.choosesConfigurations()) {
            files_.push_back(std::move(chosen));
        }
    }
    if (files_.empty() && !reading.files.empty()) {
        throw companion::UsageError("nothing of the record is selected");
    }
}

/// A file with its configurations that are selected.
DumpedFile DumpSource::chosenOf(const record::File& file, std::size_t number) const {
    DumpedFile chosen{&file, number, {}};
    for (std::size_t i = 0; i < file.configurations.size(); ++i) {
        if (selection_.takesConfiguration(file.configurations[i])) {
            chosen.configurations.push_back({&file.configurations[i], i + 1});
        }
    }
    const record::Ending& ending = reader_.outcome().ending;
    if (ending.file == number && ending.partial && selection_.takesConfiguration(*ending.partial)) {
        chosen.configurations.push_back({&*ending.partial, ending.configuration, ending.field,
                                         static_cast<int>(ending.wholeVectors)});
    }
    return chosen;
}

bool DumpSource::hasVector(const DumpedConfiguration& configuration, int kind, int detector) const {
    return selection_.takesKind(kind) && selection_.takesDetector(detector) &&
           // Vectors are whole in their order.
           kind * record::detectorCount + detector <= configuration.wholeVectors;
}

std::span<const double> DumpSource::read(const DumpedConfiguration& configuration, int kind,
                                         int detector, std::vector<double>& values) {
    values.resize(static_cast<std::size_t>(configuration.configuration->pixels));
    reader_.readVector(*configuration.configuration, kind, detector, values);
    const Selection::Pixels pixels = selection_.pixelsOf(values.size());
    return pixels.count == 0 ? std::span<const double>()
                             : std::span(values).subspan(pixels.first - 1, pixels.count);
}

}  // namespace eqrecord
