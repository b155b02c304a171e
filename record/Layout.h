#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <string_view>

/// The layout of the record: what is written, in which order and form. Whoever writes or reads a
/// field cites its number here.
namespace record {

/// How a field is written. Integers and doubles are raw, in the byte order of the machine.
enum class Form {
    marker,      ///< the characters of `marker`
    numberText,  ///< a count in decimal digits, filled up on the left to `numberWidth`
    text,        ///< characters, as many as the number text before them says
    date,        ///< YYYY-MM-DDTHH:MM:SS in UTC
    int16,       ///< a signed integer of 2 bytes
    byte,        ///< an unsigned integer of 1 byte
    real,        ///< a double of 8 bytes, IEEE 754
    vectors,     ///< of each kind, of each detector, as many doubles as the field before says
};

/// What a field belongs to, and hence how often it is written.
enum class Level { record, file, configuration };

struct Field {
    int number;
    std::string_view name;
    Form form;
    Level level;
    char fill = 0;  ///< of a number text
};

inline constexpr std::array<Field, 17> fields{{
    {1, "marker", Form::marker, Level::record},
    {2, "file type length", Form::numberText, Level::record, ' '},
    {3, "file type", Form::text, Level::record},
    {4, "creation date", Form::date, Level::record},
    {5, "applicability start", Form::date, Level::record},
    {6, "applicability end", Form::date, Level::record},
    {7, "number of files", Form::numberText, Level::record, ' '},
    // Also written for every file that follows a negative one, see docs/record.md.
    {8, "NUC table identifier", Form::int16, Level::record},
    {9, "band", Form::byte, Level::file},
    {10, "file name length", Form::numberText, Level::file, '0'},
    {11, "file name", Form::text, Level::file},
    {12, "number of TDI configurations", Form::byte, Level::file},
    {13, "label length", Form::numberText, Level::configuration, '0'},
    {14, "label", Form::text, Level::configuration},
    {15, "epsilon", Form::real, Level::configuration},
    {16, "pixels per vector, P", Form::int16, Level::configuration},
    {17, "coefficient vectors", Form::vectors, Level::configuration},
}};

/// Field `number`. Requires: 1 <= number <= fields.size().
constexpr const Field& field(int number) {
    return fields[static_cast<std::size_t>(number) - 1];
}

inline constexpr std::string_view marker = "ZEDA";
/// What the file type begins with; the rest comes from the name of a root element.
inline constexpr std::string_view fileTypePrefix = "VORN/";
/// A number text is at least so wide.
inline constexpr std::size_t numberWidth = 2;

/// Detectors of the focal plane, numbered from 1.
inline constexpr int detectorCount = 12;
/// The kinds of coefficient, by name, in their order.
inline constexpr std::array<std::string_view, 4> kindNames{"COEFF_A1", "COEFF_A2", "COEFF_ZS",
                                                           "COEFF_D"};
inline constexpr int kindCount = static_cast<int>(kindNames.size());

/// What fills up a vector: a quiet NaN of the bits 0x7FF8000000000000.
inline constexpr double fillValue = std::numeric_limits<double>::quiet_NaN();

/// Whether a value is that one to the bit.
constexpr bool isFill(double value) {
    return std::bit_cast<std::uint64_t>(value) == std::bit_cast<std::uint64_t>(fillValue);
}

}  // namespace record
