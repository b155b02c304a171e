// What a date is read as comes from the converter's calendar. Whether that is what the text says is
// judged by the layouts that it can be written in, with nothing left over and nothing out of range:
// what is in none of them was read by guessing.

#include "lint/DateCheck.h"

#include <algorithm>

#include "lint/Teller.h"

namespace lint {

namespace {

/// The fields of a date as they are written.
struct Fields {
    std::string year;
    std::string month;  ///< a number or a name
    std::string day;
    std::string hour;
    std::string minute;
    std::string second;
    std::string fraction;  ///< the digits behind the point
};

/// Takes fields from the front of a text. Once something was not there, nothing more is.
class FieldReader {
  public:
    explicit FieldReader(std::string_view text) : text_(text) { skipSpace(); }

    /// Takes `least` to `most` characters of a class, all that there are, into `field`.
    FieldReader& take(std::string& field, std::size_t least, std::size_t most,
                      bool (*belongs)(char)) {
        const auto end = std::find_if_not(text_.begin(), text_.end(), belongs);
        const auto length = std::min(static_cast<std::size_t>(end - text_.begin()), most);
        isGood_ = isGood_ && length >= least;
        field = text_.substr(0, length);
        text_.remove_prefix(length);
        return *this;
    }
    FieldReader& digits(std::string& field, std::size_t least, std::size_t most) {
        return take(field, least, most, [](char c) { return c >= '0' && c <= '9'; });
    }
    FieldReader& letters(std::string& field, std::size_t count) {
        return take(field, count, count,
                    [](char c) { return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z'); });
    }
    FieldReader& mark(char c) {
        isGood_ = isGood_ && text_.starts_with(c);
        text_.remove_prefix(isGood_ ? 1 : 0);
        return *this;
    }
    FieldReader& skipAny(std::string_view characters) {
        text_.remove_prefix(std::min(text_.find_first_not_of(characters), text_.size()));
        return *this;
    }
    FieldReader& skipSpace() { return skipAny(" \t\r\n"); }
    /// What says that a time is UTC, as all are.
    FieldReader& skipUniversalTime() {
        for (const std::string_view mark : {"Z", "+00:00", "-00:00"}) {
            if (text_.starts_with(mark)) {
                text_.remove_prefix(mark.size());
                break;
            }
        }
        return *this;
    }
    bool startsWith(char c) const { return text_.starts_with(c); }
    bool startsWithDigit() const { return !text_.empty() && text_[0] >= '0' && text_[0] <= '9'; }
    bool isAtEnd() const { return isGood_ && text_.empty(); }

  private:
    std::string_view text_;
    bool isGood_ = true;
};

/// Reads the time, if there is one, and the end.
bool readTime(FieldReader reader, bool isCompact, Fields& fields) {
    if (reader.startsWithDigit()) {
        const std::size_t least = isCompact ? 2 : 1;
        reader.digits(fields.hour, least, 2);
        const auto next = [&](std::string& field) {
            isCompact ? reader : reader.mark(':');
            reader.digits(field, least, 2);
        };
        next(fields.minute);
        if (isCompact ? reader.startsWithDigit() : reader.startsWith(':')) {
            next(fields.second);
            if (reader.startsWith('.')) {
                reader.mark('.').digits(fields.fraction, 0, std::string::npos);
            }
        }
    }
    if (!fields.hour.empty()) {
        reader.skipUniversalTime();
    }
    return reader.skipSpace().isAtEnd();
}

// The layouts. Those with the day in front have the time behind a space, the others behind a "T".

bool readYearMonthDay(FieldReader reader, Fields& fields) {
    reader.digits(fields.year, 4, 4).mark('-').digits(fields.month, 1, 2).mark('-');
    reader.digits(fields.day, 1, 2).mark('T');
    return reader.startsWithDigit() && readTime(reader, false, fields);
}

bool readCompact(FieldReader reader, Fields& fields) {
    reader.digits(fields.year, 4, 4).digits(fields.month, 2, 2).digits(fields.day, 2, 2);
    reader.mark('T');
    return reader.startsWithDigit() && readTime(reader, true, fields);
}

bool readDayFirst(FieldReader reader, char separator, Fields& fields) {
    reader.digits(fields.day, 1, 2).mark(separator);
    separator == '-' ? reader.letters(fields.month, 3) : reader.digits(fields.month, 1, 2);
    reader.mark(separator).digits(fields.year, 4, 4);
    reader.skipAny(" ");
    return reader.startsWithDigit() && readTime(reader, false, fields);
}

/// The fields of a text in one of the layouts; false when it is in none.
bool splitDate(const std::string& text, Fields& fields) {
    const FieldReader reader(text);
    return readYearMonthDay(reader, fields = {}) || readCompact(reader, fields = {}) ||
           readDayFirst(reader, '-', fields = {}) || readDayFirst(reader, '/', fields = {});
}

std::string padded(const std::string& digits) {
    return std::string(digits.size() < 2 ? 2 - digits.size() : 0, '0') + digits;
}

std::string monthNumber(const std::string& month) {
    for (std::size_t i = 0; i < 12; ++i) {
        const std::string name = vek::JulianDate::months[i];
        const bool isSame = std::equal(month.begin(), month.end(), name.begin(), name.end(),
                                       [](char a, char b) { return a == b || a - 'a' + 'A' == b; });
        if (isSame) {
            return padded(std::to_string(i + 1));
        }
    }
    return padded(month);
}

std::string isoOf(const vek::JulianDate& date) {
    return std::string(date.strIso(0, false).view());
}

/// What the fields mean, as the record writes it.
std::string meaningOf(const Fields& fields) {
    std::string iso = fields.year + "-" + monthNumber(fields.month) + "-" + padded(fields.day) +
                      "T" + padded(fields.hour) + ":" + padded(fields.minute) + ":" +
                      padded(fields.second);
    if (!fields.fraction.empty() && fields.fraction[0] >= '5') {
        vek::JulianDate whole;
        whole.init(iso.c_str());
        iso = isoOf(whole += 1.0);
    }
    return iso;
}

constexpr std::string_view shape = "0000-00-00T00:00:00";

bool isPlainDate(const std::string& text) {
    return std::ranges::equal(text, shape, [](char c, char wanted) {
        return wanted == '0' ? c >= '0' && c <= '9' : c == wanted;
    });
}

DateReading failed(const std::string& text, const std::string& written) {
    vek::JulianDate other;
    other.microseconds = 1;
    other.init(text.c_str());
    if (other.microseconds == 1) {
        return {
            "EQ303", Severity::warning,
            inQuotes(text) + " is no date: the date before it, " + written + ", is written again",
            written};
    }
    return {"EQ304", Severity::warning,
            "date " + inQuotes(text) + " is out of range: " + written + " is written", written};
}

}  // namespace

DateReading readDate(const std::string& text, vek::JulianDate& date) {
    const bool isDate = date.init(text.c_str());
    const std::string written = isoOf(date);
    if (text.empty()) {
        return {"EQ302", Severity::warning, "the date is empty: " + written + " is written",
                written};
    }
    if (!isDate) {
        return failed(text, written);
    }
    if (written.size() != shape.size()) {
        return {"EQ304", Severity::warning,
                "date " + inQuotes(text) + " is written as " + written +
                    ", which has not 19 characters: all that follows moves",
                written};
    }
    Fields fields;
    if (!splitDate(text, fields) || meaningOf(fields) != written) {
        return {"EQ305", Severity::warning, "date " + inQuotes(text) + " is written as " + written,
                written};
    }
    if (!isPlainDate(text)) {
        return {"EQ306", Severity::note, "date " + inQuotes(text) + " is written as " + written,
                written};
    }
    return {"", Severity::note, "", written};
}

}  // namespace lint
