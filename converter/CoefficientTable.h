#pragma once

#include <array>
#include <cstdint>
#include <string_view>

#include "base/ObjAppendList.h"
#include "converter/RecordWriter.h"

/// The coefficients of one TDI configuration: for each detector of the focal plane and each kind of
/// coefficient, one value per pixel.
class CoefficientTable {
  public:
    static constexpr int detectorCount = 12;
    static constexpr int kindCount = 4;
    /// Element names of the kinds, in the order of the record.
    static constexpr std::array<std::string_view, kindCount> kindNames{"COEFF_A1", "COEFF_A2",
                                                                       "COEFF_ZS", "COEFF_D"};

    /// The kind with this element name, -1 when there is none.
    static int kindOf(std::string_view elementName);

    /// Appends the values in `text` to the list of a detector, 1 to 12, and kind, and returns how
    /// many the list holds now. VectorReader tells how the text is cut and converted, and what
    /// `around` is.
    long appendValues(int detector, int kind, std::string_view text, std::string_view around);

    /// Empties all lists for another configuration; their memory is kept for it.
    void clear();

    /// Fills every list up to `pixels` values with quiet NaN and writes the first `pixels` of each:
    /// kind by kind, within a kind detector by detector.
    void writeVectors(RecordWriter& record, std::int16_t pixels);

  private:
    using Values = vek::ObjAppendList<double>;

    std::array<std::array<Values, kindCount>, detectorCount> lists_;
};
