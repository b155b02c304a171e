#pragma once

#include <string>

#include "base/JulianDate.h"
#include "converter/Diagnostics.h"
#include "converter/RecordWriter.h"
#include "markup/Markup.h"

/// Reads the header of parameter files. For the first file of a run it writes the prologue of the
/// record, fields 1 to 7; later files are only compared with the first.
class VORN {
  public:
    /// Both are not owned and must outlive the reader.
    VORN(RecordWriter& record, Diagnostics& diagnostics)
        : record_(record), diagnostics_(diagnostics) {}

    /// Loads the file at `path` into `document` and leaves it inside the root element.
    ///
    /// `fileType` belongs to the caller and is kept for the whole run. When it is empty this is the
    /// first file: it receives the root element's name, and the prologue is written, with the
    /// number `fileCount` of files on the command line. Else a root element with another name is
    /// reported.
    ///
    /// Throws std::out_of_range when the first file's root element has a name of fewer than 4
    /// characters (so also when the file can't be read), before anything is written; and
    /// std::bad_alloc when memory does not suffice for the file.
    void init(const char* path, int fileCount, MarkupDocument& document, std::string& fileType);

  private:
    void writeDate(MarkupDocument& document, vek::JulianDate& date, const char* element,
                   const char* complaint);

    RecordWriter& record_;
    Diagnostics& diagnostics_;
};
