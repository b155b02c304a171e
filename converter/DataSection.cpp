#include "converter/DataSection.h"

#include <cstdlib>

#include "converter/ElementText.h"
#include "converter/TdiConfiguration.h"

namespace {

const PathPos coefficientsList = PathPos::parsed("COEFFICIENTS_LIST");

/// Enters the section, and hands the document on to the reading of its first field.
MarkupDocument& entered(MarkupDocument& document) {
    document.FindElem("DATA");
    document.IntoElem();
    return document;
}

}  // namespace

// Elements are found forward only, and whether they are there is not asked: a missing one reads as
// 0, and the moves that follow are made all the same. That some damaged files then read as other
// parts of themselves is required.
DataSection::DataSection(MarkupDocument& document)
    : document_(entered(document)),
      bandId_(static_cast<std::uint8_t>(toInteger(findElementText(document, "BAND_ID")))),
      epsilon_(std::strtod(findElementText(document, "EPSILON").c_str(), nullptr)),
      nucTableId_(static_cast<std::int16_t>(toInteger(findElementText(document, "NUC_TABLE_ID")))) {
}

bool DataSection::convert(RecordWriter& record, Diagnostics& diagnostics,
                          CoefficientTable& table) const {
    std::uint8_t count = 0;  // modulo 256, as the record's field
    document_.SavePos("");
    while (document_.FindElem(coefficientsList)) {
        ++count;
    }
    document_.RestorePos("");
    diagnostics.say("num_tdi_configs=", count, "\n");
    record.raw(count);  // 12
    while (document_.FindElem(coefficientsList)) {
        TdiConfiguration configuration(document_, record, diagnostics, table);
        if (!configuration.convert(bandId_, epsilon_)) {
            return false;
        }
    }
    return true;
}
