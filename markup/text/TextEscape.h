#pragma once

#include <string>
#include <string_view>

#include "markup/text/TextArg.h"

/// Flags of UnescapeText, which are two of a document's: white space at both ends of a value is
/// dropped, and with the second one each run of it inside becomes one space.
inline constexpr int DocFlagTrimWhitespace = 0x100;
inline constexpr int DocFlagCollapseWhitespace = 0x200;

/// Flags of EscapeText. Not to be mixed with the document's flags: 0x100 means something else
/// there.
enum EscapeFlags : int {
    EscapeFlagKeepRefs = 8,   ///< an "&" that begins a well-formed reference stays as it is
    EscapeFlagQuotes = 0x100  ///< quotes are escaped too, as attribute values need
};

/// Turns character and entity references into UTF-8 characters. Of a document's flags only the two
/// above count. White space that a reference yields counts as text. An "&" that begins no known
/// reference is kept. `length` is in bytes and limited to the text; negative means up to the NUL.
std::string UnescapeText(TextArg text, int length, int flags);

/// Replaces "<", "&" and ">" by entity references, with EscapeFlagQuotes both quotes too. Embedded
/// NULs and bytes of any encoding are copied.
std::string EscapeText(TextArg text, int flags);

/// Wraps a text in a CDATA section, split wherever the text holds the section's end mark.
std::string x_EncodeCDATASection(TextArg text);

namespace markup {

/// UnescapeText on the whole view, embedded NULs included, appended to `out`. What `out` holds
/// already has no influence on trimming.
void appendUnescaped(std::string& out, std::string_view text, int flags);

}  // namespace markup
