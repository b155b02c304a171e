#pragma once

#include <span>
#include <string_view>

#include "tools/eqrecord/JsonValue.h"
#include "tools/eqrecord/RecordBuilder.h"

namespace eqrecord {

/// The objects and arrays of a record's JSON. Bytes are the object that stands for a text.
enum class Part { record, files, file, configurations, configuration, kind, vector, bytes };

/// A field of an object.
struct RecordField {
    std::string_view key;
    /// Gives a plain value to what is put together. Throws Refusal when a record can't hold it.
    void (*set)(RecordBuilder&, const JsonValue&) = nullptr;
    Part array = Part::record;  ///< what its value is when that can't be set
    int kind = 0;               ///< of the vectors in it
    bool isOptional = false;
    bool isOfPart = false;  ///< what has it is a part of a record
};

/// The fields of an object, at most 32; of an array none.
std::span<const RecordField> fieldsOf(Part part);

}  // namespace eqrecord
