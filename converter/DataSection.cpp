// Elements are found forward only, and whether they are there is not asked: a missing one reads as
// 0, and the moves that follow are made all the same. That some damaged files then read as other
// parts of themselves is required.
//
// The record has the number of the configurations before the first of them, so they are walked over
// twice: once to be counted, then from the saved position to be read.

#include "converter/DataSection.h"

#include <cstdlib>

#include "converter/ElementText.h"
#include "converter/TdiConfiguration.h"

namespace {

constexpr const char* configurationName = "COEFFICIENTS_LIST";

}  // namespace

void DataSection::readFields() {
    document_.FindElem("DATA");
    document_.IntoElem();
    bandId_ = static_cast<std::uint8_t>(toInteger(findElementText(document_, "BAND_ID")));
    epsilon_ = std::strtod(findElementText(document_, "EPSILON").c_str(), nullptr);
    nucTableId_ = static_cast<std::int16_t>(toInteger(findElementText(document_, "NUC_TABLE_ID")));
}

bool DataSection::convertConfigurations(CoefficientTable& table) {
    const std::uint8_t count = countConfigurations();
    messages_.configurations(count);
    record_.configurationCount(count);  // 12
    while (document_.FindElem(configurationName)) {
        TdiConfiguration configuration(document_, record_, messages_, table);
        if (!configuration.convert(bandId_, epsilon_)) {
            return false;
        }
    }
    return true;
}

/// The configurations from the current element on, modulo 256 as the record's field.
std::uint8_t DataSection::countConfigurations() {
    std::uint8_t count = 0;
    document_.SavePos("");
    while (document_.FindElem(configurationName)) {
        ++count;
    }
    document_.RestorePos("");
    return count;
}
