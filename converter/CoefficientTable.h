#pragma once

#include <array>
#include <cstdint>
#include <string_view>

#include "base/ObjAppendList.h"
#include "record/Layout.h"
#include "record/Writer.h"

/// The coefficients of one TDI configuration: for each detector of the focal plane and each kind of
/// coefficient, one value per pixel.
class CoefficientTable {
  public:
    /// The kind, from 0, with this element name; -1 when there is none.
    static int kindOf(std::string_view elementName);

    /// Appends the values in `text` to the list of a detector, 1 to 12, and kind, and returns how
    /// many the list holds now. VectorReader tells how the text is cut and converted.
    long appendValues(int detector, int kind, std::string_view text);

    /// Empties all lists for another configuration; their memory is kept for it.
    void clear();

    /// Writes field 17: the first `pixels` values of every list, filled up to so many.
    void writeVectors(record::Writer& record, std::int16_t pixels) const;

  private:
    using Values = vek::ObjAppendList<double>;

    /// By detector, then by kind.
    std::array<std::array<Values, record::kindCount>, record::detectorCount> lists_;
};
