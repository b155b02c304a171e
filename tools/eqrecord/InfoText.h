#pragma once

#include <ostream>
#include <string>

#include "record/RecordReader.h"

namespace eqrecord {

/// Writes what a record consists of for people: its state, the prologue of each reading, and a
/// table of its configurations.
void writeInfoText(const std::string& path, record::RecordReader& reader, std::ostream& out);

}  // namespace eqrecord
