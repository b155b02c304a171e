#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace lint {

/// What a mainstream parser, expat, makes of a file.
struct XmlReading {
    bool isWellFormed = true;
    std::string reason;           ///< why not, in that parser's words
    std::size_t offset = 0;       ///< where not: bytes from the start of what it was given
    long elements = 0;            ///< how many it met
    bool hasNamespace = false;    ///< whether the root, or one without a prefix, is in a namespace
    bool hasTokenLabels = false;  ///< whether a tdi_config is declared as something else than text
    /// Stands for all that it told: names, attributes, text.
    std::uint64_t digest = 0;
};

/// Whether there is such a parser in this program.
bool canReadXml();

/// Has the pieces read as one text in UTF-8, whatever it declares; makes no digest.
XmlReading readXmlText(std::span<const std::string_view> pieces);
/// Has a text in UTF-8 read, whatever it declares.
XmlReading readXmlText(std::string_view text);

/// Has the bytes of a file read in the encoding that they show or declare; of those that are not
/// built into the parser, what the system converts byte by byte.
XmlReading readXmlFile(std::string_view bytes);

}  // namespace lint
