#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

#include "record/ByteOrder.h"
#include "record/Sink.h"

namespace record {

/// Writes a record field by field; the caller keeps to the order of the layout. Nothing else writes
/// a field.
class Writer {
  public:
    /// The sink is not owned and must outlive the writer. Raw values get this order.
    explicit Writer(Sink& sink, ByteOrder order = machineOrder) : sink_(sink), order_(order) {}

    /// Fields 1 to 3: `type` is what follows the prefix of the file type.
    void begin(std::string_view type);
    /// Field 4, 5 or 6: a date as text, 19 characters unless its year has not four digits.
    void date(std::string_view text) { sink_.write(text); }
    /// Field 7.
    void fileCount(std::size_t count);
    /// Field 8.
    void nucTableId(std::int16_t id);

    /// Fields 9 to 11, of a file.
    void file(std::uint8_t band, std::string_view name);
    /// Field 12: the count modulo 256.
    void configurationCount(std::uint8_t count);

    /// Fields 13 to 15, of a configuration.
    void configuration(std::string_view label, double epsilon);
    /// Field 16, P. Requires: 0 <= pixels, or a record that nobody can read.
    void pixels(std::int16_t pixels);
    /// One vector of field 17: the first `pixels` of the values, filled up to so many.
    void vector(std::span<const double> values, std::int16_t pixels);

  private:
    void number(std::size_t value, char fill);
    void int16(std::int16_t value);
    void reals(std::span<const double> values);

    Sink& sink_;
    ByteOrder order_;
};

}  // namespace record
