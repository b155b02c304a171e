#pragma once

#include <cstdint>
#include <iosfwd>
#include <limits>
#include <memory>
#include <string_view>

namespace vek {

/// Counted, NUL-terminated byte string with a null state that differs from the empty string.
///
/// Copies are deep; a moved-from string is null. Positions and counts are in bytes. The block
/// is always exactly as long as the text and its NUL: every change of length allocates anew.
/// An operation whose result would be longer than INT32_MAX throws std::length_error and leaves
/// the string as it was. Text arguments may point into the string itself. A null text argument
/// stands for "" unless an operation says otherwise.
///
/// On a null string the tests give false (isAlpha: true) and the conversions 0; edits that add
/// text make it non-null, the others leave it null.
class String {
  public:
    /// Quiet NaN, bit pattern 0x7FF8000000000000.
    static constexpr double nan = std::numeric_limits<double>::quiet_NaN();

    /// Makes a null string.
    String() = default;
    /// Copies `count` bytes of `text`, or up to its NUL when `count` is negative. A null text
    /// gives a null string.
    explicit String(const char* text, int count = -1);
    /// Makes `count` copies of `c`; a negative count gives "".
    String(int count, char c);
    /// Reads up to `delimiter`, which is consumed and not stored, or to the end of the stream.
    /// Null when the stream has failed or holds nothing more.
    String(std::istream& stream, char delimiter);
    /// Reads at most `count` bytes, to the end of the stream when `count` is negative. Null when
    /// the stream has already failed, "" when nothing is left.
    String(std::istream& stream, int count);
    String(const String& other);
    String(String&& other) noexcept;
    String& operator=(const String& other);
    String& operator=(String&& other) noexcept;
    /// Copies `text` up to its NUL; a null text sets the null state.
    String& operator=(const char* text);
    ~String() = default;

    /// Frees the block and enters the null state.
    void setNull();
    bool isNull() const { return data_ == nullptr; }
    int length() const { return length_; }
    /// The text, NUL-terminated; "" when null. Holds until the next change of length.
    const char* c_str() const { return data_ ? data_.get() : ""; }
    std::string_view view() const {
        return {c_str(), static_cast<std::string_view::size_type>(length_)};
    }

    /// The byte at `index`; NUL for every index outside the text.
    char operator[](int index) const;

    /// Index of `c` at or after `start`, or with `reverse` at or before it (a start beyond the
    /// end then means the last byte). -1 when absent or null or when start is negative.
    /// Deliberate oddity: a forward search returns a `start` greater than the length as it is.
    int find(char c, int start = 0, bool reverse = false) const;
    /// Index of the first occurrence of `text` at or after `start` (negative: 0). -1 when
    /// absent, for a null text, on a null string, and when start is not inside the string. The
    /// search ends at the first NUL from `start` on.
    int find(const char* text, int start = 0) const;
    /// Number of occurrences of `text` that do not overlap, scanning forward to the first NUL; -1
    /// for a null or empty text.
    int count(const char* text) const;
    /// The bytes `first` to `last`, both included. A negative `last` or one beyond the end means
    /// the last byte. "" when nothing is selected, null on a null string.
    String substr(int first, int last) const;
    /// From the start of word `first` to the end of word `last`. Words are numbered from 0 and
    /// every single separator ends one; a negative `last` means to the end of the string. "" when
    /// there is no such word, null on a null string.
    String words(int first, int last, char separator) const;
    /// words(n, n, separator).
    String word(int n, char separator) const;
    /// Whether the shell pattern (null: "*") matches the text, as vek::fnmatch without flags
    /// does. A null string matches only a null pattern.
    bool match(const char* pattern) const;

    /// Compares with `other` as strcmp (n negative) or strncmp does. n = 0 gives 0. A null other
    /// gives -1, a null string against some text 1, two nulls 0.
    int cmp(const char* other, int n = -1) const;
    /// cmp without regard to the case of ASCII letters.
    int casecmp(const char* other, int n = -1) const;

    /// Whether the text is an optional sign and decimal digits; a sign alone counts.
    bool isInteger() const;
    /// 2 for an integer (see isInteger), 1 for digits with one "." anywhere, 0 otherwise.
    int isNumber() const;
    /// Whether every byte is an ASCII letter or digit; true when there is none.
    bool isAlpha() const;

    /// The low 32 bits of toLong().
    int toInt() const;
    /// The leading decimal integer, limited as strtol does; 0 when there is none.
    long toLong() const;
    /// As toLong(), with strtoll.
    long long toLLong() const;
    /// The leading number as strtod reads it; 0 when there is none.
    double toDouble() const;
    /// toDouble() when the number takes up the whole text, otherwise `nan`.
    double toSmartDouble() const;

    /// Adds `count` bytes of `text`, up to its NUL when `count` is negative. With a null text
    /// adds `count` NULs for the caller to fill, nothing when `count` is not positive. Returns
    /// the first added byte (owned by the string); null when the string is still null.
    char* append(const char* text, int count = -1);
    /// Inserts `count` bytes of `text` (negative: up to its NUL) before `position`, which is
    /// limited to the string. A null text inserts nothing.
    String& insert(int position, const char* text, int count = -1);
    String& insert(int position, const String& text);
    String& operator+=(const String& text);
    String& operator+=(const char* text);
    String& operator+=(char c);
    String operator+(const String& text) const;
    String operator+(const char* text) const;
    String operator+(char c) const;
    /// Drops the NULs at the end of the text, then appends the number in decimal.
    String& operator<<(int value);
    String& operator<<(long value);
    String& operator<<(long long value);
    /// As for integers, with at most 15 significant digits ("%.15g").
    String& operator<<(double value);

    /// Sets every byte to `c`.
    String& fill(char c);
    /// Replaces every `from` by `to`; nothing when `to` is NUL.
    String& swap(char from, char to);
    /// Replaces the occurrences of `from` before the first NUL, left to right, by `to`; replaced
    /// text is not searched again. An empty `to` deletes. Nothing when `from` is null or empty or
    /// `to` is null.
    String& swap(const char* from, const char* to);
    /// Changes the case of the ASCII letters.
    String& uppercase();
    String& lowercase();
    /// Removes leading and trailing runs of `c`; for 0, of spaces and tabs. Deliberate oddity: a
    /// text of nothing else keeps its first byte.
    String& trim(char c = 0);
    /// Doubles backslashes and writes each non-printing byte as "\dNNN" (its decimal value).
    /// Line feed, carriage return and tab become "\n", "\r", "\t" with `controls` and stay
    /// otherwise.
    String& escape(bool controls);
    /// Encloses in `open` and its partner: "[", "{", "(" in theirs, any other byte in itself.
    /// Nothing for NUL.
    String& quote(char open);
    /// Lengthens to |width| with `padding` (null or empty: " ") repeated and cut, before the
    /// text when `width` is positive, after it when negative. Nothing when already that long.
    String& pad(int width, const char* padding);

  private:
    /// Throws std::length_error for more than INT32_MAX bytes.
    static void checkLength(std::size_t length);
    /// Makes this string the bytes of `text`, which may lie in the present block.
    void assign(std::string_view text);
    /// Replaces the block by an uninitialised one for `length` bytes (any length above INT32_MAX
    /// throws), NUL-terminated, and hands out the old one so that its text can be copied.
    std::unique_ptr<char[]> reallocate(std::int64_t length);
    /// Makes room for `added` bytes before `position` and returns the gap's first byte. The old
    /// block, which `keep` receives, stays alive for a text that lies in it.
    char* openGap(int position, std::int64_t added, std::unique_ptr<char[]>& keep);
    String& appendNumber(const char* digits);

    std::int32_t length_ = 0;
    std::unique_ptr<char[]> data_;  // length_ + 1 bytes ending in NUL; null in the null state
};

}  // namespace vek
