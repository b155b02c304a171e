#include "lint/DataCheck.h"

#include <cstdint>

#include "lint/ElementSearch.h"
#include "lint/FieldCheck.h"
#include "lint/ScalarCheck.h"

namespace lint {

namespace {

constexpr std::string_view configurationName = "COEFFICIENTS_LIST";

}  // namespace

void DataCheck::sought(Sought what, const MarkupDocument& document, int elem) {
    switch (what) {
        case Sought::Data:
            if (elem == 0) {
                FieldCheck(teller_, document)
                    .tellMissing("EQ401", "DATA",
                                 ": its fields are sought where the converter stands");
            } else {
                FieldCheck(teller_, document).checkOnce("DATA", elem);
            }
            break;
        case Sought::BandId:
            if (isThere("BAND_ID", document, elem)) {
                readBand(SourceText::ofElement(document, elem), elem);
            } else {
                set_.band(0, document.position().parent);
            }
            break;
        case Sought::Epsilon:
            if (isThere("EPSILON", document, elem)) {
                readNumber(teller_, SourceText::ofElement(document, elem), elem, "EQ403",
                           "EPSILON");
            }
            break;
        default:
            if (isThere("NUC_TABLE_ID", document, elem)) {
                readNucTable(SourceText::ofElement(document, elem), elem);
            } else {
                set_.nucTable(0, document.position().parent);
            }
            checkConfigurations(document, document.position().main);
    }
}

/// Tells of a field that is not there, or not alone.
bool DataCheck::isThere(std::string_view name, const MarkupDocument& document, int elem) {
    const FieldCheck field(teller_, document);
    if (elem == 0) {
        field.tellMissing("EQ402", name, ": it is read as 0");
        return false;
    }
    field.checkOnce(name, elem);
    return true;
}

Integer DataCheck::readField(std::string_view name, const SourceText& source, int elem) {
    Integer integer{"EQ403", std::string(name)};
    readInteger(teller_, source, elem, integer);
    return integer;
}

void DataCheck::readBand(const SourceText& source, int elem) {
    const Integer field = readField("BAND_ID", source, elem);
    const auto band = static_cast<std::uint8_t>(field.value);
    if (field.value != band) {
        teller_.tell("EQ404", Severity::warning, elem,
                     "BAND_ID " + field.written + " is outside 0 to 255: it is written as " +
                         std::to_string(band),
                     std::to_string(band));
    }
    set_.band(band, elem);
}

void DataCheck::readNucTable(const SourceText& source, int elem) {
    const Integer field = readField("NUC_TABLE_ID", source, elem);
    const auto id = static_cast<std::int16_t>(field.value);
    const std::string read = std::to_string(id);
    const std::string effect = " is read as " + read;
    const std::string forgotten =
        id < 0 ? ", which stands for none: the next file counts as the first again" : "";
    if (field.value != static_cast<std::uint16_t>(field.value)) {
        teller_.tell("EQ404", Severity::warning, elem,
                     "NUC_TABLE_ID " + field.written + ", outside 0 to 65535," + effect + forgotten,
                     read);
    } else if (id < 0) {
        teller_.tell("EQ405", Severity::warning, elem,
                     "NUC_TABLE_ID " + field.written + effect + forgotten, read);
    }
    set_.nucTable(id, elem);
}

/// Counts the configurations around element `elem`, from which on they will be read.
void DataCheck::checkConfigurations(const MarkupDocument& document, int elem) {
    constexpr int most = 255;
    const int parent = document.position().parent;
    long count = 0;
    bool isBehind = elem == 0;
    for (int other = document.record(parent).child; other != 0;
         other = document.record(other).next) {
        if (document.tagNameView(other) != configurationName) {
            isBehind = isBehind || other == elem;
        } else if (!isBehind) {
            teller_.tell("EQ409", Severity::warning, other,
                         "a configuration before NUC_TABLE_ID is not read");
        } else if (++count == most + 1) {
            teller_.tell("EQ408", Severity::warning, other,
                         "more than 255 configurations: their number is written modulo 256");
        }
    }
}

}  // namespace lint
