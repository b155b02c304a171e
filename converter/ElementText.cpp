// As everywhere in the converter, a number is what the C library makes of a text: what stands
// behind it is ignored, and none is 0. Whether the record has a place for it is for those to test
// who read it.

#include "converter/ElementText.h"

#include <cstdlib>

std::string findElementText(MarkupDocument& document, const PathPos& path) {
    return document.FindElem(path) ? document.GetData() : std::string();
}

std::string findElementText(MarkupDocument& document, const char* name) {
    return findElementText(document, PathPos::parsed(name));
}

long toInteger(const std::string& text) {
    return std::strtol(text.c_str(), nullptr, 10);
}
