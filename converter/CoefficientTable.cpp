#include "converter/CoefficientTable.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "base/String.h"

int CoefficientTable::kindOf(std::string_view elementName) {
    const auto found = std::find(kindNames.begin(), kindNames.end(), elementName);
    return found == kindNames.end() ? -1 : static_cast<int>(found - kindNames.begin());
}

long CoefficientTable::appendValues(int detector, int kind, std::string&& text) {
    Values& values = lists_[static_cast<std::size_t>(detector) - 1][static_cast<std::size_t>(kind)];
    char* const end = text.data() + text.size();
    for (char* piece = text.data(); piece != end;) {
        char* space =
            static_cast<char*>(std::memchr(piece, ' ', static_cast<std::size_t>(end - piece)));
        char* const next = space == nullptr ? end : space + 1;
        // Ended here, since strtod would skip white space on into the next piece.
        if (space != nullptr) {
            *space = '\0';
        }
        values.append(std::strtod(piece, nullptr));
        piece = next;
    }
    return values.count();
}

void CoefficientTable::writeVectors(RecordWriter& record, std::int16_t pixels) {
    for (std::size_t kind = 0; kind < kindCount; ++kind) {
        for (auto& detector : lists_) {
            Values& values = detector[kind];
            while (values.count() < pixels) {
                values.append(vek::String::nan);
            }
            record.doubles(values.data(), static_cast<std::size_t>(pixels));
        }
    }
}
