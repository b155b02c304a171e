#include "markup/ResultMessages.h"

#include <array>

#include "markup/ResultLog.h"

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

/// Fills the placeholders of a message with the attributes of the record that begins at `start`.
std::string fillMessage(std::string_view message, std::string_view log, int start) {
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
        const std::string value = markup::resultAttribute(log, start, placeholder);
        filled += value;
        if (spaced && !value.empty()) {
            filled += ' ';
        }
        message.remove_prefix(close + 1);
    }
    return filled;
}

}  // namespace

std::string markup::renderResults(std::string_view log) {
    std::string line;
    int parseErrors = 0;
    for (const int start : findResults(log)) {
        const ResultMessage* const row = findMessage(resultName(log, start));
        const std::string message = row == nullptr ? "" : fillMessage(row->message, log, start);
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
