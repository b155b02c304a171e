#pragma once

#include <ostream>

#include "tools/eqrecord/DumpSource.h"

namespace eqrecord {

/// Writes a record for people: its bytes and what they are, as docs/record.md shows them. A vector
/// is shortened to three values, and neighbours of one value only are shown once, unless nothing is
/// to be left out.
void writeDumpText(DumpSource& source, const DumpOptions& options, std::ostream& out);

}  // namespace eqrecord
