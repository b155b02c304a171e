// The arrays of numbers are nearly all of a record's JSON. The library hands them out one by one,
// each by virtue of strtod and after several looks at each of its characters; std::from_chars reads
// them several times as fast where they are. It takes a little more than JSON has, "01", "1." and
// "-.5", which is refused here.

#include "tools/eqrecord/RealArray.h"

#include <charconv>

#include "record/Layout.h"
#include "tools/eqrecord/JsonValue.h"

namespace eqrecord {

namespace {

bool isDigit(char c) {
    return '0' <= c && c <= '9';
}

/// Whether what std::from_chars takes for a number is one in JSON.
bool isJsonNumber(std::string_view text) {
    text.remove_prefix(text.starts_with('-') ? 1 : 0);
    const std::size_t point = text.find('.');
    return !text.empty() && isDigit(text[0]) &&
           !(text[0] == '0' && text.size() > 1 && isDigit(text[1])) &&
           (point == std::string_view::npos ||
            (point + 1 < text.size() && isDigit(text[point + 1])));
}

class RealArray {
  public:
    RealArray(JsonInput& input, std::size_t most, std::vector<double>& values)
        : input_(input), most_(most), values_(values), ahead_(input.ahead()), text_(ahead_) {}

    void read();

  private:
    /// The next character that is no blank, from which on there is a piece; 0 at the end.
    char next();
    /// Lets the input know what was taken.
    void settle();
    double element();
    double number();

    JsonInput& input_;
    std::size_t most_;
    std::vector<double>& values_;
    std::string_view ahead_;
    std::string_view text_;  ///< what is left of it
};

void RealArray::read() {
    std::size_t index = 0;
    try {
        for (char separator = next(); separator != ']'; ++index) {
            if (index == most_) {
                throw Refusal("is one more than the " + std::to_string(most_) +
                              " that there can be");
            }
            values_.push_back(element());
            separator = next();
            if (separator == ',') {
                text_.remove_prefix(1);
            } else if (separator != ']') {
                throw Refusal("must be followed by a comma, or the end of the list");
            }
        }
    } catch (const Refusal& refusal) {
        throw Refusal(std::to_string(index), refusal.what());
    }
    settle();
}

char RealArray::next() {
    for (;;) {
        while (!text_.empty() &&
               (text_[0] == ' ' || text_[0] == '\n' || text_[0] == '\r' || text_[0] == '\t')) {
            text_.remove_prefix(1);
        }
        if (text_.size() >= JsonInput::longestPiece || !input_.isMore()) {
            return text_.empty() ? '\0' : text_[0];
        }
        settle();
    }
}

void RealArray::settle() {
    input_.skip(ahead_.size() - text_.size());
    ahead_ = text_ = input_.ahead();
}

double RealArray::element() {
    constexpr std::string_view null = "null";
    next();
    if (text_.starts_with('"')) {
        const std::size_t quote = text_.find('"', 1);
        if (quote == std::string_view::npos) {
            throw notReal();
        }
        const double value = realOf(text_.substr(1, quote - 1));
        text_.remove_prefix(quote + 1);
        return value;
    }
    if (text_.starts_with(null)) {
        text_.remove_prefix(null.size());
        return record::fillValue;
    }
    return number();
}

double RealArray::number() {
    double value = 0;
    const auto result = std::from_chars(text_.data(), text_.data() + text_.size(), value);
    const auto length = static_cast<std::size_t>(result.ptr - text_.data());
    if (result.ec == std::errc::result_out_of_range) {
        throw outOfRange();
    }
    // One that fills a piece may go on behind it.
    if (result.ec != std::errc() || length >= JsonInput::longestPiece ||
        !isJsonNumber(text_.substr(0, length))) {
        throw notReal();
    }
    text_.remove_prefix(length);
    return value;
}

}  // namespace

void readRealArray(JsonInput& input, std::size_t most, std::vector<double>& values) {
    RealArray(input, most, values).read();
}

}  // namespace eqrecord
