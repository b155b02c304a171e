#include "converter/ElementText.h"

#include <cstdlib>

std::string findElementText(MarkupDocument& document, const char* name) {
    return document.FindElem(name) ? document.GetData() : std::string();
}

long toInteger(const std::string& text) {
    return std::strtol(text.c_str(), nullptr, 10);
}
