// The text may have the fields in any order, and the record has one: what belongs to the headers is
// kept in memory, as a reader keeps it, and the vectors in a file until all is known. So nothing is
// written of a record that is refused.

#include "tools/eqrecord/RecordBuilder.h"

#include <algorithm>
#include <span>

#include "record/ByteSource.h"
#include "record/Layout.h"
#include "record/Writer.h"
#include "tools/eqrecord/JsonValue.h"

namespace eqrecord {

namespace {

constexpr auto detectorCount = static_cast<std::size_t>(record::detectorCount);

/// Writes fields 13 to 17, with a kind at a time in memory.
void writeConfiguration(const record::Configuration& configuration, record::ByteSource& vectors,
                        record::Writer& writer) {
    writer.configuration(configuration.label, configuration.epsilon());
    writer.pixels(configuration.pixels);
    std::vector<double> values(static_cast<std::size_t>(configuration.pixels) * detectorCount);
    const std::uint64_t length = configuration.vectorsLength() / record::kindNames.size();
    for (std::size_t kind = 0; kind < record::kindNames.size(); ++kind) {
        vectors.read(configuration.vectorsOffset + kind * length,
                     reinterpret_cast<char*>(values.data()), static_cast<std::size_t>(length));
        for (std::span<const double> rest(values); !rest.empty();) {
            writer.vector(rest, configuration.pixels);
            rest = rest.subspan(static_cast<std::size_t>(configuration.pixels));
        }
    }
}

}  // namespace

void RecordBuilder::beginFile() {
    reading_.files.emplace_back();
}

void RecordBuilder::beginConfiguration() {
    file().configurations.emplace_back();
    counts_.fill(0);
}

/// The place of the next vector of a kind.
RecordBuilder::Vector& RecordBuilder::add(int kind) {
    const auto index = static_cast<std::size_t>(kind);
    if (counts_[index] == detectorCount) {
        throw Refusal("is one more than there are detectors, 12");
    }
    return vectors_[index * detectorCount + counts_[index]++];
}

std::vector<double>& RecordBuilder::addVector(int kind) {
    Vector& vector = add(kind);
    vector.isFill = false;
    vector.values.clear();
    return vector.values;
}

void RecordBuilder::addFill(int kind) {
    add(kind).isFill = true;
}

void RecordBuilder::endKind(int kind) {
    const std::size_t count = counts_[static_cast<std::size_t>(kind)];
    if (count < detectorCount) {
        throw Refusal("has vectors of " + std::to_string(count) + " instead of 12 detectors");
    }
}

void RecordBuilder::endConfiguration() {
    checkVectors();
    // A reader takes another epsilon for damage.
    if (configuration().epsilonBits != file().configurations.front().epsilonBits) {
        throw Refusal("epsilon", "is not that of the file's other configurations");
    }
    configuration().vectorsOffset = file_.size();
    for (std::size_t kind = 0; kind < record::kindNames.size(); ++kind) {
        keepKind(kind);
    }
}

/// Only now P is known for sure, as it may stand behind the vectors.
void RecordBuilder::checkVectors() const {
    const auto pixels =
        static_cast<std::size_t>(reading_.files.back().configurations.back().pixels);
    for (std::size_t i = 0; i < vectors_.size(); ++i) {
        const Vector& vector = vectors_[i];
        if (!vector.isFill && vector.values.size() != pixels) {
            throw Refusal(std::string(record::kindNames[i / detectorCount]) + '/' +
                              std::to_string(i % detectorCount),
                          "has " + std::to_string(vector.values.size()) +
                              " values, and pixels says " + std::to_string(pixels));
        }
    }
}

/// Appends the vectors of a kind to those that are kept, in the machine's byte order.
void RecordBuilder::keepKind(std::size_t kind) {
    const auto pixels = static_cast<std::size_t>(configuration().pixels);
    kept_.assign(detectorCount * pixels, record::fillValue);
    for (std::size_t i = 0; i < detectorCount; ++i) {
        const Vector& vector = vectors_[kind * detectorCount + i];
        if (!vector.isFill) {
            std::ranges::copy(vector.values,
                              kept_.begin() + static_cast<std::ptrdiff_t>(i * pixels));
        }
    }
    file_.append({reinterpret_cast<const char*>(kept_.data()), kept_.size() * sizeof(double)});
}

void RecordBuilder::endFile() {
    const bool hasNucTable = file().nucTableId.has_value();
    // A reader would take its bytes for the next field, or the other way round.
    if (hasNucTable != needsNucTable_) {
        throw Refusal("nuc_table_id",
                      needsNucTable_ ? "is missing: it stands in the first file, and behind one "
                                       "whose own is negative"
                                     : "must not be there: a file before this one has told it");
    }
    needsNucTable_ = hasNucTable && *file().nucTableId < 0;
}

void RecordBuilder::end() const {
    if (reading_.files.size() != reading_.filesCounted) {
        throw Refusal("files_counted", "is " + std::to_string(reading_.filesCounted) +
                                           ", and the list has " +
                                           std::to_string(reading_.files.size()));
    }
}

void RecordBuilder::write(record::Sink& sink) {
    auto vectors = record::ByteSource::ofFile(file_);
    record::Writer writer(sink, order_);
    writer.begin(std::string_view(reading_.fileType).substr(record::fileTypePrefix.size()));
    writer.date(reading_.creationDate);
    writer.date(reading_.applicabilityStart);
    writer.date(reading_.applicabilityEnd);
    writer.fileCount(static_cast<std::size_t>(reading_.filesCounted));
    for (const record::File& file : reading_.files) {
        if (file.nucTableId) {
            writer.nucTableId(*file.nucTableId);
        }
        writer.file(file.band, file.name);
        writer.configurationCount(file.counted);
        for (const record::Configuration& configuration : file.configurations) {
            writeConfiguration(configuration, vectors, writer);
        }
    }
}

}  // namespace eqrecord
