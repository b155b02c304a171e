// A line has to fit a terminal of 80 columns, so numbers are rounded, and counts are only told of
// vectors in which not every pixel has a value, on a line of their own.

#include "tools/eqrecord/StatsText.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string>
#include <string_view>

#include "lint/Printable.h"
#include "record/Layout.h"
#include "tools/eqrecord/JsonWriter.h"

namespace eqrecord {

namespace {

constexpr int placeDigits = 5;             // of what tells where values lie
constexpr int spreadDigits = 3;            // of what tells how far they lie apart
constexpr std::size_t detectorsWidth = 5;  // "10-12"

/// All NaN: a detector that is not there, or one without this kind.
bool isEmpty(const Figures& figures) {
    return figures.values == 0 && figures.infinite == 0;
}

struct Column {
    std::string_view name;
    int digits;
    std::size_t width = 0;
};

/// In the order of the figures.
using Columns = std::array<Column, Figures::names.size()>;
using Vectors = std::vector<VectorStats>;

std::string cellOf(const std::optional<double>& figure, const Column& column) {
    return figure ? roundedOf(*figure, column.digits) : "-";
}

/// The columns of one configuration are as wide in all its tables.
Columns columnsOf(const Vectors& vectors) {
    Columns columns{{{"min", placeDigits},
                     {"max", placeDigits},
                     {"mean", placeDigits},
                     {"median", placeDigits},
                     {"deviation", spreadDigits},
                     {"MAD", spreadDigits},
                     {"odd-even", spreadDigits}}};
    for (std::size_t i = 0; i < columns.size(); ++i) {
        Column& column = columns[i];
        column.width = column.name.size();
        for (const VectorStats& vector : vectors) {
            column.width = std::max(column.width, cellOf(vector.figures.figures[i], column).size());
        }
    }
    return columns;
}

/// The first vector that can't be told in one line with this one. Figures are compared before they
/// are rounded: what looks the same need not be.
Vectors::const_iterator endOfRun(Vectors::const_iterator first, Vectors::const_iterator end) {
    return std::find_if(first + 1, end, [&](const VectorStats& vector) {
        const VectorStats& before = *(&vector - 1);
        return vector.kind != first->kind || vector.detector != before.detector + 1 ||
               vector.figures != first->figures || !vector.outliers.empty() ||
               !before.outliers.empty();
    });
}

std::string padded(std::string_view text, std::size_t width) {
    return std::string(width - std::min(width, text.size()), ' ') + std::string(text);
}

void writeHeadings(int kind, const Columns& columns, std::ostream& out) {
    const std::string_view name = record::kindNames[static_cast<std::size_t>(kind)];
    std::string heading(name.substr(std::string_view("COEFF_").size()));
    heading.resize(detectorsWidth, ' ');
    out << heading;
    for (const Column& column : columns) {
        out << "  " << padded(column.name, column.width);
    }
    out << '\n';
}

/// Writes what a vector has beside its figures, on lines of their own.
void writeRemarks(const VectorStats& vector, std::ostream& out) {
    const std::string indentation(detectorsWidth + 2, ' ');
    const Figures& figures = vector.figures;
    if (!isEmpty(figures) && (figures.nan > 0 || figures.infinite > 0)) {
        out << indentation << figures.values << (figures.values == 1 ? " value" : " values");
        if (figures.infinite > 0) {
            out << ", " << figures.infinite << " infinite";
        }
        if (figures.nan > 0) {
            out << ", " << figures.nan << " NaN, length " << figures.length;
        }
        out << '\n';
    }
    for (const Outlier& outlier : vector.outliers) {
        out << indentation << "outlier at pixel " << outlier.pixel << ": "
            << decimalOf(outlier.value) << ", median nearby " << decimalOf(outlier.median) << '\n';
    }
}

/// Writes vectors that have the same figures: "3-12  no values".
void writeRun(const VectorStats& first, const VectorStats& last, const Columns& columns,
              std::ostream& out) {
    std::string detectors = std::to_string(first.detector);
    if (last.detector > first.detector) {
        detectors += '-' + std::to_string(last.detector);
    }
    out << padded(detectors, detectorsWidth);
    if (first.figures.values == 0) {
        out << "  no values";
    } else {
        for (std::size_t i = 0; i < columns.size(); ++i) {
            out << "  " << padded(cellOf(first.figures.figures[i], columns[i]), columns[i].width);
        }
    }
    out << '\n';
    writeRemarks(first, out);
}

}  // namespace

void StatsText::write(const Block& block, const Vectors& vectors) {
    out_ << (isFirst_ ? "" : "\n") << "file " << block.fileNumber << ", band "
         << int{block.file->band} << ", " << lint::printable(block.file->name) << ", "
         << lint::printable(block.configuration->label) << ": " << block.configuration->pixels
         << (block.configuration->pixels == 1 ? " pixel\n" : " pixels\n");
    isFirst_ = false;
    if (block.configuration->pixels == 0) {
        return;
    }
    const Columns columns = columnsOf(vectors);
    for (auto run = vectors.begin(); run != vectors.end();) {
        if (run == vectors.begin() || run->kind != (run - 1)->kind) {
            writeHeadings(run->kind, columns, out_);
        }
        const auto next = endOfRun(run, vectors.end());
        writeRun(*run, *(next - 1), columns, out_);
        run = next;
    }
    for (const VectorStats& vector : vectors) {
        vectors_ += isEmpty(vector.figures) ? 0U : 1U;
        outliers_ += vector.outliers.size();
        struck_ += vector.outliers.empty() ? 0U : 1U;
    }
}

void StatsText::end() {
    if (showsOutliers_) {
        out_ << '\n' << outliers_ << (outliers_ == 1 ? " outlier" : " outliers") << " in ";
        if (outliers_ > 0) {
            out_ << struck_ << " of ";
        }
        out_ << vectors_ << (vectors_ == 1 ? " vector\n" : " vectors\n");
    }
}

}  // namespace eqrecord
