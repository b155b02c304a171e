// Who puts a record together from this must not take a part for the whole: what is dumped of a
// record that is not whole says "incomplete", and what is selected of one "selection", with what
// is needed to know which files, configurations, detectors and pixels these are.
//
// Each vector has a line of its own, for people who edit the text or compare two of them, and is in
// memory alone.

#include "tools/eqrecord/DumpJson.h"

#include <algorithm>

#include "tools/eqrecord/JsonWriter.h"
#include "tools/eqrecord/Telling.h"

namespace eqrecord {

namespace {

class DumpJson {
  public:
    DumpJson(DumpSource& source, const DumpOptions& options, std::ostream& out)
        : source_(source),
          json_(out, options.writesBits),
          leavesNothingOut_(options.leavesNothingOut),
          isSelection_(!source.selection().isAll()) {}

    void write();

  private:
    void writeNumber(std::string_view key, std::int64_t number);
    void writeSelection();
    void writePrologue();
    void writeFile(const DumpedFile& file);
    void writeConfiguration(const DumpedConfiguration& configuration);
    void writeKind(const DumpedConfiguration& configuration, int kind);

    DumpSource& source_;
    JsonWriter json_;
    bool leavesNothingOut_;
    bool isSelection_;
    std::vector<double> values_;
};

void DumpJson::write() {
    json_.beginObject();
    json_.text("schema", "eqrecord-1");
    if (source_.isIncomplete()) {
        json_.boolean("incomplete", true);
    }
    if (isSelection_) {
        writeSelection();
    }
    writePrologue();
    json_.key("files");
    json_.beginArray();
    for (const DumpedFile& file : source_.files()) {
        writeFile(file);
    }
    json_.endArray();
    json_.endObject();
}

void DumpJson::writeNumber(std::string_view key, std::int64_t number) {
    json_.key(key);
    json_.number(number);
}

/// Of which detectors the vectors are, and from which pixel on.
void DumpJson::writeSelection() {
    json_.key("selection");
    json_.beginObject();
    json_.key("detectors");
    json_.beginArray();
    for (int detector = 1; detector <= record::detectorCount; ++detector) {
        if (source_.selection().takesDetector(detector)) {
            json_.number(std::int64_t{detector});
        }
    }
    json_.endArray();
    writeNumber("first_pixel", static_cast<std::int64_t>(source_.selection().pixelsOf(0).first));
    json_.endObject();
}

/// A record that is cut may not have all of it.
void DumpJson::writePrologue() {
    const record::Reading& reading = source_.reading();
    json_.text("byte_order", nameOf(source_.reader().outcome().order));
    const std::pair<std::string_view, const std::string&> texts[] = {
        {"file_type", reading.fileType},
        {"creation_date", reading.creationDate},
        {"applicability_start", reading.applicabilityStart},
        {"applicability_end", reading.applicabilityEnd}};
    for (const auto& [key, text] : texts) {
        if (!text.empty()) {
            json_.text(key, text);
        }
    }
    if (reading.filesCounted > 0) {
        writeNumber("files_counted", static_cast<std::int64_t>(reading.filesCounted));
    }
}

/// The numbers tell which of the record's files and configurations a selection holds.
void DumpJson::writeFile(const DumpedFile& file) {
    json_.breakLine();
    json_.beginObject();
    if (isSelection_) {
        writeNumber("number", static_cast<std::int64_t>(file.number));
    }
    if (file.file->nucTableId) {
        writeNumber("nuc_table_id", *file.file->nucTableId);
    }
    writeNumber("band", file.file->band);
    json_.text("name", file.file->name);
    writeNumber("configurations_counted", file.file->counted);
    json_.key("configurations");
    json_.beginArray();
    for (const DumpedConfiguration& configuration : file.configurations) {
        writeConfiguration(configuration);
    }
    json_.endArray();
    json_.endObject();
}

/// What the broken configuration of a record does not have is left out, and never null.
void DumpJson::writeConfiguration(const DumpedConfiguration& configuration) {
    json_.breakLine();
    json_.beginObject();
    if (isSelection_) {
        writeNumber("number", static_cast<std::int64_t>(configuration.number));
    }
    if (configuration.isBroken()) {
        json_.boolean("incomplete", true);
    }
    json_.text("label", configuration.configuration->label);
    if (configuration.has(15)) {
        json_.real("epsilon", configuration.configuration->epsilon());
    }
    if (configuration.has(16)) {
        writeNumber("pixels", configuration.configuration->pixels);
    }
    for (int kind = 0; kind < record::kindCount; ++kind) {
        if (source_.selection().takesKind(kind) && configuration.hasKind(kind)) {
            writeKind(configuration, kind);
        }
    }
    json_.endObject();
}

/// Writes the vectors of a kind that are dumped; of a broken configuration these may be fewer.
void DumpJson::writeKind(const DumpedConfiguration& configuration, int kind) {
    json_.key(record::kindNames[static_cast<std::size_t>(kind)]);
    json_.beginArray();
    for (int detector = 1; detector <= record::detectorCount; ++detector) {
        if (!source_.hasVector(configuration, kind, detector)) {
            continue;
        }
        const auto values = source_.read(configuration, kind, detector, values_);
        // Not null when there is no value because no pixel is selected.
        if (!values.empty() && !leavesNothingOut_ && std::ranges::all_of(values, record::isFill)) {
            json_.null();
        } else {
            json_.breakLine();
            json_.realArray(values);
        }
    }
    json_.endArray();
}

}  // namespace

void writeDumpJson(DumpSource& source, const DumpOptions& options, std::ostream& out) {
    DumpJson(source, options, out).write();
    out << '\n';
}

}  // namespace eqrecord
