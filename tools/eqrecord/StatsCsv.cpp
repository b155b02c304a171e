#include "tools/eqrecord/StatsCsv.h"

#include "lint/Printable.h"
#include "record/Layout.h"
#include "tools/eqrecord/Csv.h"
#include "tools/eqrecord/JsonWriter.h"

namespace eqrecord {

namespace {

/// In one field, however many: rows of CSV have to be of the same length.
std::string pixelsOf(const std::vector<Outlier>& outliers) {
    std::string text;
    for (const Outlier& outlier : outliers) {
        text += (text.empty() ? "" : " ") + std::to_string(outlier.pixel);
    }
    return text;
}

}  // namespace

StatsCsv::StatsCsv(std::ostream& out, bool showsOutliers)
    : out_(out), showsOutliers_(showsOutliers) {
    out_ << "file,band,name,configuration,kind,detector,values,nan,infinite,length";
    for (const std::string_view name : Figures::names) {
        out_ << ',' << name;
    }
    out_ << (showsOutliers ? ",outliers,outlier_pixels\n" : "\n");
}

void StatsCsv::write(const Block& block, const std::vector<VectorStats>& vectors) {
    const std::string place = std::to_string(block.fileNumber) + ',' +
                              std::to_string(block.file->band) + ',' +
                              csvFieldOf(lint::printable(block.file->name)) + ',' +
                              csvFieldOf(lint::printable(block.configuration->label)) + ',';
    for (const VectorStats& vector : vectors) {
        const Figures& figures = vector.figures;
        out_ << place << record::kindNames[static_cast<std::size_t>(vector.kind)] << ','
             << vector.detector << ',' << figures.values << ',' << figures.nan << ','
             << figures.infinite << ',' << figures.length;
        for (const auto& figure : figures.figures) {
            out_ << ',' << (figure ? decimalOf(*figure) : "");
        }
        if (showsOutliers_) {
            out_ << ',' << vector.outliers.size() << ',' << pixelsOf(vector.outliers);
        }
        out_ << '\n';
    }
}

}  // namespace eqrecord
