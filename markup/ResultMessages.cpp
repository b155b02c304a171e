// All messages stand in one table. The parts are written so that the joined line reads as a
// sentence: "BOM + UTF-8 length 9 to ISO-8859-1 length 8".

#include "markup/ResultMessages.h"

#include <algorithm>
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

/// Fills the placeholders of a message with the attributes of the record that begins at `start`.
std::string fillMessage(std::string_view message, std::string_view log, int start) {
    std::string filled;
    std::size_t open = 0;
    while ((open = message.find('{')) != std::string_view::npos) {
        filled += message.substr(0, open);
        const std::size_t close = message.find('}', open);
        const std::string_view placeholder = message.substr(open + 1, close - open - 1);
        const std::string_view name = placeholder.substr(0, placeholder.find(' '));
        const std::string value = markup::resultAttribute(log, start, name);
        filled += value;
        filled += value.empty() ? "" : placeholder.substr(name.size());
        message.remove_prefix(close + 1);
    }
    return filled.append(message);
}

}  // namespace

std::string markup::renderResults(std::string_view log) {
    std::string line;
    bool hasParseError = false;
    for (const int start : findResults(log)) {
        const std::string_view name = resultName(log, start);
        const ResultMessage* const row =
            std::find_if(resultMessages.begin(), resultMessages.end(),
                         [name](const ResultMessage& other) { return other.name == name; });
        if (row == resultMessages.end() || (row->isParseError && hasParseError)) {
            continue;
        }
        hasParseError = hasParseError || row->isParseError;
        const std::string message = fillMessage(row->message, log, start);
        line.append(line.empty() || message.empty() ? "" : " ").append(message);
    }
    return line;
}
