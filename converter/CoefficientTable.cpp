#include "converter/CoefficientTable.h"

#include <algorithm>

#include "base/String.h"
#include "converter/VectorReader.h"

namespace {

const auto nans = [] {
    std::array<double, 1024> values;
    values.fill(vek::String::nan);
    return values;
}();

}  // namespace

int CoefficientTable::kindOf(std::string_view elementName) {
    const auto found = std::find(kindNames.begin(), kindNames.end(), elementName);
    return found == kindNames.end() ? -1 : static_cast<int>(found - kindNames.begin());
}

long CoefficientTable::appendValues(int detector, int kind, std::string_view text,
                                    std::string_view around) {
    Values& values = lists_[static_cast<std::size_t>(detector) - 1][static_cast<std::size_t>(kind)];
    // Appended many at a time: a vector of the usual length then takes its memory once.
    VectorReader reader(text, around);
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

void CoefficientTable::writeVectors(RecordWriter& record, std::int16_t pixels) {
    for (std::size_t kind = 0; kind < kindCount; ++kind) {
        for (auto& detector : lists_) {
            Values& values = detector[kind];
            while (values.count() < pixels) {
                const long missing = pixels - values.count();
                values.append(nans.data(), std::min(missing, static_cast<long>(nans.size())));
            }
            record.doubles(values.data(), static_cast<std::size_t>(pixels));
        }
    }
}
