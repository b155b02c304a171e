#pragma once

#include <ostream>
#include <string>
#include <vector>

#include "record/RecordReader.h"

namespace eqrecord {

/// Writes what a record consists of as one line of JSON, as docs/eqrecord-info-1.schema.json says.
void writeInfoJson(const std::string& path, const record::RecordReader& reader,
                   const std::vector<const record::Reading*>& readings, std::ostream& out);

}  // namespace eqrecord
