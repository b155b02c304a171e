// A configuration has 48 lists of thousands of values, and most files have several configurations
// of the same size. So the lists are emptied from one to the next and their memory is kept, and a
// vector is appended in batches: a list of the usual length takes its memory once, at its first
// vector, and none ever after. What a vector lacks in length is not put into its list; the record's
// writer fills it up.

#include "converter/CoefficientTable.h"

#include <algorithm>
#include <span>

#include "converter/numbers/VectorReader.h"

int CoefficientTable::kindOf(std::string_view elementName) {
    const auto found = std::ranges::find(record::kindNames, elementName);
    return found == record::kindNames.end() ? -1
                                            : static_cast<int>(found - record::kindNames.begin());
}

long CoefficientTable::appendValues(int detector, int kind, std::string_view text) {
    Values& values = lists_[static_cast<std::size_t>(detector) - 1][static_cast<std::size_t>(kind)];
    VectorReader reader(text);
    VectorReader::Batch batch;
    while (const std::size_t count = reader.read(batch)) {
        values.append(batch.data(), static_cast<long>(count));
    }
    return values.count();
}

void CoefficientTable::clear() {
    for (auto& detector : lists_) {
        for (Values& values : detector) {
            values.removeAll();
        }
    }
}

void CoefficientTable::writeVectors(record::Writer& record, std::int16_t pixels) const {
    for (std::size_t kind = 0; kind < record::kindCount; ++kind) {
        for (const auto& detector : lists_) {
            const Values& values = detector[kind];
            const std::span<const double> span(values.data(),
                                               static_cast<std::size_t>(values.count()));
            record.vector(span, pixels);
        }
    }
}
