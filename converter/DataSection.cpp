// Elements are found forward only, and whether they are there is not asked: a missing one reads as
// 0, and the moves that follow are made all the same. That some damaged files then read as other
// parts of themselves is required.
//
// The record has the number of the configurations before the first of them, so they are walked over
// twice: once to be counted, then from the saved position to be read.

#include "converter/DataSection.h"

#include <cstdlib>

#include "converter/TdiConfiguration.h"

void DataSection::readFields() {
    finder_.find(Sought::Data);
    finder_.document().IntoElem();
    bandId_ = static_cast<std::uint8_t>(toInteger(finder_.text(Sought::BandId)));
    epsilon_ = std::strtod(finder_.text(Sought::Epsilon).c_str(), nullptr);
    nucTableId_ = static_cast<std::int16_t>(toInteger(finder_.text(Sought::NucTableId)));
}

bool DataSection::convertConfigurations(CoefficientTable& table) {
    const std::uint8_t count = finder_.count(Sought::Configuration);
    messages_.configurations(count);
    record_.configurationCount(count);  // 12
    while (finder_.find(Sought::Configuration)) {
        TdiConfiguration configuration(finder_, record_, messages_, table);
        if (!configuration.convert(bandId_, epsilon_)) {
            return false;
        }
    }
    return true;
}
