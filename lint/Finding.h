#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "lint/Rule.h"

namespace lint {

/// A piece of a file, as an editor shows it: lines and columns count from 1, columns in characters.
/// The end is the place behind the last character; both are 1:1 for a finding on a whole file.
struct Place {
    int line = 1;
    int column = 1;
    int endLine = 1;
    int endColumn = 1;
};

/// The line of a finding, cut to the width of a screen, for people to see what is meant.
struct Excerpt {
    std::string line;        ///< as in the file, with spaces for control characters
    std::size_t begin = 0;   ///< where what is meant begins, in bytes
    std::size_t length = 0;  ///< of what is meant, in bytes; 0 for a place between two characters
};

/// One thing that was found. Texts of files are as they stand there, so they may be no UTF-8.
struct Finding {
    const Rule* rule = nullptr;
    Severity severity = Severity::note;  ///< at most that of the rule
    std::string_view path;               ///< of the file, as it was given
    Place place;
    std::string where;    ///< path of the element, "/TEST_EQ_TABLE/DATA/BAND_ID"; "" for a file
    std::string message;  ///< what was found and what the converter does, on one line
    std::string value;    ///< what is used instead of what is written; "" when that makes no sense
    bool isReached = true;  ///< false behind the place where the run ends
    long count = 1;         ///< more than 1: it stands for so many that are not told one by one
    Excerpt excerpt;        ///< empty unless it was asked for
};

/// What a conversion of the files comes to.
struct Conversion {
    /// As the shell tells of a process that was ended by SIGABRT.
    static constexpr int aborted = 134;

    int status = 0;                     ///< exit status: 0, 255, or 134 for an abort
    long long recordBytes = 0;          ///< written until the run ends
    bool isComplete = true;             ///< whether that is a whole record
    std::vector<std::string> messages;  ///< all that is said on standard error, if it was asked for
    /// Where the run ends before its time; line 0 when it does not.
    std::string_view stoppedPath;
    int stoppedLine = 0;
    int stoppedColumn = 0;
};

/// How many findings there are, those behind a "count" included.
struct Counts {
    long notes = 0;
    long warnings = 0;
    long errors = 0;
};

/// Takes findings as they are found: those of a file together, files in their order.
class Report {
  public:
    Report() = default;
    Report(const Report&) = delete;
    Report& operator=(const Report&) = delete;
    virtual ~Report() = default;

    /// Takes a finding, which may be gone after the call.
    virtual void add(const Finding& finding) = 0;
    /// Comes once, behind all findings.
    virtual void end(const Counts& counts, const Conversion& conversion) = 0;
};

}  // namespace lint
