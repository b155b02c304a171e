// The library takes the text apart and calls for each of its parts. Where an array of numbers
// begins they are read past the library, which then finds only the bracket that ends it: when it
// calls for the beginning of an array it has looked at nothing behind that.
//
// The parts that are open are kept with the way to what is being read, so that whoever refuses a
// value need not know where it stands.

#include "tools/eqrecord/RecordJson.h"

#include <algorithm>
#include <nlohmann/json.hpp>

#include "lint/Teller.h"
#include "tools/eqrecord/JsonValue.h"
#include "tools/eqrecord/RealArray.h"
#include "tools/eqrecord/RecordFields.h"

namespace eqrecord {

namespace {

class RecordJson : public nlohmann::json_sax<nlohmann::json> {
  public:
    RecordJson(JsonInput& input, RecordBuilder& builder) : input_(input), builder_(builder) {}

    /// The JSON pointer of what is being read.
    std::string pointer() const;

    bool null() override { return take(nullptr); }
    bool boolean(bool value) override { return take(value); }
    bool number_integer(number_integer_t value) override { return take(std::int64_t{value}); }
    bool number_unsigned(number_unsigned_t value) override { return take(std::uint64_t{value}); }
    bool number_float(number_float_t value, const string_t& text) override;
    bool string(string_t& value) override { return take(std::move(value)); }
    bool binary(binary_t&) override { return false; }  // not in JSON
    bool start_object(std::size_t) override;
    bool key(string_t& key) override;
    bool end_object() override;
    bool start_array(std::size_t) override;
    bool end_array() override;
    bool parse_error(std::size_t, const std::string&,
                     const nlohmann::detail::exception& error) override;

  private:
    /// A part that has begun and not ended.
    struct Open {
        Part part;
        const RecordField* field = nullptr;  ///< of an object: the one whose value comes
        std::string step{};                  ///< '/' and its key, or the place in an array
        std::size_t items = 0;               ///< of an array
        std::uint32_t seen = 0;              ///< of an object: fields, by their place in the table
    };

    bool take(const JsonValue& value);
    bool begin(Part part);
    void beginValue();
    void checkFields();
    void endPart();
    void readVector(int kind);

    JsonInput& input_;
    RecordBuilder& builder_;
    std::vector<Open> open_;
    std::string bytes_;  ///< of a text that is given by them
};

std::string RecordJson::pointer() const {
    std::string text;
    for (const Open& open : open_) {
        text += open.step;
    }
    return text;
}

/// All of these return true, which lets the library go on.
bool RecordJson::begin(Part part) {
    open_.push_back({part});
    return true;
}

/// A value comes, which is the next item if that is in an array. Only objects are in none.
void RecordJson::beginValue() {
    if (!open_.empty() && open_.back().field == nullptr) {
        open_.back().step = '/' + std::to_string(open_.back().items++);
    }
}

/// Takes a value that has no parts.
bool RecordJson::take(const JsonValue& value) {
    beginValue();
    if (open_.empty()) {
        throw Refusal("must be an object");
    }
    const Open& open = open_.back();
    if (open.part == Part::bytes) {
        bytes_ = bytesOf(textOf(value));
    } else if (open.part == Part::kind) {
        if (!std::holds_alternative<std::nullptr_t>(value)) {
            throw Refusal("must be a list of numbers, or null");
        }
        builder_.addFill(open_[open_.size() - 2].field->kind);
    } else if (open.field == nullptr) {
        throw Refusal("must be an object");
    } else if (open.field->set == nullptr) {
        throw Refusal("must be a list");
    } else {
        open.field->set(builder_, value);
    }
    return true;
}

/// The library takes what is too small for a double for 0.
bool RecordJson::number_float(number_float_t value, const string_t& text) {
    const std::string_view digits = std::string_view(text).substr(0, text.find_first_of("eE"));
    if (value == 0 && digits.find_first_not_of("-0.") != std::string_view::npos) {
        beginValue();
        throw outOfRange();
    }
    return take(value);
}

bool RecordJson::start_object(std::size_t) {
    beginValue();
    if (open_.empty()) {
        return begin(Part::record);
    }
    const Open& open = open_.back();
    if (open.part == Part::files) {
        builder_.beginFile();
        return begin(Part::file);
    }
    if (open.part == Part::configurations) {
        builder_.beginConfiguration();
        return begin(Part::configuration);
    }
    if (open.field == nullptr || open.field->set == nullptr || open.part == Part::bytes) {
        throw Refusal("must not be an object");
    }
    return begin(Part::bytes);
}

bool RecordJson::key(string_t& key) {
    Open& open = open_.back();
    open.step = '/' + lint::shortened(key);
    const auto fields = fieldsOf(open.part);
    const auto field = std::ranges::find(fields, key, &RecordField::key);
    if (field == fields.end()) {
        throw Refusal("is unknown here");
    }
    if (field->isOfPart) {
        throw Refusal("says that this is a part of a record, and only a whole one can be made");
    }
    const std::uint32_t bit = 1U << (field - fields.begin());
    if ((open.seen & bit) != 0) {
        throw Refusal("is there twice");
    }
    open.seen |= bit;
    open.field = &*field;
    return true;
}

bool RecordJson::end_object() {
    open_.back().step.clear();
    checkFields();
    endPart();
    const Part part = open_.back().part;
    open_.pop_back();
    // What the object stood for is the value of the field before it.
    if (part == Part::bytes) {
        take(std::move(bytes_));
    }
    return true;
}

/// Refuses an object that lacks a field.
void RecordJson::checkFields() {
    const Open& open = open_.back();
    const auto fields = fieldsOf(open.part);
    for (std::size_t i = 0; i < fields.size(); ++i) {
        if (!fields[i].isOptional && (open.seen >> i & 1) == 0) {
            throw Refusal(std::string(fields[i].key), "is missing");
        }
    }
}

/// Tells the builder that all of a part is there, which may refuse it.
void RecordJson::endPart() {
    switch (open_.back().part) {
        case Part::record:
            builder_.end();
            break;
        case Part::file:
            builder_.endFile();
            break;
        case Part::configuration:
            builder_.endConfiguration();
            break;
        case Part::kind:
            builder_.endKind(open_[open_.size() - 2].field->kind);
            break;
        default:
            break;
    }
}

bool RecordJson::start_array(std::size_t) {
    beginValue();
    if (open_.empty()) {
        throw Refusal("must be an object");
    }
    const Open& open = open_.back();
    if (open.part == Part::kind) {
        readVector(open_[open_.size() - 2].field->kind);
        return true;
    }
    if (open.field == nullptr || open.field->set != nullptr) {
        throw Refusal("must not be a list");
    }
    return begin(open.field->array);
}

/// Takes the numbers from the input; the library comes back with the end of the array.
void RecordJson::readVector(int kind) {
    std::vector<double>& values = builder_.addVector(kind);
    begin(Part::vector);
    readRealArray(input_, RecordBuilder::mostPixels, values);
}

bool RecordJson::end_array() {
    open_.back().step.clear();
    endPart();
    open_.pop_back();
    return true;
}

/// Tells where, as the library has not seen all of the text, and what, as it does.
bool RecordJson::parse_error(std::size_t, const std::string&,
                             const nlohmann::detail::exception& error) {
    if (dynamic_cast<const nlohmann::json::out_of_range*>(&error) != nullptr) {
        beginValue();
        throw outOfRange();
    }
    std::string_view message = error.what();
    for (const std::string_view start : {"] ", "column ", ": "}) {
        const std::size_t at = message.find(start);
        message.remove_prefix(at == std::string_view::npos ? 0 : at + start.size());
    }
    // What the library has last read may be much.
    message = message.substr(0, message.find("; last read"));
    throw std::runtime_error(input_.place() + ": " + std::string(message));
}

}  // namespace

void readRecordJson(JsonInput& input, RecordBuilder& builder) {
    RecordJson json(input, builder);
    try {
        nlohmann::json::sax_parse(input.begin(), JsonInput::end(), &json);
    } catch (const Refusal& refusal) {
        std::string where = json.pointer();
        where += refusal.below().empty() ? "" : '/' + refusal.below();
        throw std::runtime_error(where + (where.empty() ? "" : ": ") + refusal.what());
    }
}

}  // namespace eqrecord
