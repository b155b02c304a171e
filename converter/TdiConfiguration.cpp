// A configuration is read by one walk of the document's cursor: forward only, into an element and
// out again. What is not found leaves the cursor where it was, and the moves that follow are made
// all the same. So a detector without its pixel count is read as one of no pixels, and one without
// that and its equalization leaves the cursor one level too high, where no further detector is
// found: that damaged files read like this is required, and costs no test that could be wrong.
//
// The label and EPSILON are written at once, the pixel count and the vectors only when the last
// detector has been read: P is the largest of all.

#include "converter/TdiConfiguration.h"

#include <algorithm>
#include <limits>
#include <string>
#include <string_view>

#include "record/Layout.h"

bool TdiConfiguration::convert(std::uint8_t bandId, double epsilon) {
    const std::string label = document_.GetAttrib("tdi_config");
    document_.IntoElem();
    record_.configuration(label, epsilon);  // 13 to 15
    while (finder_.find(Sought::Detector)) {
        if (!readDetector(bandId)) {
            return false;
        }
    }
    record_.pixels(maxPixels_);                // 16
    table_.writeVectors(record_, maxPixels_);  // 17
    document_.OutOfElem();
    return true;
}

/// Reads one `COEFFICIENTS` element.
bool TdiConfiguration::readDetector(std::uint8_t bandId) {
    const int id = static_cast<int>(toInteger(document_.GetAttrib("detector_id")));
    document_.IntoElem();
    const long pixelCount = toInteger(finder_.text(Sought::PixelCount));
    if (pixelCount > std::numeric_limits<std::int16_t>::max()) {
        const bool goesOn = messages_.pixelsOutside(pixelCount, id);
        document_.OutOfElem();
        return goesOn;
    }
    const Detector detector{id, static_cast<std::int16_t>(pixelCount)};
    maxPixels_ = std::max(maxPixels_, detector.pixels);
    finder_.find(Sought::Equalization);
    document_.IntoElem();
    finder_.find(Sought::VectorDate);
    if (!readVectors(bandId, detector)) {
        return false;
    }
    document_.OutOfElem();
    document_.OutOfElem();
    return true;
}

/// Reads the vectors from the current element on; they end at the first element of another name.
bool TdiConfiguration::readVectors(std::uint8_t bandId, const Detector& detector) {
    while (finder_.find(Sought::Vector)) {
        const int kind = CoefficientTable::kindOf(document_.tagNameView(document_.position().main));
        if (kind < 0) {
            break;
        }
        if (!readVector(bandId, detector, kind)) {
            return false;
        }
    }
    return true;
}

bool TdiConfiguration::readVector(std::uint8_t bandId, const Detector& detector, int kind) {
    if (detector.id < 1 || detector.id > record::detectorCount) {
        return messages_.detectorOutside(detector.id);
    }
    const std::string_view name = record::kindNames[static_cast<std::size_t>(kind)];
    const std::string_view text = document_.dataView(document_.position().main, dataStorage_);
    const long count = table_.appendValues(detector.id, kind, text);
    if (count != detector.pixels) {
        return messages_.vectorLength(count, name, detector.pixels, detector.id);
    }
    messages_.vector(bandId, detector.id, detector.pixels, name);
    return true;
}
