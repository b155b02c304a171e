#include "converter/TdiConfiguration.h"

#include <limits>
#include <string>

#include "converter/ElementText.h"
#include "converter/HeapTuning.h"

namespace {

// Sought for every detector of every configuration.
const PathPos coefficients = PathPos::parsed("COEFFICIENTS");
const PathPos pixelNumber = PathPos::parsed("NB_OF_PIXELS");
const PathPos equalization = PathPos::parsed("ON_BOARD_EQUALIZATION");
const PathPos applicabilityDate = PathPos::parsed("APPLICABILITY_DATE");
const PathPos anyElement = PathPos::parsed(nullptr);

// A text and a list of values from here on: together they will fill a good part of a huge page.
constexpr std::size_t largeText = std::size_t{1} << 20;
constexpr int manyPixels = 1024;

}  // namespace

bool TdiConfiguration::convert(std::uint8_t bandId, double epsilon) {
    const std::string label = document_.GetAttrib("tdi_config");
    document_.IntoElem();
    record_.number(label.size());  // 13
    record_.text(label);           // 14
    record_.raw(epsilon);          // 15
    while (document_.FindElem(coefficients)) {
        if (!readDetector(bandId)) {
            return false;
        }
    }
    record_.raw(maxPixels_);                   // 16
    table_.writeVectors(record_, maxPixels_);  // 17
    document_.OutOfElem();
    return true;
}

/// Reads one `COEFFICIENTS` element. Its vectors end at the first element of another name.
bool TdiConfiguration::readDetector(std::uint8_t bandId) {
    const int id = static_cast<int>(toInteger(document_.GetAttrib("detector_id")));
    document_.IntoElem();
    const long pixelCount = toInteger(findElementText(document_, pixelNumber, dataStorage_));
    if (pixelCount > std::numeric_limits<std::int16_t>::max()) {
        diagnostics_.say("NB_OF_PIXELS ", pixelCount, " of detector ", id, " is above 32767\n");
        return false;
    }
    const Detector detector{id, static_cast<std::int16_t>(pixelCount)};
    maxPixels_ = std::max(maxPixels_, detector.pixels);
    if (document_.GetDoc().size() >= largeText && detector.pixels >= manyPixels) {
        heap::useHugePage();
    }
    document_.FindElem(equalization);
    document_.IntoElem();
    document_.FindElem(applicabilityDate);
    while (document_.FindElem(anyElement)) {
        const int kind = CoefficientTable::kindOf(document_.tagNameView(document_.position().main));
        if (kind < 0) {
            break;
        }
        if (!readVector(bandId, detector, kind)) {
            return false;
        }
    }
    document_.OutOfElem();
    document_.OutOfElem();
    return true;
}

bool TdiConfiguration::readVector(std::uint8_t bandId, const Detector& detector, int kind) {
    if (detector.id < 1 || detector.id > CoefficientTable::detectorCount) {
        diagnostics_.say("detector ", detector.id, " is outside 1 to 12\n");
        return false;
    }
    const std::string_view name = CoefficientTable::kindNames[static_cast<std::size_t>(kind)];
    const std::string_view text = document_.dataView(document_.position().main, dataStorage_);
    const bool isInDocument = dataStorage_.empty();
    const long count =
        table_.appendValues(detector.id, kind, text, isInDocument ? document_.GetDoc() : text);
    if (count != detector.pixels) {
        diagnostics_.say("Found ", count, " ", name, " pixels instead of ", detector.pixels,
                         " for detector ", detector.id, "\n");
        return false;
    }
    diagnostics_.say(bandId, "-", detector.id, ":", detector.pixels, " ", name, " values\n");
    return true;
}
