#pragma once

#include <array>
#include <string_view>

#include "markup/DocFlags.h"

/// A byte-order mark, the encoding that it stands for and the document flag that remembers it.
struct Bom {
    std::string_view bytes;
    std::string_view encoding;
    int flag;

    /// Bytes per unit of the encoding.
    constexpr int unitSize() const { return bytes.size() == 2 ? 2 : 1; }
};

/// In the order in which a file is compared with them, and in which flags choose one.
inline constexpr std::array<Bom, 3> bomTable{{
    {"\xEF\xBB\xBF", "UTF-8", DocFlagUtf8Preamble},
    {"\xFF\xFE", "UTF-16LE", DocFlagUtf16LeFile},
    {"\xFE\xFF", "UTF-16BE", DocFlagUtf16BeFile},
}};

/// The flags of all marks.
inline constexpr int bomFlags = DocFlagUtf8Preamble | DocFlagUtf16LeFile | DocFlagUtf16BeFile;
