#pragma once

#include <ostream>
#include <string_view>

#include "tools/eqrecord/PlotPage.h"

namespace eqrecord {

/// Writes a script for gnuplot, data included, that draws pages on its standard output.
class PlotScript {
  public:
    /// `format` is "svg", "png" or "pdf"; only the last one can have several pages. All pages will
    /// have `panels` panels. The stream is not owned.
    PlotScript(std::ostream& out, std::string_view format, std::size_t panels);

    void addPage(const PlotPage& page);

  private:
    std::ostream& out_;
    double height_;  ///< of the canvas
};

}  // namespace eqrecord
