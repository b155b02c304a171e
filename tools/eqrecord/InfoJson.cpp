// Each key is that of the page's field. What an incomplete record does not have is left out and
// never null, which would be a value of the epsilon.

#include "tools/eqrecord/InfoJson.h"

#include "record/Layout.h"
#include "tools/eqrecord/JsonWriter.h"
#include "tools/eqrecord/Telling.h"

namespace eqrecord {

namespace {

void writeNumber(JsonWriter& json, std::string_view key, std::uint64_t value) {
    json.key(key);
    json.number(value);
}

/// Writes a text that a record that is cut may not have.
void writeText(JsonWriter& json, std::string_view key, const std::string& value) {
    if (!value.empty()) {
        json.key(key);
        json.text(value);
    }
}

void writeVectors(JsonWriter& json, const record::Configuration& configuration,
                  record::ByteOrder order) {
    json.key("vectors");
    json.beginObject();
    writeNumber(json, "offset", configuration.vectorsOffset);
    json.key("dtype");
    json.text(order == record::ByteOrder::little ? "<f8" : ">f8");
    json.key("shape");
    json.beginArray();
    json.number(std::int64_t{record::kindCount});
    json.number(std::int64_t{record::detectorCount});
    json.number(std::int64_t{configuration.pixels});
    json.endArray();
    json.endObject();
}

void writeConfiguration(JsonWriter& json, const record::Configuration& configuration,
                        record::ByteOrder order) {
    json.beginObject();
    json.key("label");
    json.text(configuration.label);
    writeNumber(json, "offset", configuration.offset);
    json.key("epsilon");
    json.real(configuration.epsilon());
    json.key("pixels");
    json.number(std::int64_t{configuration.pixels});
    writeVectors(json, configuration, order);
    json.endObject();
}

void writeFile(JsonWriter& json, const record::File& file, record::ByteOrder order) {
    json.beginObject();
    if (file.nucTableId) {
        json.key("nuc_table_id");
        json.number(std::int64_t{*file.nucTableId});
    }
    writeNumber(json, "band", file.band);
    json.key("name");
    json.text(file.name);
    writeNumber(json, "offset", file.offset);
    writeNumber(json, "configurations_counted", file.counted);
    json.key("configurations");
    json.beginArray();
    for (const record::Configuration& configuration : file.configurations) {
        writeConfiguration(json, configuration, order);
    }
    json.endArray();
    json.endObject();
}

void writeReading(JsonWriter& json, const record::Reading& reading, record::ByteOrder order) {
    writeText(json, "file_type", reading.fileType);
    writeText(json, "creation_date", reading.creationDate);
    writeText(json, "applicability_start", reading.applicabilityStart);
    writeText(json, "applicability_end", reading.applicabilityEnd);
    if (reading.filesCounted > 0) {
        writeNumber(json, "files_counted", reading.filesCounted);
    }
    json.key("files");
    json.beginArray();
    for (const record::File& file : reading.files) {
        writeFile(json, file, order);
    }
    json.endArray();
}

void writeIncomplete(JsonWriter& json, const record::Outcome& outcome) {
    const record::Ending& ending = outcome.ending;
    json.key("ends");
    json.beginObject();
    writeNumber(json, "field", static_cast<std::uint64_t>(ending.field));
    writeNumber(json, "offset", ending.offset);
    writeNumber(json, "bytes", ending.available);
    if (ending.file > 0) {
        writeNumber(json, "file", ending.file);
    }
    if (ending.configuration > 0) {
        writeNumber(json, "configuration", ending.configuration);
    }
    if (ending.partial) {
        json.key("label");
        json.text(ending.partial->label);
    }
    if (ending.partial && ending.field == 17) {
        writeNumber(json, "vectors_whole", ending.wholeVectors);
    }
    writeText(json, "cause", std::string(causeOf(outcome)));
    json.endObject();
}

void writeTrailing(JsonWriter& json, const record::Ending& ending) {
    json.key("trailing");
    json.beginObject();
    writeNumber(json, "offset", ending.offset);
    writeNumber(json, "bytes", ending.available);
    json.key("second_record");
    json.boolean(ending.isSecondRecord);
    json.endObject();
}

}  // namespace

void writeInfoJson(const std::string& path, const record::RecordReader& reader, std::ostream& out) {
    const record::Outcome& outcome = reader.outcome();
    const std::vector<record::Reading>& readings = outcome.readings;
    JsonWriter json(out);
    json.beginObject();
    json.key("schema");
    json.text("eqrecord-info-1");
    json.key("path");
    json.text(path);
    writeNumber(json, "bytes", reader.size());
    json.key("state");
    json.text(nameOf(outcome.state));
    json.key("byte_order");
    json.text(nameOf(outcome.order));
    if (!outcome.isOrderCertain) {
        json.key("byte_order_certain");
        json.boolean(false);
    }
    writeReading(json, readings.front(), outcome.order);
    if (readings.size() > 1) {
        json.key("other_readings");
        json.beginArray();
        for (std::size_t i = 1; i < readings.size(); ++i) {
            json.beginObject();
            writeReading(json, readings[i], outcome.order);
            json.endObject();
        }
        json.endArray();
    }
    if (outcome.state == record::State::incomplete) {
        writeIncomplete(json, outcome);
    } else if (outcome.state == record::State::trailing) {
        writeTrailing(json, outcome.ending);
    }
    json.endObject();
    out << '\n';
}

}  // namespace eqrecord
