#pragma once

#include <cstdint>

#include "converter/CoefficientTable.h"
#include "converter/ElementFinder.h"
#include "converter/Messages.h"
#include "record/Writer.h"

/// The `DATA` section of a parameter file: its scalar fields, and the configurations behind them.
class DataSection {
  public:
    /// Nothing is owned; all must outlive the object.
    DataSection(ElementFinder& finder, record::Writer& record, Messages& messages)
        : finder_(finder), record_(record), messages_(messages) {}

    /// Reads the scalar fields. Starts inside the document's root element and leaves the document
    /// behind the fields.
    void readFields();
    /// `BAND_ID`, modulo 256.
    std::uint8_t bandId() const { return bandId_; }
    /// `NUC_TABLE_ID`, its low 16 bits.
    std::int16_t nucTableId() const { return nucTableId_; }

    /// Reads every configuration and writes fields 12 to 17 of the record. `table` is the caller's
    /// so that its memory serves all files. Returns false, with a message, when the run has to
    /// stop; the record is incomplete then.
    bool convertConfigurations(CoefficientTable& table);

  private:
    ElementFinder& finder_;
    record::Writer& record_;
    Messages& messages_;
    std::uint8_t bandId_ = 0;
    double epsilon_ = 0;
    std::int16_t nucTableId_ = 0;
};
