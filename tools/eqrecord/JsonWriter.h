#pragma once

#include <cstdint>
#include <ostream>
#include <span>
#include <string>
#include <string_view>

namespace eqrecord {

/// Writes JSON on one line as it comes, with ", " and ": " between its parts. The caller sees to it
/// that what is begun is ended, and that a key stands before each value of an object.
class JsonWriter {
  public:
    /// The stream is not owned. With `writesBits` all reals but the fill value are written as other
    /// NaN are.
    explicit JsonWriter(std::ostream& out, bool writesBits = false)
        : out_(out), writesBits_(writesBits) {}

    void beginObject() { begin('{'); }
    void endObject() { end('}'); }
    void beginArray() { begin('['); }
    void endArray() { end(']'); }
    /// A key of plain ASCII letters.
    void key(std::string_view name);
    /// Lets what comes next, a key or a value without one, begin a line.
    void breakLine() { breaksLine_ = true; }

    /// A string in ASCII; of bytes that are no UTF-8, {"hex": "..."}.
    void text(std::string_view value);
    void number(std::uint64_t value) { raw(std::to_string(value)); }
    void number(std::int64_t value) { raw(std::to_string(value)); }
    void null() { raw("null"); }
    void boolean(bool value) { raw(value ? "true" : "false"); }
    /// The shortest decimal that is read back to the same bits; the fill value as null, another NaN
    /// as its bits in a string, "0x7ff8000000000123", and infinities as "inf" and "-inf".
    void real(double value);
    /// An array of them.
    void realArray(std::span<const double> values);

    /// The same with a key before the value.
    void text(std::string_view name, std::string_view value) {
        key(name);
        text(value);
    }
    void number(std::string_view name, std::uint64_t value) {
        key(name);
        number(value);
    }
    void real(std::string_view name, double value) {
        key(name);
        real(value);
    }
    void boolean(std::string_view name, bool value) {
        key(name);
        boolean(value);
    }

  private:
    void begin(char bracket);
    void end(char bracket);
    void raw(std::string_view value);
    void separate();
    void writeReals(std::span<const double> values);
    char* write(double value, char* to) const;

    std::ostream& out_;
    bool writesBits_;
    bool isFirst_ = true;
    bool breaksLine_ = false;
};

/// The shortest decimal that is read back to the same bits; "nan", "inf" or "-inf".
std::string decimalOf(double value);
/// The bits of a real, "0x7ff8000000000123".
std::string bitsOf(double value);
/// A number rounded to so many digits, without zeros at the end.
std::string roundedOf(double value, int digits);
/// Bytes in hexadecimal digits, two each, with `between` between two bytes.
std::string hexOf(std::string_view bytes, std::string_view between = "");
/// A number as "0x1f".
std::string hexNumber(std::uint64_t value);

}  // namespace eqrecord
