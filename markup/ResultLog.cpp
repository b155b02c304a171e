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
    {ResultRootHasSibling, true, "root element has sibling"},
    {ResultNoRootElement, true, "no root element"},
    {ResultLoneEndTag, true, "lone end tag '{tagname}' at offset {offset}"},
    {ResultUnendedStartTag, true,
     "start tag '{tagname}' at offset {offset} expecting end tag at offset {offset2}"},
    {ResultFirstTagSyntax, true, "tag syntax error at offset {offset} expecting tag name / ! or ?"},
    {ResultExclamationTagSyntax, true,
     "tag syntax error at offset {offset} expecting 'DOCTYPE' [ or -"},
    {ResultDoctypeTagSyntax, true,
     "tag syntax error at offset {offset} expecting markup declaration"},
    {ResultCommentTagSyntax, true,
     "tag syntax error at offset {offset} expecting - to begin comment"},
    {ResultCDataSectionSyntax, true, "tag syntax error at offset {offset} expecting 'CDATA'"},
    {ResultUnterminatedTagSyntax, true, "unterminated tag at offset {offset}"},
    {ResultFileError, false, "{msg}"},
    {ResultBom, false, "BOM +"},
    {ResultRead, false, "{encoding }length {length}"},
    {ResultWrite, false, "{encoding }length {length}"},
    {ResultConvertedTo, false, "to {encoding }length {length}"},
    {ResultConvertedFrom, false, "{encoding }length {length} to"},
    {ResultNullsRemoved, false, "removed {count} nulls"},
    {ResultConversionLoss, false, "(chars lost in conversion!)"},
    {ResultUtf8Detection, false, "(used UTF-8 detection)"},
    {ResultEndianSwap, false, "endian swap"},
    {ResultTruncationError, false, "encoding {encoding} adjustment error"},
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

std::string_view valueName(int code) {
    return (code & RESULT_TYPE) != 0       ? "type"
           : (code & RESULT_ENCODING) != 0 ? "encoding"
           : (code & RESULT_MSG) != 0      ? "msg"
                                           : "tagname";
}

std::string_view numberName(int code) {
    return (code & RESULT_NUMBER) != 0   ? "n"
           : (code & RESULT_COUNT) != 0  ? "count"
           : (code & RESULT_LENGTH) != 0 ? "length"
                                         : "offset";
}

/// Calls `set(name, value)` for each attribute of a result, in the order in which they are written.
template <class Set>
void forEachAttribute(const Result& result, Set set) {
    if (!result.value.isNull()) {
        set(valueName(result.code), EscapeText(result.value, EscapeFlagQuotes));
    }
    const std::string_view number = numberName(result.code);
    if (number != "offset" || result.number != -1) {
        set(number, std::to_string(result.number));
    }
    if (result.number2 != -1) {
        set("offset2", std::to_string(result.number2));
    }
}

std::string writeAttribute(std::string_view name, const std::string& value) {
    return std::string(" ").append(name).append("=\"").append(value).append("\"");
}

/// Sets an attribute of the record whose "<" is at `start`: in place when the record has it, else
/// behind the others.
void setAttribute(std::string& log, int start, std::string_view name, const std::string& value) {
    NodePos record;
    TokenPos(log, 0, start).ParseNode(record);
    const auto end = static_cast<std::size_t>(start) + static_cast<std::size_t>(record.length);
    TokenPos token(std::string_view(log).substr(0, end), 0, start + 1);
    if (token.FindAttrib(name)) {
        log.replace(static_cast<std::size_t>(token.left), token.token().size(), value);
    } else {
        log.insert(end - (record.flags == NodeFlagEmpty ? 2 : 1), writeAttribute(name, value));
    }
}

void amendRecord(std::string& log, const Result& result) {
    MarkupDocument document;
    document.SetDoc(log);
    if (document.FindElem(result.name)) {
        const int start = document.record(document.position().main).start;
        forEachAttribute(result, [&](std::string_view name, const std::string& value) {
            setAttribute(log, start, name, value);
        });
    }
}

}  // namespace

void x_AddResult(std::string& log, const Result& result) {
    if (log.size() >= resultLogLimit) {
        return;
    }
    if ((result.code & RESULT_MODIFY) != 0) {
        amendRecord(log, result);
        return;
    }
    // Added as a whole: half a record, left where memory runs out, would swallow the next one.
    std::string record("<");
    record.append(result.name);
    forEachAttribute(result, [&](std::string_view name, const std::string& value) {
        record += writeAttribute(name, value);
    });
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
