// A value that is not there must not look like a NaN: of a record that is incomplete a detector has
// rows only when all of its vectors that are selected are whole. As these come kind by kind, that
// is so when the vector of the last kind is.
//
// Texts are made harmless for terminals as everywhere, which also keeps a row on one line.

#include "tools/eqrecord/DumpCsv.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "lint/Printable.h"
#include "tools/eqrecord/Csv.h"
#include "tools/eqrecord/JsonWriter.h"

namespace eqrecord {

namespace {

class DumpCsv {
  public:
    DumpCsv(DumpSource& source, const DumpOptions& options, std::ostream& out);

    void write();

  private:
    void writeHeader();
    void writeDetector(const DumpedConfiguration& configuration, int detector,
                       const std::string& start);
    std::string shown(double value) const;

    DumpSource& source_;
    std::ostream& out_;
    bool leavesNothingOut_;
    bool writesBits_;
    std::string nan_;
    std::vector<int> kinds_;  ///< those that are selected
};

DumpCsv::DumpCsv(DumpSource& source, const DumpOptions& options, std::ostream& out)
    : source_(source),
      out_(out),
      leavesNothingOut_(options.leavesNothingOut),
      writesBits_(options.writesBits),
      nan_(csvFieldOf(options.nan)) {
    for (int kind = 0; kind < record::kindCount; ++kind) {
        if (source.selection().takesKind(kind)) {
            kinds_.push_back(kind);
        }
    }
}

void DumpCsv::write() {
    writeHeader();
    for (const DumpedFile& file : source_.files()) {
        const std::string fileStart = std::to_string(file.number) + ',' +
                                      std::to_string(file.file->band) + ',' +
                                      csvFieldOf(lint::printable(file.file->name)) + ',';
        for (const DumpedConfiguration& configuration : file.configurations) {
            const std::string start =
                fileStart + csvFieldOf(lint::printable(configuration.configuration->label)) + ',';
            for (int detector = 1; detector <= record::detectorCount; ++detector) {
                if (source_.hasVector(configuration, kinds_.back(), detector)) {
                    writeDetector(configuration, detector, start + std::to_string(detector) + ',');
                }
            }
        }
    }
}

void DumpCsv::writeHeader() {
    constexpr std::array<std::string_view, record::kindCount> names{"a1", "a2", "zs", "d"};
    out_ << "file,band,name,configuration,detector,pixel";
    for (const int kind : kinds_) {
        out_ << ',' << names[static_cast<std::size_t>(kind)];
    }
    out_ << '\n';
}

/// Writes the rows of a detector, which begin with `start`.
void DumpCsv::writeDetector(const DumpedConfiguration& configuration, int detector,
                            const std::string& start) {
    std::array<std::vector<double>, record::kindCount> buffers;
    std::vector<std::span<const double>> columns;
    for (const int kind : kinds_) {
        columns.push_back(source_.read(configuration, kind, detector, buffers[columns.size()]));
    }
    const std::size_t first =
        source_.selection()
            .pixelsOf(static_cast<std::size_t>(configuration.configuration->pixels))
            .first;
    for (std::size_t i = 0; i < columns[0].size(); ++i) {
        const bool isEmpty =
            std::ranges::all_of(columns, [i](auto column) { return record::isFill(column[i]); });
        if (isEmpty && !leavesNothingOut_) {
            continue;
        }
        out_ << start << first + i;
        for (const auto column : columns) {
            out_ << ',' << shown(column[i]);
        }
        out_ << '\n';
    }
}

/// A NaN is what the user wants it to be, unless bits are asked for and it is not the fill value.
std::string DumpCsv::shown(double value) const {
    const bool isNan = std::isnan(value) && !(writesBits_ && !record::isFill(value));
    return isNan ? nan_ : writesBits_ ? bitsOf(value) : decimalOf(value);
}

}  // namespace

void writeDumpCsv(DumpSource& source, const DumpOptions& options, std::ostream& out) {
    DumpCsv(source, options, out).write();
}

}  // namespace eqrecord
