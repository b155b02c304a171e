#pragma once

#include <cstdint>

#include "converter/CoefficientTable.h"
#include "converter/Diagnostics.h"
#include "converter/RecordWriter.h"
#include "markup/Markup.h"

/// The `DATA` section of a parameter file: its scalar fields, and the configurations behind them.
class DataSection {
  public:
    /// Reads the scalar fields. Starts inside the document's root element and leaves the document
    /// behind the fields. The document is not owned and must outlive the object.
    explicit DataSection(MarkupDocument& document);

    std::uint8_t bandId() const { return bandId_; }
    std::int16_t nucTableId() const { return nucTableId_; }

    /// Reads every configuration and writes fields 12 to 17 of the record. `table` is the caller's
    /// so that its memory serves all files. Returns false, with a message, when the run has to
    /// stop; the record is incomplete then.
    bool convert(RecordWriter& record, Diagnostics& diagnostics, CoefficientTable& table) const;

  private:
    MarkupDocument& document_;
    std::uint8_t bandId_;
    double epsilon_;
    std::int16_t nucTableId_;
};
