// What the converter makes of a vector comes from its own reader. The pieces are cut here, at each
// space, in step with the values; that there are as many of them is checked for each vector.

#include "lint/VectorCheck.h"

#include <algorithm>
#include <optional>
#include <span>
#include <stdexcept>

#include "converter/numbers/VectorReader.h"
#include "lint/PlainScan.h"
#include "lint/ScalarCheck.h"
#include "lint/TextForm.h"

namespace lint {

namespace {

/// What the converter makes of a text.
struct Values {
    long count = 0;
    bool areUsual = true;
    bool haveZero = false;

    explicit Values(std::string_view text) {
        VectorReader reader(text);
        VectorReader::Batch batch;
        while (const std::size_t got = reader.read(batch)) {
            count += static_cast<long>(got);
            const std::span<const double> values(batch.data(), got);
            areUsual = areUsual && std::ranges::all_of(values, isUsual);
            haveZero = haveZero || std::ranges::find(values, 0.0) != values.end();
        }
    }
};

/// Gives what the converter makes of a text, value by value.
class ValueReader {
  public:
    explicit ValueReader(std::string_view text) : reader_(text) {}

    /// The next value; none at the end.
    std::optional<double> next() {
        if (at_ == got_) {
            got_ = reader_.read(batch_);
            at_ = 0;
        }
        return at_ == got_ ? std::nullopt : std::optional(batch_[at_++]);
    }

  private:
    VectorReader reader_;
    VectorReader::Batch batch_;
    std::size_t at_ = 0;
    std::size_t got_ = 0;
};

/// Whether a text is ASCII that stands for itself in any XML.
bool isSimpleText(std::string_view text) {
    return std::ranges::all_of(
        text, [](char c) { return c >= ' ' && c <= '~' && c != '<' && c != '&' && c != '>'; });
}

}  // namespace

long VectorCheck::check(const MarkupDocument& document, int elem, const std::string& name) {
    elem_ = elem;
    name_ = name;
    const SourceText source = SourceText::ofElement(document, elem);
    const std::string_view text = source.text();
    const Values values(text);
    const bool isAsWritten =
        !source.differsFromXml() && (text.data() == source.raw().data() || text.empty());
    // A small number may have become 0, but only one with an exponent.
    const bool mayBeLost =
        values.haveZero && std::ranges::any_of(text, [](char c) { return c == 'e' || c == 'E'; });
    const bool isPlain = isAsWritten && !source.hasChildren() && values.areUsual && !mayBeLost &&
                         isPlainVector(text);
    const bool holdsNoMarkup = isPlain || (isAsWritten && isSimpleText(text));
    markupFree_ = holdsNoMarkup ? Range{source.rawOffset(), text.size()} : Range{};
    if (!isPlain) {
        checkText(teller_, source, elem_, name_);
        checkPieces(source);
    }
    return values.count;
}

/// Looks at each piece with the value that the converter makes of it.
void VectorCheck::checkPieces(const SourceText& source) {
    const std::string_view text = source.text();
    ValueReader values(text);
    std::optional<double> value = values.next();
    long number = 0;
    std::size_t start = 0;
    for (; start < text.size() && value; value = values.next()) {
        const std::size_t end = std::min(text.find(' ', start), text.size());
        checkPiece(source, start, end, ++number, *value);
        start = end + 1;
        if (start == text.size() && end < text.size() && end > 0 && text[end - 1] != ' ') {
            teller_.tell("EQ705", Severity::note, {source.offsetOf(end), 1}, elem_,
                         "a space behind the last value of " + name_ + " adds nothing");
        }
    }
    if (value || start < text.size()) {
        throw std::logic_error("internal: the pieces of a vector are not its values");
    }
}

void VectorCheck::checkPiece(const SourceText& source, std::size_t start, std::size_t end,
                             long number, double value) {
    const std::string_view piece = source.text().substr(start, end - start);
    const bool isPlainPiece = isPlainNumber(piece);
    if (isPlainPiece && isUsual(value) && (value != 0 || isWrittenAsZero(piece))) {
        return;
    }
    const bool isForm = numberForm(piece) == Form::loose &&
                        piece.find_first_of(" \t\n\v\f\r") == std::string_view::npos;
    const bool isMeant = isPlainPiece || isForm;
    const std::string_view rule = piece.empty() ? "EQ701" : isMeant ? "EQ704" : "EQ702";
    if (teller_.isOnlyCounted(rule)) {
        return;
    }
    const std::size_t offset = source.offsetOf(start);
    const std::string what = "value " + std::to_string(number) + " of " + name_;
    if (piece.empty()) {
        teller_.tell(rule, Severity::warning, {offset, 1}, elem_,
                     "a further space makes " + what + " 0", "0");
        return;
    }
    const Range range{offset, source.offsetOf(end - 1) + 1 - offset};
    const std::string read = shortest(value);
    const std::string effect = isPlainPiece ? " is out of the usual range: " : " is read as ";
    teller_.tell(rule, isMeant ? Severity::note : Severity::warning, range, elem_,
                 inQuotes(piece) + effect + read + ", " + what, read);
}

}  // namespace lint
