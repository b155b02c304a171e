// The table is made twice, once to see how wide its columns are: its rows together would be larger
// than all else that is kept of a record.

#include "tools/eqrecord/InfoText.h"

#include <algorithm>
#include <array>
#include <functional>

#include "lint/Printable.h"
#include "tools/eqrecord/JsonWriter.h"
#include "tools/eqrecord/Telling.h"

namespace eqrecord {

namespace {

constexpr std::size_t columnCount = 7;
using Row = std::array<std::string, columnCount>;

constexpr std::array<bool, columnCount> isRightAligned{true, true, false, false, true, true, false};

/// Columns are at most so wide; a longer text moves what stands behind it.
constexpr std::size_t greatestWidth = 40;

Row rowOf(const record::File& file, std::size_t number) {
    return {std::to_string(number),
            std::to_string(file.band),
            lint::printable(file.name),
            "-",
            "-",
            "-",
            "-"};
}

/// Calls `take` with the table's rows, one a configuration.
void makeRows(const record::Reading& reading, const std::function<void(const Row&)>& take) {
    take({"file", "band", "name", "configuration", "epsilon", "pixels", "vectors at"});
    for (std::size_t i = 0; i < reading.files.size(); ++i) {
        const record::File& file = reading.files[i];
        Row row = rowOf(file, i + 1);
        if (file.configurations.empty()) {
            take(row);  // a file is shown also when it has no configuration
        }
        for (const record::Configuration& configuration : file.configurations) {
            row[3] = lint::printable(configuration.label);
            row[4] = decimalOf(configuration.epsilon());
            row[5] = std::to_string(configuration.pixels);
            row[6] = hexNumber(configuration.vectorsOffset);
            take(row);
        }
    }
}

void writeTable(const record::Reading& reading, std::ostream& out) {
    std::array<std::size_t, columnCount> widths{};
    makeRows(reading, [&](const Row& row) {
        for (std::size_t i = 0; i < columnCount; ++i) {
            widths[i] = std::max(widths[i], std::min(lint::cellsOf(row[i]), greatestWidth));
        }
    });
    makeRows(reading, [&](const Row& row) {
        std::string line;
        for (std::size_t i = 0; i < columnCount; ++i) {
            const std::size_t width = lint::cellsOf(row[i]);
            const std::string fill(widths[i] - std::min(widths[i], width), ' ');
            line += i == 0 ? "" : "  ";
            line += isRightAligned[i] ? fill + row[i] : row[i] + fill;
        }
        out << line.substr(0, line.find_last_not_of(' ') + 1) << '\n';
    });
}

std::string nucTablesOf(const record::Reading& reading) {
    std::string text;
    for (const record::File& file : reading.files) {
        if (file.nucTableId) {
            text += (text.empty() ? "" : ", ") + std::to_string(*file.nucTableId);
        }
    }
    return text;
}

/// Writes a line of the prologue, of which a record that is cut may not have all.
void writeField(std::string_view name, const std::string& value, std::ostream& out) {
    if (!value.empty()) {
        out << name << lint::printable(value) << '\n';
    }
}

void writeReading(const record::Outcome& outcome, const record::Reading& reading,
                  std::ostream& out) {
    writeField("file type   ", reading.fileType, out);
    writeField("created     ", reading.creationDate, out);
    if (!reading.applicabilityEnd.empty()) {
        writeField("applicable  ", reading.applicabilityStart + " to " + reading.applicabilityEnd,
                   out);
    }
    writeField("NUC table   ", nucTablesOf(reading), out);
    if (reading.filesCounted > 0) {
        const bool isAll = reading.files.size() == reading.filesCounted;
        out << "files       " << reading.filesCounted
            << (isAll ? "" : ", " + std::to_string(reading.files.size()) + " there") << '\n';
    }
    for (std::size_t i = 0; i < reading.files.size(); ++i) {
        writeField("note        ", tellCount(outcome, reading, i), out);
    }
    if (!reading.files.empty()) {
        out << '\n';
        writeTable(reading, out);
    }
}

}  // namespace

void writeInfoText(const std::string& path, record::RecordReader& reader, std::ostream& out) {
    const record::Outcome& outcome = reader.outcome();
    const std::vector<record::Reading>& readings = outcome.readings;
    out << lint::printable(path) << ": " << nameOf(outcome.state) << ", " << reader.size()
        << (reader.size() == 1 ? " byte, " : " bytes, ") << nameOf(outcome.order) << "-endian\n";
    for (const std::string& line : tell(reader)) {
        out << line << '\n';
    }
    for (std::size_t i = 0; i < readings.size(); ++i) {
        if (readings.size() > 1) {
            out << "\nreading     " << i + 1 << '\n';
        }
        writeReading(outcome, readings[i], out);
    }
}

}  // namespace eqrecord
