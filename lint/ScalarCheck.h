#pragma once

#include <string>
#include <string_view>

#include "lint/SourceText.h"
#include "lint/Teller.h"

namespace lint {

/// An integer as the converter reads it, from an element or an attribute.
struct Integer {
    std::string_view rule;  ///< that tells of a text that is not what it should be
    std::string name;       ///< what it is, for messages
    long value = 0;         ///< what the text gives
    std::string written{};  ///< the text, shortened, for messages
};

/// Tells of a text of which not all is read, and of one with references or sections; `name` is what
/// it is.
void checkText(Teller& teller, const SourceText& source, int elem, const std::string& name);

/// Reads an integer and tells of a text that is none.
void readInteger(Teller& teller, const SourceText& source, int elem, Integer& integer);

/// Reads a number with decimals, likewise.
double readNumber(Teller& teller, const SourceText& source, int elem, std::string_view rule,
                  const std::string& name);

}  // namespace lint
