#pragma once

#include "markup/text/TextEscape.h"

/// Flags of a document, one bit set for its whole life: how it is compared, how it was read from
/// its file and, by DocFlagTrimWhitespace and DocFlagCollapseWhitespace (0x100 and 0x200), how its
/// text is unescaped.
enum DocFlag : int {
    DocFlagUtf16LeFile = 1,    ///< the file carries the UTF-16LE byte-order mark
    DocFlagUtf8Preamble = 4,   ///< the file carries the UTF-8 byte-order mark
    DocFlagIgnoreCase = 8,     ///< names match without regard to ASCII case
    DocFlagReadFile = 16,      ///< the document is being read from a file node by node
    DocFlagWriteFile = 32,     ///< the document is being written to a file node by node
    DocFlagAppendFile = 64,    ///< the file is open for appending
    DocFlagUtf16BeFile = 128,  ///< the file carries the UTF-16BE byte-order mark
};
