#include "lint/HeaderCheck.h"

#include "lint/DateCheck.h"
#include "lint/ElementSearch.h"
#include "lint/FieldCheck.h"
#include "lint/ScalarCheck.h"
#include "lint/SourceText.h"

namespace lint {

namespace {

enum DateNumber : std::size_t { production, applicabilityStart, applicabilityEnd };

}  // namespace

void HeaderCheck::sought(Sought what, const MarkupDocument& document, int elem) {
    const FieldCheck field(teller_, document);
    switch (what) {
        case Sought::Header:
            date_ = {};
            areRead_ = true;
            field.checkSection("EQ301", "HEADER", elem);
            break;
        case Sought::SpecificHeader:
            field.checkSection("EQ301", "SPECIFIC_HEADER", elem);
            break;
        case Sought::ProductionDate:
            checkDate(production, "PRODUCTION_DATE", document, elem);
            break;
        case Sought::ApplicabilityStart:
            checkDate(applicabilityStart, "APPLICABILITY_DATE", document, elem);
            break;
        default:
            checkDate(applicabilityEnd, "APPLICABILITY_END_DATE", document, elem);
            checkOrder(elem);
    }
}

void HeaderCheck::checkDate(std::size_t number, std::string_view name,
                            const MarkupDocument& document, int elem) {
    const FieldCheck field(teller_, document);
    if (elem == 0) {
        date_.init("");
        field.tellMissing("EQ302", name, ": 2000-01-01T00:00:00 is written");
        areRead_ = false;
    } else {
        field.checkOnce(name, elem);
        const SourceText source = SourceText::ofElement(document, elem);
        checkText(teller_, source, elem, std::string(name));
        const DateReading reading = readDate(std::string(source.text()), date_);
        areRead_ = areRead_ && reading.severity == Severity::note;
        if (!reading.rule.empty()) {
            teller_.tell(reading.rule, reading.severity, elem, reading.message, reading.written);
        }
    }
    dates_[number] = date_;
    written_[number] = std::string(date_.strIso(0, false).view());
}

/// Requires: all dates were read.
void HeaderCheck::checkOrder(int endElem) {
    if (areRead_ &&
        dates_[applicabilityStart].microseconds > dates_[applicabilityEnd].microseconds) {
        teller_.tell("EQ307", Severity::note, endElem,
                     "the applicability ends at " + written_[applicabilityEnd] +
                         ", before it starts at " + written_[applicabilityStart]);
    }
}

void HeaderCheck::compare(const MarkupDocument& document) {
    compareDate(production, document, "HEADER", "PRODUCTION_DATE");
    compareDate(applicabilityStart, document, "SPECIFIC_HEADER", "APPLICABILITY_DATE");
    compareDate(applicabilityEnd, document, "SPECIFIC_HEADER", "APPLICABILITY_END_DATE");
}

void HeaderCheck::compareDate(std::size_t number, const MarkupDocument& document,
                              std::string_view section, std::string_view name) {
    const int root = document.record(0).child;
    const int parent = firstNamed(document, root, section);
    const int elem = parent == 0 ? 0 : firstNamed(document, parent, name);
    if (elem == 0) {
        teller_.tell("EQ308", Severity::note, parent == 0 ? root : parent,
                     std::string(name) + " is missing: only the first file's is in the record");
        return;
    }
    vek::JulianDate date;
    const SourceText source = SourceText::ofElement(document, elem);
    const DateReading reading = readDate(std::string(source.text()), date);
    if (reading.severity != Severity::note || reading.written != written_[number]) {
        teller_.tell("EQ308", Severity::note, elem,
                     std::string(name) + " " + inQuotes(source.text()) +
                         " is not in the record: the first file's is");
    }
}

}  // namespace lint
