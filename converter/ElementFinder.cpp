// As everywhere in the converter, a number is what the C library makes of a text: what stands
// behind it is ignored, and none is 0. Whether the record has a place for it is for those to test
// who read it.

#include "converter/ElementFinder.h"

#include <array>
#include <cstdlib>

namespace {

/// By `Sought`, parsed once: some are sought for every vector. Null names any element.
const std::array paths = {
    PathPos::parsed(nullptr),                   // FileType
    PathPos::parsed("HEADER"),                  // Header
    PathPos::parsed("PRODUCTION_DATE"),         // ProductionDate
    PathPos::parsed("SPECIFIC_HEADER"),         // SpecificHeader
    PathPos::parsed("APPLICABILITY_DATE"),      // ApplicabilityStart
    PathPos::parsed("APPLICABILITY_END_DATE"),  // ApplicabilityEnd
    PathPos::parsed("DATA"),                    // Data
    PathPos::parsed("BAND_ID"),                 // BandId
    PathPos::parsed("EPSILON"),                 // Epsilon
    PathPos::parsed("NUC_TABLE_ID"),            // NucTableId
    PathPos::parsed("COEFFICIENTS_LIST"),       // Configuration
    PathPos::parsed("COEFFICIENTS"),            // Detector
    PathPos::parsed("NB_OF_PIXELS"),            // PixelCount
    PathPos::parsed("ON_BOARD_EQUALIZATION"),   // Equalization
    PathPos::parsed("APPLICABILITY_DATE"),      // VectorDate
    PathPos::parsed(nullptr),                   // Vector
};
static_assert(paths.size() == static_cast<std::size_t>(Sought::Vector) + 1);

const PathPos& pathOf(Sought what) {
    return paths[static_cast<std::size_t>(what)];
}

}  // namespace

bool ElementFinder::find(Sought what) {
    const bool isFound = document_.FindElem(pathOf(what));
    if (listener_ != nullptr) {
        listener_->sought(what, document_, isFound ? document_.position().main : 0);
    }
    return isFound;
}

std::string ElementFinder::text(Sought what) {
    return find(what) ? document_.GetData() : std::string();
}

std::uint8_t ElementFinder::count(Sought what) {
    std::uint8_t count = 0;
    document_.SavePos("");
    while (document_.FindElem(pathOf(what))) {
        ++count;
    }
    document_.RestorePos("");
    return count;
}

long toInteger(const std::string& text) {
    return std::strtol(text.c_str(), nullptr, 10);
}
