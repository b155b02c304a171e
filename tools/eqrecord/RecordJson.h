#pragma once

#include "tools/eqrecord/JsonInput.h"
#include "tools/eqrecord/RecordBuilder.h"

namespace eqrecord {

/// Reads a record from JSON as docs/eqrecord-1.schema.json says, and has it put together. Throws
/// std::runtime_error with the line and column of what is no JSON, or with the JSON pointer
/// ("/files/0/band") of what a record can't hold; std::system_error when the input can't be read.
void readRecordJson(JsonInput& input, RecordBuilder& builder);

}  // namespace eqrecord
