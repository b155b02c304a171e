#pragma once

#include <ostream>

#include "tools/eqrecord/DumpSource.h"

namespace eqrecord {

/// Writes a record as JSON, as docs/eqrecord-1.schema.json says: a vector a line, as long as what
/// is dumped of it, and one of fill only as null.
void writeDumpJson(DumpSource& source, const DumpOptions& options, std::ostream& out);

}  // namespace eqrecord
