#pragma once

#include <array>
#include <string>
#include <string_view>

#include "base/JulianDate.h"
#include "converter/ReadListener.h"
#include "lint/Teller.h"

namespace lint {

/// Looks at the header of files: that of the first one is in the record, those of the others are
/// compared with it.
class HeaderCheck {
  public:
    explicit HeaderCheck(Teller& teller) : teller_(teller) {}

    /// The converter has looked for something from `Header` to `ApplicabilityEnd`, in a file that
    /// is the first.
    void sought(Sought what, const MarkupDocument& document, int elem);

    /// Looks at the header of another file, of which nothing is read.
    void compare(const MarkupDocument& document);

  private:
    void checkDate(std::size_t number, std::string_view name, const MarkupDocument& document,
                   int elem);
    void compareDate(std::size_t number, const MarkupDocument& document, std::string_view section,
                     std::string_view name);
    void checkOrder(int endElem);

    Teller& teller_;
    vek::JulianDate date_;                ///< shared by the three, as in the header reader
    std::array<std::string, 3> written_;  ///< what the record has of the first file
    std::array<vek::JulianDate, 3> dates_;
    bool areRead_ = true;  ///< each date is one
};

}  // namespace lint
