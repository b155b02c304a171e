#pragma once

#include <string>

#include "record/RecordReader.h"

namespace eqrecord {

/// The SHA-256 of all bytes of a record, in hexadecimal digits, as sha256sum tells it.
std::string sha256Of(record::RecordReader& record);

}  // namespace eqrecord
