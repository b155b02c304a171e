#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>
#include <variant>

namespace eqrecord {

/// What is wrong with a value of a JSON text, or with one below it. Who knows where the value
/// stands tells that.
class Refusal : public std::runtime_error {
  public:
    explicit Refusal(const std::string& text) : std::runtime_error(text) {}
    Refusal(std::string below, const std::string& text)
        : std::runtime_error(text), below_(std::move(below)) {}

    /// The way to the value that is wrong, "COEFF_A1/3"; "" for the value itself.
    const std::string& below() const { return below_; }

  private:
    std::string below_;
};

/// A value that is neither a list nor an object; whole numbers below 0, and -0, are signed.
using JsonValue =
    std::variant<std::nullptr_t, bool, std::int64_t, std::uint64_t, double, std::string>;

/// Each returns what a value has to be, or throws Refusal.
std::int64_t integerOf(const JsonValue& value, std::int64_t least, std::int64_t most);
const std::string& textOf(const JsonValue& value);
/// A real as JsonWriter writes it: a number, null, "inf", "-inf", or the bits of any double.
double realOf(const JsonValue& value);
/// The same of one that is a string.
double realOf(std::string_view text);
/// The refusal of what is no real.
Refusal notReal();
/// The refusal of a number that no double comes near.
Refusal outOfRange();
/// The bytes of two hexadecimal digits each.
std::string bytesOf(const std::string& digits);

}  // namespace eqrecord
