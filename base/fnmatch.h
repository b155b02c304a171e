#pragma once

namespace vek {

/// Flags of fnmatch, to be combined.
enum FnmatchFlag {
    fnmatchPath = 1,      ///< only a "/" in the pattern matches a "/"
    fnmatchNoEscape = 2,  ///< backslash is an ordinary character
    fnmatchPeriod = 4,    ///< a leading "." is matched only by a "." that leads the pattern, too
};

/// Matches the whole of `string` against the shell pattern, bytewise: "?" any one byte, "*" any
/// run, "[a-z]", "[!a-z]", "[^a-z]" one byte of a set, "\" the next byte literally. Returns 0 on
/// match, 1 on no match, -1 for flags outside 0 to 7. A null argument is taken as "". Needs time
/// of at most the product of the two lengths.
int fnmatch(const char* pattern, const char* string, int flags);

}  // namespace vek
