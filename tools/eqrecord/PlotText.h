#pragma once

#include <cstddef>
#include <ostream>

#include "tools/eqrecord/PlotPage.h"

namespace eqrecord {

/// Draws a page with characters, in UTF-8 and at most `width` of them in a line of the picture.
void writePlotText(const PlotPage& page, std::size_t width, std::ostream& out);

}  // namespace eqrecord
