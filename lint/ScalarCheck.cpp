#include "lint/ScalarCheck.h"

#include <cstdlib>

#include "converter/ElementFinder.h"
#include "lint/TextForm.h"

namespace lint {

namespace {

/// The place of a text; of an empty one that of its element.
Range rangeOf(const Teller& teller, const SourceText& source, int elem) {
    return source.raw().empty() ? teller.startTag(elem)
                                : Range{source.rawOffset(), source.raw().size()};
}

std::string readAs(std::string_view text, const std::string& value, const std::string& name) {
    const std::string written = text.empty() ? "is empty: it" : inQuotes(text);
    return name + " " + written + " is read as " + value;
}

}  // namespace

void checkText(Teller& teller, const SourceText& source, int elem, const std::string& name) {
    if (source.hasChildren()) {
        teller.tell("EQ707", Severity::warning, elem,
                    name + " has elements in it: it is read as without text");
    } else if (source.differsFromXml()) {
        teller.tell(
            "EQ707", Severity::warning, rangeOf(teller, source, elem), elem,
            name + " is read as " + inQuotes(source.text()) + ", other programs read another text");
    } else if (source.hasReferences()) {
        teller.tell("EQ706", Severity::note, rangeOf(teller, source, elem), elem,
                    name + " is written with references or sections");
    }
}

void readInteger(Teller& teller, const SourceText& source, int elem, Integer& integer) {
    const std::string text(source.text());
    const Form form = integerForm(text);
    integer.value = toInteger(text);
    integer.written = shortened(text);
    if (!source.isAttribute() || form == Form::ignored || !source.differsFromXml()) {
        checkText(teller, source, elem, integer.name);
    }
    // Of a number below 0 those tell who know its range.
    if (form == Form::ignored || (form == Form::loose && integer.value >= 0)) {
        const std::string value = std::to_string(integer.value);
        teller.tell(integer.rule, form == Form::loose ? Severity::note : Severity::warning,
                    rangeOf(teller, source, elem), elem, readAs(text, value, integer.name), value);
    }
}

double readNumber(Teller& teller, const SourceText& source, int elem, std::string_view rule,
                  const std::string& name) {
    checkText(teller, source, elem, name);
    const std::string text(source.text());
    const double value = std::strtod(text.c_str(), nullptr);
    const Form form = numberForm(text);
    const bool isKept = isUsual(value) && (value != 0 || isWrittenAsZero(text));
    if (form == Form::plain && isKept) {
        return value;
    }
    const bool isMeant = form != Form::ignored;
    const bool isOnlySpaced = form == Form::loose && isKept && isPlainNumber(trimmed(text));
    teller.tell(isMeant && !isOnlySpaced ? "EQ704" : rule,
                isMeant ? Severity::note : Severity::warning, rangeOf(teller, source, elem), elem,
                readAs(text, shortest(value), name), shortest(value));
    return value;
}

}  // namespace lint
