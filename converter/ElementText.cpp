#include "converter/ElementText.h"

#include <cstdlib>

// Numbers are what strtol and strtod make of a text, and nothing is tested: what stands behind a
// number is ignored, and no number is 0. Whoever wants to know more asks before converting.

std::string findElementText(MarkupDocument& document, const PathPos& path) {
    return document.FindElem(path) ? document.GetData() : std::string();
}

std::string findElementText(MarkupDocument& document, const char* name) {
    return findElementText(document, PathPos::parsed(name));
}

long toInteger(const std::string& text) {
    return std::strtol(text.c_str(), nullptr, 10);
}
