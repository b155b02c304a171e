// Whoever computes with a record must not get a part of it for the whole, nor one of two readings
// by chance: both are refused until they are asked for.

#include "tools/eqrecord/OpenRecord.h"

#include <stdexcept>
#include <utility>

#include "tools/eqrecord/Telling.h"

namespace eqrecord {

namespace {

/// Why the record is not taken; "" when it is.
std::string refusalOf(record::RecordReader& reader, bool takesPartial) {
    switch (reader.outcome().state) {
        case record::State::complete:
        case record::State::fewerBlocks:
            return "";
        case record::State::damaged:
            return tell(reader).front();
        case record::State::ambiguous:
            return tell(reader).front() + "; 'eqrecord info' shows them";
        default:
            return takesPartial ? "" : tell(reader).front() + "; --partial takes what is whole";
    }
}

}  // namespace

OpenRecord::OpenRecord(std::string path, const Arguments& arguments)
    : path_(std::move(path)), reader_(path_, arguments.order()) {
    chooseReading(arguments, path_, reader_);
    const std::string refusal = refusalOf(reader_, arguments.takesPartial);
    if (!refusal.empty()) {
        throw std::runtime_error(path_ + ": " + refusal);
    }
}

}  // namespace eqrecord
