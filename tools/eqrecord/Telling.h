#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "record/RecordReader.h"

/// What people are told of an outcome: one line each, without a full stop, and safe for terminals.
namespace eqrecord {

/// A state in one word, as it stands in JSON too.
std::string_view nameOf(record::State state);
/// "little" or "big".
std::string_view nameOf(record::ByteOrder order);

/// What is to be told of a record beside its state; nothing of one that is complete.
std::vector<std::string> tell(record::RecordReader& reader);
/// How a reading's file compares to its count: "file 2 counts 3 configurations, 1 is there", and
/// why; "" when the count is kept, or the record ends in this file. `index` is from 0.
std::string tellCount(const record::Outcome& outcome, const record::Reading& reading,
                      std::size_t index);
/// Of a record that is incomplete: what kind of stop leaves it so, as in JSON; "" if none does.
std::string_view causeOf(const record::Outcome& outcome);
/// What a damaged record should have had where it is damaged.
std::string expectedOf(const record::Ending& ending);

}  // namespace eqrecord
