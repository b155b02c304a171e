#include "lint/FieldCheck.h"

#include "lint/ElementSearch.h"

namespace lint {

void FieldCheck::checkSection(std::string_view id, std::string_view name, int elem) const {
    if (elem == 0) {
        tellMissing(id, name, ": what should be in it is sought where the converter stands");
    } else {
        checkOnce(name, elem);
    }
}

void FieldCheck::tellMissing(std::string_view id, std::string_view name,
                             std::string_view effect) const {
    const int parent = document_.position().parent;
    std::string message(name);
    message.append(" is not found").append(whyNotFound(document_, parent, name)).append(effect);
    teller_.tell(id, Severity::warning, parent, std::move(message));
}

void FieldCheck::checkOnce(std::string_view name, int elem) const {
    if (firstNamed(document_, document_.record(elem).parent, name) != elem) {
        teller_.tell("EQ402", Severity::warning, elem,
                     "another " + std::string(name) + " stands before, where it is not read");
    }
    if (const int other = nextNamed(document_, elem, name); other != 0) {
        teller_.tell("EQ407", Severity::note, other,
                     "another " + std::string(name) + ": only the first one is read");
    }
}

}  // namespace lint
