#pragma once

#include <cstddef>
#include <cstdint>
#include <ostream>
#include <string>
#include <string_view>

#include "record/RecordReader.h"

namespace eqrecord {

/// Rows of a record's bytes and of what they are: "offset  bytes  field", as in docs/record.md.
class Listing {
  public:
    /// Neither the record nor the stream is owned. Writes the heads of the columns.
    Listing(record::RecordReader& reader, std::ostream& out);

    /// Writes a row of the bytes from an offset on, 16 of them and then rows without an offset.
    /// What is told of them, and `ending` behind the bytes, stands in the last row. Without a
    /// number the text stands below that of the field before.
    void write(std::uint64_t offset, std::uint64_t length, int number, const std::string& text,
               std::string_view ending = {});

  private:
    record::RecordReader& reader_;
    std::ostream& out_;
    std::size_t digits_;  ///< of an offset
    std::size_t bytesColumn_;
};

}  // namespace eqrecord
