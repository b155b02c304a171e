#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <string_view>
#include <type_traits>

/// Writes the output record to a file descriptor, through one large buffer, or to a string: texts,
/// decimal numbers in a field of width 2, and raw values in the machine's byte order, without
/// anything in between.
///
/// Every operation throws vek::StdError, with the message "cannot write the record" and the
/// system's error number, when the target takes no more; what was written before stays. With a
/// string they also throw std::bad_alloc.
class RecordWriter {
  public:
    /// The descriptor is not owned and stays open.
    explicit RecordWriter(int descriptor) : descriptor_(descriptor) {}
    /// Appends to a string, which is not owned and must outlive the writer. It takes no more than
    /// `limit` bytes, and nothing that would not be buffered on its way to a descriptor.
    RecordWriter(std::string& target, std::size_t limit) : target_(&target), limit_(limit) {}

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

    /// The size of the target. Requires: that is a string.
    std::size_t size() const { return target_->size(); }

    /// Hands everything buffered to the system. What is not flushed is lost with the object.
    void flush();

  private:
    static constexpr std::size_t bufferSize = std::size_t{1} << 16;
    /// What is at least this long is written from where it lies.
    static constexpr std::size_t directSize = std::size_t{1} << 14;

    void bytes(const void* data, std::size_t size);
    void append(const char* data, std::size_t size);
    void write(const char* data, std::size_t size) const;

    int descriptor_ = -1;
    std::string* target_ = nullptr;  ///< in place of the descriptor, and of the buffer
    std::size_t limit_ = 0;          ///< of the target's size
    char fill_ = ' ';
    std::size_t used_ = 0;
    /// Part of the object, so that there is no memory to run out of.
    std::array<char, bufferSize> buffer_;
};
