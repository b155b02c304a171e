// A record can hold what a reader takes for one, see "How to read a record" in docs/record.md: more
// than the converter writes, but nothing that nobody could read again.

#include "tools/eqrecord/RecordFields.h"

#include <array>
#include <bit>
#include <limits>

#include "record/ByteSource.h"
#include "record/FieldReader.h"

namespace eqrecord {

namespace {

constexpr std::int64_t mostCounted = 999'999'999;  // nine digits

using To = RecordBuilder&;
using From = const JsonValue&;

constexpr RecordField ofPart(std::string_view key) {
    return {.key = key, .isOptional = true, .isOfPart = true};
}

void checkSchema(To, From value) {
    if (textOf(value) != "eqrecord-1") {
        throw Refusal("must be \"eqrecord-1\"");
    }
}

/// A text whose length fits into a number text.
std::string shortTextOf(From value) {
    if (textOf(value).size() > std::size_t{mostCounted}) {
        throw Refusal("is too long");
    }
    return textOf(value);
}

std::string fileTypeOf(From value) {
    if (!textOf(value).starts_with(record::fileTypePrefix)) {
        throw Refusal("must begin with \"VORN/\"");
    }
    return shortTextOf(value);
}

/// As the reader of records does, also with years of more than four digits, and before the year 0.
std::string dateOf(From value) {
    auto bytes = record::ByteSource::ofBytes(textOf(value));
    record::FieldReader reader(bytes, record::machineOrder, 0);
    record::TextPlace place;
    if (!reader.readDate(4, place) || reader.offset() < bytes.size()) {
        throw Refusal("must be a date as \"2015-06-23T10:00:00\"");
    }
    return textOf(value);
}

std::string nameOf(From value) {
    if (textOf(value).find_first_of(std::string_view("/\0", 2)) != std::string::npos) {
        throw Refusal("must have no slash and no NUL");
    }
    return shortTextOf(value);
}

record::ByteOrder orderOf(From value) {
    if (textOf(value) != "little" && textOf(value) != "big") {
        throw Refusal("must be \"little\" or \"big\"");
    }
    return textOf(value) == "little" ? record::ByteOrder::little : record::ByteOrder::big;
}

/// An integer that takes all values of its field.
template <class Number>
Number numberOf(From value) {
    using Limits = std::numeric_limits<Number>;
    return static_cast<Number>(integerOf(value, Limits::min(), Limits::max()));
}

void setFilesCounted(To to, From value) {
    to.reading().filesCounted = static_cast<std::uint64_t>(integerOf(value, 1, mostCounted));
}

void setNucTableId(To to, From value) {
    to.file().nucTableId = numberOf<std::int16_t>(value);
}

void setEpsilon(To to, From value) {
    to.configuration().epsilonBits = std::bit_cast<std::uint64_t>(realOf(value));
}

void setPixels(To to, From value) {
    to.configuration().pixels =
        static_cast<std::int16_t>(integerOf(value, 0, RecordBuilder::mostPixels));
}

constexpr std::array recordFields{
    RecordField{"schema", checkSchema},
    ofPart("incomplete"),
    ofPart("selection"),
    RecordField{"byte_order", [](To to, From value) { to.setOrder(orderOf(value)); }},
    RecordField{"file_type", [](To to, From value) { to.reading().fileType = fileTypeOf(value); }},
    RecordField{"creation_date",
                [](To to, From value) { to.reading().creationDate = dateOf(value); }},
    RecordField{"applicability_start",
                [](To to, From value) { to.reading().applicabilityStart = dateOf(value); }},
    RecordField{"applicability_end",
                [](To to, From value) { to.reading().applicabilityEnd = dateOf(value); }},
    RecordField{"files_counted", setFilesCounted},
    RecordField{.key = "files", .array = Part::files},
};

constexpr std::array fileFields{
    ofPart("number"),
    RecordField{.key = "nuc_table_id", .set = setNucTableId, .isOptional = true},
    RecordField{"band", [](To to, From value) { to.file().band = numberOf<std::uint8_t>(value); }},
    RecordField{"name", [](To to, From value) { to.file().name = nameOf(value); }},
    RecordField{"configurations_counted",
                [](To to, From value) { to.file().counted = numberOf<std::uint8_t>(value); }},
    RecordField{.key = "configurations", .array = Part::configurations},
};

constexpr std::array configurationFields{
    ofPart("number"),
    ofPart("incomplete"),
    RecordField{"label", [](To to, From value) { to.configuration().label = shortTextOf(value); }},
    RecordField{"epsilon", setEpsilon},
    RecordField{"pixels", setPixels},
    RecordField{.key = record::kindNames[0], .array = Part::kind, .kind = 0},
    RecordField{.key = record::kindNames[1], .array = Part::kind, .kind = 1},
    RecordField{.key = record::kindNames[2], .array = Part::kind, .kind = 2},
    RecordField{.key = record::kindNames[3], .array = Part::kind, .kind = 3},
};

/// Its bytes stand for a text, which belongs to the field whose value they are.
constexpr std::array bytesFields{RecordField{"hex", [](To, From) {}}};

}  // namespace

std::span<const RecordField> fieldsOf(Part part) {
    switch (part) {
        case Part::record:
            return recordFields;
        case Part::file:
            return fileFields;
        case Part::configuration:
            return configurationFields;
        case Part::bytes:
            return bytesFields;
        default:
            return {};
    }
}

}  // namespace eqrecord
