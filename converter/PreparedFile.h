#pragma once

#include <optional>
#include <string>
#include <utility>

#include "converter/CoefficientTable.h"
#include "converter/Diagnostics.h"
#include "converter/RecordWriter.h"
#include "markup/Markup.h"

/// A parameter file on its way into the record. What does not depend on the files before it may be
/// done before its turn, by any thread.
class PreparedFile {
  public:
    /// The document: loaded if the file is prepared, else empty.
    MarkupDocument& document() { return *document_; }

    /// Loads the file and converts its configurations, as `DataSection::convert` does for a file
    /// that is not the first. `table` is the thread's own. Leaves it at a fresh document for a file
    /// that can't be loaded well, which has to fail when its turn comes, and for one whose part of
    /// the record would take much memory or has a text that `RecordWriter` would not buffer, so
    /// that it could not be written later as it is in its turn. Throws std::bad_alloc.
    void prepare(const char* path, CoefficientTable& table);

    /// True when the configurations have been converted.
    bool isPrepared() const { return isPrepared_; }
    /// Writes what the configurations gave, as they gave it, and returns what
    /// `DataSection::convert` returned.
    bool replay(RecordWriter& record, Diagnostics& diagnostics) const;

  private:
    bool convert(const char* path, CoefficientTable& table);
    void writeRecord(RecordWriter& record, std::size_t start, std::size_t end) const;

    std::optional<MarkupDocument> document_{std::in_place};
    bool isPrepared_ = false;
    bool result_ = false;
    std::string record_;
    KeptMessages messages_;
};
