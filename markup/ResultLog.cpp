#include "markup/ResultLog.h"

#include <array>
#include <string_view>

#include "markup/Markup.h"
#include "markup/text/TextEscape.h"

namespace {

/// How a result reads for people. "{name}" stands for the attribute of that name, "{name }" for
/// the attribute and a space, or nothing when it is empty.
struct ResultMessage {
    std::string_view name;
    bool isParseError;
    std::string_view message;
};

constexpr std::array<ResultMessage, 21> resultMessages{{
    {"root_has_sibling", true, "root element has sibling"},
    {"no_root_element", true, "no root element"},
    {"lone_end_tag", true, "lone end tag '{tagname}' at offset {offset}"},
    {"unended_start_tag", true,
     "start tag '{tagname}' at offset {offset} expecting end tag at offset {offset2}"},
    {"first_tag_syntax", true, "tag syntax error at offset {offset} expecting tag name / ! or ?"},
    {"exclamation_tag_syntax", true,
     "tag syntax error at offset {offset} expecting 'DOCTYPE' [ or -"},
    {"doctype_tag_syntax", true,
     "tag syntax error at offset {offset} expecting markup declaration"},
    {"comment_tag_syntax", true,
     "tag syntax error at offset {offset} expecting - to begin comment"},
    {"cdata_section_syntax", true, "tag syntax error at offset {offset} expecting 'CDATA'"},
    {"unterminated_tag_syntax", true, "unterminated tag at offset {offset}"},
    {"file_error", false, "{msg}"},
    {"bom", false, "BOM +"},
    {"read", false, "{encoding }length {length}"},
    {"write", false, "{encoding }length {length}"},
    {"converted_to", false, "to {encoding }length {length}"},
    {"converted_from", false, "{encoding }length {length} to"},
    {"nulls_removed", false, "removed {count} nulls"},
    {"conversion_loss", false, "(chars lost in conversion!)"},
    {"utf8_detection", false, "(used UTF-8 detection)"},
    {"endian_swap", false, "endian swap"},
    {"truncation_error", false, "encoding {encoding} adjustment error"},
}};

const ResultMessage* findMessage(std::string_view name) {
    for (const ResultMessage& row : resultMessages) {
        if (row.name == name) {
            return &row;
        }
    }
    return nullptr;
}

/// Fills the placeholders of a message with the attributes of the current record of `log`.
std::string fillMessage(std::string_view message, const MarkupDocument& log) {
    std::string filled;
    while (!message.empty()) {
        const std::size_t open = message.find('{');
        filled += message.substr(0, open);
        if (open == std::string_view::npos) {
            break;
        }
        const std::size_t close = message.find('}', open);
        std::string_view placeholder = message.substr(open + 1, close - open - 1);
        const bool spaced = placeholder.ends_with(' ');
        placeholder.remove_suffix(spaced ? 1 : 0);
        const std::string value = log.GetAttrib(placeholder);
        filled += value;
        if (spaced && !value.empty()) {
            filled += ' ';
        }
        message.remove_prefix(close + 1);
    }
    return filled;
}

/// The attributes of one record, in the order in which they are written.
class Attributes {
  public:
    Attributes(TextArg value, int resultCode, int number, int number2) {
        if (!value.isNull()) {
            add(valueName(resultCode), EscapeText(value, EscapeFlagQuotes));
        }
        const std::string_view name = numberName(resultCode);
        if (name != "offset" || number != -1) {
            add(name, std::to_string(number));
        }
        if (number2 != -1) {
            add("offset2", std::to_string(number2));
        }
    }

    struct Attribute {
        std::string_view name;
        std::string value;
    };
    const Attribute* begin() const { return attributes_.data(); }
    const Attribute* end() const { return attributes_.data() + count_; }

  private:
    static std::string_view valueName(int code) {
        return (code & RESULT_TYPE) != 0       ? "type"
               : (code & RESULT_ENCODING) != 0 ? "encoding"
               : (code & RESULT_MSG) != 0      ? "msg"
                                               : "tagname";
    }
    static std::string_view numberName(int code) {
        return (code & RESULT_NUMBER) != 0   ? "n"
               : (code & RESULT_COUNT) != 0  ? "count"
               : (code & RESULT_LENGTH) != 0 ? "length"
                                             : "offset";
    }
    void add(std::string_view name, std::string value) {
        attributes_[count_++] = {name, std::move(value)};
    }

    std::array<Attribute, 3> attributes_;
    std::size_t count_ = 0;
};

std::string writeAttribute(const Attributes::Attribute& attribute) {
    std::string text(1, ' ');
    text.append(attribute.name).append("=\"").append(attribute.value).append("\"");
    return text;
}

/// Sets an attribute of the record whose "<" is at `start`: in place when the record has it, else
/// behind the others.
void setAttribute(std::string& log, int start, const Attributes::Attribute& attribute) {
    NodePos record;
    TokenPos(log, 0, start).ParseNode(record);
    const auto end = static_cast<std::size_t>(start) + static_cast<std::size_t>(record.length);
    TokenPos token(std::string_view(log).substr(0, end), 0, start + 1);
    if (token.FindAttrib(attribute.name)) {
        log.replace(static_cast<std::size_t>(token.left), token.token().size(), attribute.value);
    } else {
        log.insert(end - (record.flags == NodeFlagEmpty ? 2 : 1), writeAttribute(attribute));
    }
}

void amendRecord(std::string& log, TextArg name, const Attributes& attributes) {
    MarkupDocument document;
    document.SetDoc(log);
    if (document.FindElem(name)) {
        const int start = document.record(document.position().main).start;
        for (const Attributes::Attribute& attribute : attributes) {
            setAttribute(log, start, attribute);
        }
    }
}

}  // namespace

void x_AddResult(std::string& log, TextArg name, TextArg value, int resultCode, int number,
                 int number2) {
    if (log.size() >= resultLogLimit) {
        return;
    }
    const Attributes attributes(value, resultCode, number, number2);
    if ((resultCode & RESULT_MODIFY) != 0) {
        amendRecord(log, name, attributes);
        return;
    }
    // Added as a whole: half a record, left where memory runs out, would swallow the next one.
    std::string record("<");
    record.append(name.view());
    for (const Attributes::Attribute& attribute : attributes) {
        record += writeAttribute(attribute);
    }
    log += record.append("/>");
}

std::string markup::renderResults(const std::string& log) {
    MarkupDocument document;
    document.SetDoc(log);
    std::string line;
    int parseErrors = 0;
    while (document.FindElem()) {
        const ResultMessage* const row = findMessage(document.GetTagName());
        const std::string message = row == nullptr ? "" : fillMessage(row->message, document);
        if (message.empty() || (row->isParseError && ++parseErrors > 1)) {
            continue;
        }
        if (!line.empty()) {
            line += ' ';
        }
        line += message;
    }
    return line;
}
