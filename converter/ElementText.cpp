#include "converter/ElementText.h"

#include <algorithm>
#include <charconv>
#include <limits>
#include <system_error>

std::string findElementText(MarkupDocument& document, const char* name) {
    return document.FindElem(name) ? document.GetData() : std::string();
}

std::string_view findElementText(MarkupDocument& document, const PathPos& name,
                                 std::string& storage) {
    return document.FindElem(name) ? document.dataView(document.position().main, storage)
                                   : std::string_view();
}

long toInteger(std::string_view text) {
    text.remove_prefix(std::min(text.find_first_not_of(" \t\n\v\f\r"), text.size()));
    const bool hasSign = text.starts_with('-') || text.starts_with('+');
    const bool isNegative = text.starts_with('-');
    text.remove_prefix(hasSign ? 1 : 0);
    using Limits = std::numeric_limits<long>;
    unsigned long size = 0;
    const std::errc error = std::from_chars(text.data(), text.data() + text.size(), size).ec;
    constexpr auto most = static_cast<unsigned long>(Limits::max());
    if (error == std::errc::result_out_of_range || size > most) {
        return isNegative ? Limits::min() : Limits::max();
    }
    return isNegative ? -static_cast<long>(size) : static_cast<long>(size);
}
