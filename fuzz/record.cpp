// Any bytes as a record: what is read of them, written again, gives the same bytes.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "record/RecordReader.h"
#include "record/Sink.h"
#include "record/Writer.h"
#include "tests/Require.h"

namespace {

struct Collected : record::Sink {
    void write(std::string_view bytes) override { all += bytes; }
    std::string all;
};

void writeConfiguration(record::RecordReader& reader, const record::Configuration& configuration,
                        record::Writer& writer) {
    writer.configuration(configuration.label, configuration.epsilon());
    writer.pixels(configuration.pixels);
    std::vector<double> values(static_cast<std::size_t>(configuration.pixels));
    for (int kind = 0; kind < record::kindCount; ++kind) {
        for (int detector = 1; detector <= record::detectorCount; ++detector) {
            reader.readVector(configuration, kind, detector, values);
            writer.vector(values, configuration.pixels);
        }
    }
}

/// The bytes of what is whole in a reading.
std::string written(record::RecordReader& reader, const record::Reading& reading) {
    Collected sink;
    record::Writer writer(sink);
    writer.begin(std::string_view(reading.fileType).substr(record::fileTypePrefix.size()));
    writer.date(reading.creationDate);
    writer.date(reading.applicabilityStart);
    writer.date(reading.applicabilityEnd);
    writer.fileCount(reading.filesCounted);
    for (const record::File& file : reading.files) {
        if (file.nucTableId) {
            writer.nucTableId(*file.nucTableId);
        }
        writer.file(file.band, file.name);
        writer.configurationCount(file.counted);
        for (const record::Configuration& configuration : file.configurations) {
            writeConfiguration(reader, configuration, writer);
        }
    }
    return sink.all;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    for (const auto order : {record::ByteOrder::little, record::ByteOrder::big}) {
        record::RecordReader::ofBytes(bytes, order);
    }
    auto reader = record::RecordReader::ofBytes(bytes);
    const record::Outcome& outcome = reader.outcome();
    require((outcome.state == record::State::damaged) == outcome.readings.empty(),
            "there is a reading unless the record is damaged");
    require((outcome.state == record::State::ambiguous) == (outcome.readings.size() > 1),
            "an ambiguous record has several readings");
    const record::Ending& ending = outcome.ending;
    require(outcome.state < record::State::trailing || ending.isGivenUp ||
                ending.offset + ending.available == size,
            "what is not read ends where the record does", std::to_string(ending.offset));
    for (const record::Reading& reading : outcome.readings) {
        if (outcome.order != record::machineOrder || reading.files.empty()) {
            continue;
        }
        const bool isWhole = outcome.state <= record::State::ambiguous;
        const std::string again = written(reader, reading);
        require(isWhole ? again == bytes : bytes.starts_with(again),
                "what is read is what is there", again);
    }
    return 0;
}
