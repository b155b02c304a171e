#pragma once

#include <cstdint>
#include <string>

#include "converter/CoefficientTable.h"
#include "converter/ElementFinder.h"
#include "converter/Messages.h"
#include "record/Writer.h"

/// One time-delay-integration configuration of a file: reads a `COEFFICIENTS_LIST` element and
/// writes its block of the record, fields 13 to 17.
class TdiConfiguration {
  public:
    /// Starts at the document's current element, a `COEFFICIENTS_LIST`. Nothing is owned; all must
    /// outlive the object. `table` is emptied first: it is the caller's so that its memory serves
    /// all configurations.
    TdiConfiguration(ElementFinder& finder, record::Writer& record, Messages& messages,
                     CoefficientTable& table)
        : finder_(finder),
          document_(finder.document()),
          record_(record),
          messages_(messages),
          table_(table) {
        table_.clear();
    }

    /// Reads the coefficients of every detector and writes the block. `bandId` goes into progress
    /// lines, `epsilon` into the block. Leaves the document back among the `COEFFICIENTS_LIST`
    /// elements. Returns false, with a message, when the run has to stop; the block is incomplete
    /// then.
    bool convert(std::uint8_t bandId, double epsilon);

  private:
    struct Detector {
        int id;
        std::int16_t pixels;
    };

    bool readDetector(std::uint8_t bandId);
    bool readVectors(std::uint8_t bandId, const Detector& detector);
    bool readVector(std::uint8_t bandId, const Detector& detector, int kind);

    ElementFinder& finder_;
    MarkupDocument& document_;
    record::Writer& record_;
    Messages& messages_;
    CoefficientTable& table_;
    std::string dataStorage_;     ///< of vector texts that do not stand in the document as they are
    std::int16_t maxPixels_ = 0;  ///< the largest pixel count of a detector, never negative
};
