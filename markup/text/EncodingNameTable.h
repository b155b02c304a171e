#pragma once

#include <span>
#include <string_view>

#include "markup/text/TextArg.h"

/// Code pages that select a codec or a rule; every other one is only a number from the name table.
enum EncodingCodePage : int {
    CodePageUnknown = -1,  ///< no such name
    CodePageDefault = 0,   ///< the empty name: the platform's default character set
    CodePageUtf16 = 1200,  ///< UTF-16 in host byte order
    CodePageUtf8 = 65001,  ///< UTF-8
    CodePageUtf32 = 65005  ///< 32-bit wide characters in host byte order
};

/// Encoding names of this many bytes or more are unknown whatever they say.
inline constexpr int maxEncodingNameLength = 100;

/// One name of a code page.
struct EncodingName {
    int codePage;
    std::string_view name;  ///< in lower case
};

namespace markup {

/// All names, in the order of their code pages.
std::span<const EncodingName> allEncodingNames();

}  // namespace markup

/// Finds the code page of an encoding name, case-blind over A to Z. An empty name gives 0, a name
/// that begins "UTF-32" (upper case only) 65005, an unknown or overlong name -1.
int x_GetEncodingCodePage(TextArg name);
