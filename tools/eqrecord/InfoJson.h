#pragma once

#include <ostream>
#include <string>

#include "record/RecordReader.h"

namespace eqrecord {

/// Writes what a record consists of as one line of JSON, as docs/eqrecord-info-1.schema.json says.
void writeInfoJson(const std::string& path, const record::RecordReader& reader, std::ostream& out);

}  // namespace eqrecord
