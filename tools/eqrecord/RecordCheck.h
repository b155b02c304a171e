#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "record/RecordReader.h"

namespace eqrecord {

/// One thing that is to be said of a record. The identifiers RC1xx are of its layout, RC2xx of what
/// it holds.
struct Finding {
    std::string_view id;
    bool isError = false;  ///< else a note: such records are made, and rarely meant
    std::uint64_t offset = 0;
    std::string message;  ///< one line, safe for terminals
};

/// Checks a record: its layout, then all that is whole of its first reading. Reads all vectors.
/// Throws std::runtime_error when it can't.
std::vector<Finding> checkRecord(record::RecordReader& reader);

}  // namespace eqrecord
