#pragma once

#include <string>
#include <string_view>

#include "base/JulianDate.h"
#include "converter/ElementFinder.h"
#include "converter/Messages.h"
#include "markup/Markup.h"
#include "record/Writer.h"

/// Reads the header of parameter files. For the first file of a run it writes the prologue of the
/// record, fields 1 to 7; later files are only compared with the first.
class VORN {
  public:
    /// Nothing is owned; all must outlive the reader. The listener may be null.
    VORN(record::Writer& record, Messages& messages, ReadListener* listener = nullptr)
        : record_(record), messages_(messages), listener_(listener) {}

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
    using Complaint = void (Messages::*)(std::string_view);

    void writePrologue(int fileCount, ElementFinder& finder, std::string_view type);
    void writeDate(ElementFinder& finder, vek::JulianDate& date, Sought what, Complaint complaint);

    record::Writer& record_;
    Messages& messages_;
    ReadListener* listener_;
};
