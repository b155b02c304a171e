#pragma once

#include <string>
#include <string_view>

#include "base/JulianDate.h"
#include "lint/Severity.h"

namespace lint {

/// What becomes of the text of a date.
struct DateReading {
    std::string_view rule;  ///< "" when the text is written as it is
    Severity severity = Severity::note;
    std::string message;  ///< what is to be told
    std::string written;  ///< what the record has
};

/// Reads a date as the header reader does, into `date`, which keeps what it holds when the text is
/// no date; and judges what comes of it.
DateReading readDate(const std::string& text, vek::JulianDate& date);

}  // namespace lint
