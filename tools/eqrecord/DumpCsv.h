#pragma once

#include <ostream>

#include "tools/eqrecord/DumpSource.h"

namespace eqrecord {

/// Writes a header and, of each pixel that has a value, a row, as RFC 4180 says but with LF: the
/// columns are file, band, name, configuration, detector, pixel, and the kinds that are selected.
void writeDumpCsv(DumpSource& source, const DumpOptions& options, std::ostream& out);

}  // namespace eqrecord
