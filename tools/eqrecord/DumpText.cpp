// The rows follow the record from field to field, each with the bytes that are there, so that the
// listing also shows what a reading makes of them. What is at the end and belongs to no field that
// is whole is shown by its first bytes.

#include "tools/eqrecord/DumpText.h"

#include <algorithm>
#include <bit>
#include <cmath>

#include "lint/Printable.h"
#include "tools/eqrecord/JsonWriter.h"
#include "tools/eqrecord/Listing.h"
#include "tools/eqrecord/Telling.h"

namespace eqrecord {

namespace {

constexpr std::size_t shownValues = 3;  // of a vector that is shortened
constexpr std::uint64_t shownEnd = 16;  // bytes of what is not whole

std::string inQuotes(std::string_view text) {
    return '"' + lint::printable(text) + '"';
}

/// "detector 1", "detectors 1 and 2" or "detectors 1 to 3".
std::string numbered(std::string name, int first, int last) {
    name += (first == last ? " " : "s ") + std::to_string(first);
    if (first != last) {
        name += (first + 1 == last ? " and " : " to ") + std::to_string(last);
    }
    return name;
}

/// By their bits, so that a NaN is the same as itself, and 0 not as -0.
bool isSame(double a, double b) {
    return std::bit_cast<std::uint64_t>(a) == std::bit_cast<std::uint64_t>(b);
}

/// Writes the vectors of a configuration.
class VectorListing {
  public:
    VectorListing(DumpSource& source, const DumpOptions& options, Listing& listing,
                  const DumpedConfiguration& configuration)
        : source_(source),
          options_(options),
          listing_(listing),
          configuration_(configuration),
          pixels_(static_cast<std::size_t>(configuration.configuration->pixels)),
          chosen_(source.selection().pixelsOf(pixels_)) {}

    void write();

  private:
    /// Vectors of neighbouring detectors in which there is one value only.
    struct Run {
        int kind = 0;
        int first = 0;  ///< detector
        int last = 0;   ///< 0 when there are none
        double value = 0;
    };

    void writeAll(int kind, int detector, std::span<const double> values);
    void writeShortened(int kind, int detector, std::span<const double> values);
    void add(int kind, int detector, std::span<const double> values);
    void endRun();
    void writeRow(std::uint64_t offset, std::size_t values, const std::string& text,
                  std::string_view ending = {});

    std::uint64_t offsetOf(int kind, int detector, std::size_t pixel) const;
    std::string placeOf(int kind, int firstDetector, int lastDetector,
                        Selection::Pixels pixels) const;
    std::string shown(double value) const;
    std::string shown(std::span<const double> values) const;

    DumpSource& source_;
    const DumpOptions& options_;
    Listing& listing_;
    const DumpedConfiguration& configuration_;
    std::size_t pixels_;
    Selection::Pixels chosen_;
    Run run_;
    bool isFirst_ = true;  ///< row of the field
};

void VectorListing::write() {
    std::vector<double> buffer;
    for (int kind = 0; kind < record::kindCount; ++kind) {
        for (int detector = 1; detector <= record::detectorCount; ++detector) {
            if (chosen_.count == 0 || !source_.hasVector(configuration_, kind, detector)) {
                continue;
            }
            const auto values = source_.read(configuration_, kind, detector, buffer);
            if (options_.leavesNothingOut) {
                writeAll(kind, detector, values);
            } else {
                add(kind, detector, values);
            }
        }
    }
    endRun();
}

/// Writes a vector by rows of as many values as a row of bytes has.
void VectorListing::writeAll(int kind, int detector, std::span<const double> values) {
    constexpr std::size_t inRow = 2;
    for (std::size_t i = 0; i < values.size(); i += inRow) {
        const auto row = values.subspan(i, std::min(inRow, values.size() - i));
        const std::size_t pixel = chosen_.first + i;
        writeRow(offsetOf(kind, detector, pixel), row.size(),
                 placeOf(kind, detector, detector, {pixel, row.size()}) + shown(row));
    }
}

/// Writes the first values of a vector, and where its fill begins.
void VectorListing::writeShortened(int kind, int detector, std::span<const double> values) {
    const auto first = values.first(std::min(values.size(), shownValues));
    std::string text = placeOf(kind, detector, detector, chosen_) + shown(first);
    if (first.size() < values.size()) {
        text += " ...";
        std::size_t length = values.size();  // there is more than one value, so not all are fill
        while (record::isFill(values[length - 1])) {
            --length;
        }
        if (length < values.size()) {
            text += ", NaN from pixel " + std::to_string(chosen_.first + length) + " on";
        }
    }
    writeRow(offsetOf(kind, detector, chosen_.first), first.size(), text,
             first.size() < values.size() ? " ..." : "");
}

/// Takes the next vector: into the run, as the beginning of one, or as it is.
void VectorListing::add(int kind, int detector, std::span<const double> values) {
    const bool isOne =
        std::ranges::all_of(values, [&](double value) { return isSame(value, values[0]); });
    // Without all pixels, neighbours are none.
    if (run_.last > 0 && isOne && isSame(run_.value, values[0]) && run_.kind == kind &&
        run_.last + 1 == detector && values.size() == pixels_) {
        run_.last = detector;
        return;
    }
    endRun();
    if (isOne) {
        run_ = {kind, detector, detector, values[0]};
    } else {
        writeShortened(kind, detector, values);
    }
}

/// Writes the run, if there is one: its value's bytes once, and its values as those of one vector.
void VectorListing::endRun() {
    if (run_.last == 0) {
        return;
    }
    const auto vectors = static_cast<std::size_t>(run_.last - run_.first) + 1;
    const std::size_t count = vectors * chosen_.count;
    const std::size_t shownCount =
        record::isFill(run_.value) ? 1 : std::min(chosen_.count, shownValues);
    const std::vector<double> values(shownCount, run_.value);
    std::string text = placeOf(run_.kind, run_.first, run_.last, chosen_) + shown(values);
    if (!record::isFill(run_.value) && shownCount < chosen_.count) {
        text += " ...";
    }
    writeRow(offsetOf(run_.kind, run_.first, chosen_.first), 1, text,
             count > 1 ? "  (" + std::to_string(count) + " times)" : "");
    run_.last = 0;
}

void VectorListing::writeRow(std::uint64_t offset, std::size_t values, const std::string& text,
                             std::string_view ending) {
    listing_.write(offset, values * sizeof(double), isFirst_ ? 17 : 0, text, ending);
    isFirst_ = false;
}

/// The offset of a pixel, from 1.
std::uint64_t VectorListing::offsetOf(int kind, int detector, std::size_t pixel) const {
    const auto vector = static_cast<std::uint64_t>(kind * record::detectorCount + detector - 1);
    return configuration_.configuration->vectorsOffset +
           (vector * pixels_ + pixel - 1) * sizeof(double);
}

/// "COEFF_A1, detectors 3 to 12: ", with the pixels when these are not all.
std::string VectorListing::placeOf(int kind, int firstDetector, int lastDetector,
                                   Selection::Pixels pixels) const {
    std::string text = std::string(record::kindNames[static_cast<std::size_t>(kind)]) + ", " +
                       numbered("detector", firstDetector, lastDetector);
    if (pixels.count < pixels_) {
        const auto first = static_cast<int>(pixels.first);
        text += ", " + numbered("pixel", first, first + static_cast<int>(pixels.count) - 1);
    }
    return text + ": ";
}

std::string VectorListing::shown(double value) const {
    if (record::isFill(value)) {
        return "NaN";
    }
    return options_.writesBits || std::isnan(value) ? bitsOf(value) : decimalOf(value);
}

std::string VectorListing::shown(std::span<const double> values) const {
    std::string text;
    for (const double value : values) {
        text += (text.empty() ? "" : " ") + shown(value);
    }
    return text;
}

class DumpText {
  public:
    DumpText(DumpSource& source, const DumpOptions& options, std::ostream& out)
        : source_(source),
          reader_(source.reader()),
          options_(options),
          listing_(source.reader(), out) {}

    void write();

  private:
    void writePrologue();
    void writeFile(const record::File& file);
    void writeConfiguration(const DumpedConfiguration& configuration);
    void writeEnd();

    /// Writes the next field, which is so long.
    void writeField(int number, std::uint64_t length, const std::string& value);
    void writeText(int number, const std::string& text);
    void writeNumberText(int number, std::uint64_t value);

    DumpSource& source_;
    record::RecordReader& reader_;
    const DumpOptions& options_;
    Listing listing_;
    std::uint64_t at_ = 0;  ///< the offset of the next field
};

void DumpText::write() {
    writePrologue();
    for (const DumpedFile& file : source_.files()) {
        writeFile(*file.file);
        for (const DumpedConfiguration& configuration : file.configurations) {
            writeConfiguration(configuration);
        }
    }
    writeEnd();
}

/// A record that is cut may not have all of it.
void DumpText::writePrologue() {
    const record::Reading& reading = source_.reading();
    if (reading.fileType.empty()) {
        return;
    }
    writeField(1, record::marker.size(), inQuotes(record::marker));
    writeNumberText(2, reading.fileType.size());
    writeText(3, reading.fileType);
    int number = 4;
    for (const std::string* const date :
         {&reading.creationDate, &reading.applicabilityStart, &reading.applicabilityEnd}) {
        if (date->empty()) {
            return;
        }
        writeText(number++, *date);
    }
    if (reading.filesCounted > 0) {
        writeNumberText(7, reading.filesCounted);
    }
}

/// Fields 8 to 12. Between two files that are selected there may be others.
void DumpText::writeFile(const record::File& file) {
    at_ = file.offset;
    if (file.nucTableId) {
        writeField(8, 2, std::to_string(*file.nucTableId));
    }
    writeField(9, 1, std::to_string(file.band));
    writeNumberText(10, file.name.size());
    writeText(11, file.name);
    writeField(12, 1, std::to_string(file.counted));
}

/// Fields 13 to 17, as far as they are there.
void DumpText::writeConfiguration(const DumpedConfiguration& configuration) {
    const record::Configuration& read = *configuration.configuration;
    at_ = read.offset;
    writeNumberText(13, read.label.size());
    writeText(14, read.label);
    if (configuration.has(15)) {
        writeField(15, 8, options_.writesBits ? bitsOf(read.epsilon()) : decimalOf(read.epsilon()));
    }
    if (configuration.has(16)) {
        writeField(16, 2, std::to_string(read.pixels));
        VectorListing(source_, options_, listing_, configuration).write();
        at_ += read.vectorLength() * static_cast<std::uint64_t>(configuration.wholeVectors);
    }
}

/// What is behind the last field that is whole, and why.
void DumpText::writeEnd() {
    const record::State state = reader_.outcome().state;
    const bool isWhole = state <= record::State::ambiguous;
    // Behind a selection, what follows the last row is no sign of the end.
    if (!source_.selection().isAll()) {
        at_ = isWhole ? source_.reading().end : reader_.outcome().ending.offset;
    }
    listing_.write(at_, std::min(shownEnd, reader_.size() - at_), 0,
                   isWhole ? "end" : tell(reader_).front());
}

void DumpText::writeField(int number, std::uint64_t length, const std::string& value) {
    listing_.write(at_, length, number,
                   std::string(record::field(number).name).append(": ").append(value));
    at_ += length;
}

void DumpText::writeText(int number, const std::string& text) {
    writeField(number, text.size(), inQuotes(text));
}

/// A number text is shown as it stands there, with its fill.
void DumpText::writeNumberText(int number, std::uint64_t value) {
    const std::size_t width = std::max(record::numberWidth, std::to_string(value).size());
    writeField(number, width, inQuotes(reader_.view(at_, width)));
}

}  // namespace

void writeDumpText(DumpSource& source, const DumpOptions& options, std::ostream& out) {
    DumpText(source, options, out).write();
}

}  // namespace eqrecord
