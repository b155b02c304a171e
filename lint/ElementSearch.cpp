#include "lint/ElementSearch.h"

#include <strings.h>

#include "lint/Teller.h"

namespace lint {

namespace {

bool isSameButCase(std::string_view a, std::string_view b) {
    return a.size() == b.size() && ::strncasecmp(a.data(), b.data(), a.size()) == 0;
}

bool isSameButPrefix(std::string_view name, std::string_view other) {
    const std::size_t colon = other.find(':');
    return colon != std::string_view::npos && other.substr(colon + 1) == name;
}

int named(const MarkupDocument& document, int elem, std::string_view name) {
    while (elem != 0 && document.tagNameView(elem) != name) {
        elem = document.record(elem).next;
    }
    return elem;
}

}  // namespace

int nextNamed(const MarkupDocument& document, int elem, std::string_view name) {
    return named(document, document.record(elem).next, name);
}

int firstNamed(const MarkupDocument& document, int parent, std::string_view name) {
    return named(document, document.record(parent).child, name);
}

std::string whyNotFound(const MarkupDocument& document, int parent, std::string_view name) {
    if (firstNamed(document, parent, name) != 0) {
        return " (one stands before)";
    }
    for (int elem = document.record(parent).child; elem != 0; elem = document.record(elem).next) {
        const std::string_view other = document.tagNameView(elem);
        if (isSameButCase(name, other)) {
            return " (" + inQuotes(other) + " differs in case)";
        }
        if (isSameButPrefix(name, other)) {
            return " (" + inQuotes(other) + " has a prefix)";
        }
    }
    return "";
}

}  // namespace lint
