#pragma once

#include <array>
#include <cstddef>
#include <string_view>
#include <type_traits>

/// Writes the output record to a file descriptor, through one large buffer: texts, decimal numbers
/// in a field of width 2, and raw values in the machine's byte order, without anything in between.
///
/// Every operation throws vek::StdError, with the message "cannot write the record" and the
/// system's error number, when the target takes no more; what was written before stays.
class RecordWriter {
  public:
    /// The descriptor is not owned and stays open.
    explicit RecordWriter(int descriptor) : descriptor_(descriptor) {}

    /// The character that fills a number up to width 2 from now on; a space at first.
    void setFill(char fill) { fill_ = fill; }

    void text(std::string_view text) { bytes(text.data(), text.size()); }
    /// A decimal number, right-aligned in a field of width 2; longer ones take the room they need.
    void number(std::size_t number);
    /// The bytes of one value.
    template <class T>
    requires std::is_arithmetic_v<T>
    void raw(T value) { bytes(&value, sizeof value); }
    /// The bytes of `count` values.
    void doubles(const double* values, std::size_t count) { bytes(values, count * sizeof(double)); }

    /// Hands everything buffered to the system. What is not flushed is lost with the object.
    void flush();

  private:
    static constexpr std::size_t bufferSize = std::size_t{1} << 16;
    /// What is at least this long is written from where it lies.
    static constexpr std::size_t directSize = std::size_t{1} << 14;

    void bytes(const void* data, std::size_t size);
    void write(const char* data, std::size_t size) const;

    int descriptor_;
    char fill_ = ' ';
    std::size_t used_ = 0;
    /// Part of the object, so that there is no memory to run out of.
    std::array<char, bufferSize> buffer_;
};
