// What is exported as a whole is compared with the record itself. A part of a record is the record
// that its files alone would make: other counts, maybe a NUC table identifier more, and between
// them the configurations as they are.

#include "tools/eqrecord/RecordComparison.h"

#include <algorithm>
#include <stdexcept>

#include "record/ByteSource.h"
#include "record/Layout.h"
#include "record/Writer.h"

namespace eqrecord {

namespace {

class StringSink : public record::Sink {
  public:
    void write(std::string_view bytes) override { text += bytes; }

    std::string text;
};

constexpr std::uint64_t epsilonAndPixels = 8 + 2;  // bytes of fields 15 and 16

}  // namespace

RecordComparison::RecordComparison(record::RecordReader& record, const ExportedPart& part)
    : record_(record) {
    addPrologue(part);
    std::int16_t last = -1;
    for (const ExportedFile& file : part.files) {
        addFile(file, last < 0);
        last = last < 0 ? file.nucTableId : last;
    }
    if (part.isWhole) {
        takeFromRecord();
    }
}

template <class Write>
void RecordComparison::add(int field, const ExportedFile* file, Write write) {
    StringSink sink;
    record::Writer writer(sink);
    write(writer);
    const std::uint64_t length = sink.text.size();
    segments_.push_back({std::move(sink.text), 0, length, field, file, nullptr});
}

void RecordComparison::addPrologue(const ExportedPart& part) {
    const record::Reading& reading = *part.reading;
    const auto type = std::string_view(reading.fileType).substr(record::fileTypePrefix.size());
    add(3, nullptr, [&](record::Writer& writer) { writer.begin(type); });
    add(4, nullptr, [&](record::Writer& writer) { writer.date(reading.creationDate); });
    add(5, nullptr, [&](record::Writer& writer) { writer.date(reading.applicabilityStart); });
    add(6, nullptr, [&](record::Writer& writer) { writer.date(reading.applicabilityEnd); });
    add(7, nullptr, [&](record::Writer& writer) { writer.fileCount(part.files.size()); });
}

void RecordComparison::addFile(const ExportedFile& file, bool hasNucTable) {
    const std::size_t count = file.configurations.size();
    if (hasNucTable) {
        add(8, &file, [&](record::Writer& writer) { writer.nucTableId(file.nucTableId); });
    }
    add(11, &file, [&](record::Writer& writer) { writer.file(file.file->band, file.file->name); });
    add(12, &file, [&](record::Writer& writer) {
        writer.configurationCount(static_cast<std::uint8_t>(count));
    });
    for (const record::Configuration* const configuration : file.configurations) {
        const std::uint64_t length =
            configuration->vectorsOffset + configuration->vectorsLength() - configuration->offset;
        segments_.push_back({"", configuration->offset, length, 13, &file, configuration});
    }
}

/// Lets the bytes of the record itself, all of them, stand in the place of the texts.
void RecordComparison::takeFromRecord() {
    std::uint64_t offset = 0;
    for (Segment& segment : segments_) {
        segment.text.clear();
        segment.offset = offset;
        offset += segment.length;
    }
    if (offset != record_.size()) {
        throw std::logic_error("internal error: the parts of the record are not the record");
    }
}

/// What comes next; "" at the end.
std::string_view RecordComparison::wanted() {
    while (segment_ < segments_.size() && done_ == segments_[segment_].length) {
        ++segment_;
        done_ = 0;
    }
    if (segment_ == segments_.size()) {
        return {};
    }
    const Segment& segment = segments_[segment_];
    if (!segment.text.empty()) {
        return std::string_view(segment.text).substr(static_cast<std::size_t>(done_));
    }
    const std::uint64_t length =
        std::min<std::uint64_t>(segment.length - done_, record::ByteSource::windowSize);
    return record_.view(segment.offset + done_, static_cast<std::size_t>(length));
}

void RecordComparison::write(std::string_view bytes) {
    while (!bytes.empty()) {
        const std::string_view there = wanted();
        const auto end = std::ranges::mismatch(bytes, there).in1;
        const auto same = static_cast<std::size_t>(end - bytes.begin());
        done_ += same;
        if (same < std::min(bytes.size(), there.size()) || there.empty()) {
            throw Inexpressible(differingPart() +
                                ": the converter would make something else of it");
        }
        bytes.remove_prefix(same);
    }
}

void RecordComparison::end() {
    if (!wanted().empty()) {
        throw Inexpressible(differingPart() + ": the converter would end here");
    }
}

/// The place of the next byte, as people know it.
std::string RecordComparison::differingPart() const {
    if (segment_ == segments_.size()) {
        return "what is behind the last configuration";
    }
    const Segment& segment = segments_[segment_];
    const record::Configuration* const configuration = segment.configuration;
    int field = segment.field;
    if (configuration != nullptr) {
        const std::uint64_t fieldsEnd = configuration->vectorsOffset - configuration->offset;
        if (done_ >= fieldsEnd) {
            const std::uint64_t index = (done_ - fieldsEnd) / sizeof(double);
            return placeOfValue(*segment.file, *configuration, static_cast<std::size_t>(index));
        }
        const std::uint64_t left = fieldsEnd - done_;
        field = left > epsilonAndPixels ? 14 : left > 2 ? 15 : 16;
    }
    std::string place =
        "field " + std::to_string(field) + " (" + std::string(record::field(field).name) + ')';
    if (configuration != nullptr) {
        place += " of " + placeOf(*segment.file, *configuration);
    } else if (segment.file != nullptr) {
        place += " of " + placeOf(*segment.file);
    }
    return place;
}

}  // namespace eqrecord
