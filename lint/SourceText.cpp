// Nearly all texts stand in the document as they are read. Those with references, sections or
// comments are put together here as the document does it, piece by piece, so that it is known where
// each byte comes from; what XML would make of them is put together beside it.

#include "lint/SourceText.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <utility>

#include "markup/TokenPos.h"
#include "markup/text/TextEscape.h"

namespace lint {

namespace {

constexpr std::string_view sectionStart = "<![CDATA[";
constexpr std::string_view sectionEnd = "]]>";

/// What XML makes of a reference, without its "&" and ";"; "" when it knows none such.
std::string meaningOf(std::string_view reference) {
    constexpr std::array<std::pair<std::string_view, char>, 5> predefined{
        {{"lt", '<'}, {"gt", '>'}, {"amp", '&'}, {"quot", '"'}, {"apos", '\''}}};
    for (const auto& [name, character] : predefined) {
        if (reference == name) {
            return {character};
        }
    }
    if (!reference.starts_with('#')) {
        return {};
    }
    const bool isHex = reference.starts_with("#x");
    const std::string_view digits = reference.substr(isHex ? 2 : 1);
    unsigned code = 0;
    const auto [end, error] =
        std::from_chars(digits.data(), digits.data() + digits.size(), code, isHex ? 16 : 10);
    if (error != std::errc() || end != digits.data() + digits.size() || code > 0x10FFFF) {
        return {};
    }
    std::array<char, 8> bytes{};
    int length = 0;
    EncodeCharUTF8(static_cast<int>(code), bytes.data(), length);
    return {bytes.data(), static_cast<std::size_t>(length)};
}

/// What XML makes of a text that may hold references; one that it does not know stays.
std::string xmlText(std::string_view text) {
    std::string result;
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t end = text[at] == '&' ? text.find(';', at) : std::string_view::npos;
        const std::string meaning = end == std::string_view::npos
                                        ? std::string()
                                        : meaningOf(text.substr(at + 1, end - at - 1));
        result += meaning.empty() ? std::string(1, text[at]) : meaning;
        at = meaning.empty() ? at + 1 : end + 1;
    }
    return result;
}

bool isWhiteSpace(std::string_view text) {
    return text.find_first_not_of(" \t\r\n") == std::string_view::npos;
}

/// Whether XML declares the "&name;" references in a text by itself.
bool hasForeignReference(std::string_view text) {
    for (std::size_t at = text.find('&'); at != std::string_view::npos;
         at = text.find('&', at + 1)) {
        const std::size_t end = text.find(';', at);
        if (end == std::string_view::npos || meaningOf(text.substr(at + 1, end - at - 1)).empty()) {
            return true;
        }
    }
    return false;
}

}  // namespace

SourceText SourceText::ofElement(const MarkupDocument& document, int elem) {
    SourceText source;
    const ElemPos& record = document.record(elem);
    const int tag = document.startTagLength(elem);
    source.isThere_ = true;
    source.hasChildren_ = record.child != 0;
    source.rawOffset_ = static_cast<std::size_t>(record.start) + static_cast<std::size_t>(tag);
    const bool hasContent = record.length > tag && !source.hasChildren_;
    const int length = hasContent ? record.length - tag - record.endTagLength() : 0;
    source.raw_ =
        document.GetDoc().substr(source.rawOffset_, static_cast<std::size_t>(std::max(length, 0)));
    const bool isAsWritten = source.raw_.find('<') == std::string_view::npos &&
                             source.raw_.find('&') == std::string_view::npos;
    if (!isAsWritten) {
        source.isDirect_ = false;
        source.addNodes();
    }
    return source;
}

SourceText SourceText::ofAttribute(const MarkupDocument& document, int elem,
                                   std::string_view name) {
    SourceText source;
    source.isAttribute_ = true;
    TokenPos token(document.GetDoc(), document.GetDocFlags(), document.record(elem).start + 1);
    if (!token.FindAttrib(name)) {
        return source;
    }
    source.isThere_ = true;
    source.raw_ = token.token();
    source.rawOffset_ = static_cast<std::size_t>(token.left);
    source.differsFromXml_ = source.raw_.find_first_of("\t\r\n") != std::string_view::npos;
    if (source.raw_.find('&') != std::string_view::npos) {
        source.isDirect_ = false;
        source.addEscaped(source.raw_, source.rawOffset_);
    }
    return source;
}

/// Adds what a piece of the document stands for, a reference and what follows it at a time.
void SourceText::addEscaped(std::string_view piece, std::size_t offset) {
    const std::size_t before = storage_.size();
    for (std::size_t at = 0; at < piece.size();) {
        const std::size_t end = std::min(piece.find('&', at + 1), piece.size());
        const std::string_view part = piece.substr(at, end - at);
        const std::size_t start = storage_.size();
        markup::appendUnescaped(storage_, part, 0);
        const std::size_t mark = part.find(';');
        const bool isReference = std::string_view(storage_).substr(start) != part;
        const std::size_t literal = isReference ? part.size() - mark - 1 : part.size();
        if (isReference) {
            segments_.push_back({start, offset + at, offset + at});
        }
        segments_.push_back({storage_.size() - literal, offset + end - literal, offset + end});
        at = end;
    }
    if (piece.find('&') != std::string_view::npos) {
        hasReferences_ = true;
        differsFromXml_ |= hasForeignReference(piece) ||
                           xmlText(piece) != std::string_view(storage_).substr(before);
    }
}

void SourceText::addLiteral(std::string_view piece, std::size_t offset) {
    segments_.push_back({storage_.size(), offset, offset + piece.size()});
    storage_ += piece;
}

/// Adds the nodes of a content as the document does.
void SourceText::addNodes() {
    if (raw_.find('<') == std::string_view::npos) {
        addEscaped(raw_, rawOffset_);
        return;
    }
    TokenPos token(raw_);
    NodePos node;
    while (token.ParseNode(node) != NodeEndOfText) {
        const auto start = static_cast<std::size_t>(node.start);
        const std::string_view piece = raw_.substr(start, static_cast<std::size_t>(node.length));
        const std::size_t offset = rawOffset_ + start;
        if (node.type == NodeText) {
            addEscaped(piece, offset);
        } else if (node.type == NodeCDataSection) {
            hasReferences_ = true;
            const std::size_t marks = sectionStart.size() + sectionEnd.size();
            if (piece.size() > marks) {
                addLiteral(piece.substr(sectionStart.size(), piece.size() - marks),
                           offset + sectionStart.size());
            }
        } else if (node.type == NodeWhitespace && isWhiteSpace(piece) && !piece.empty()) {
            differsFromXml_ = true;
        }
    }
}

std::size_t SourceText::offsetOf(std::size_t index) const {
    if (segments_.empty()) {
        return rawOffset_ + std::min(index, raw_.size());
    }
    auto segment = std::upper_bound(
        segments_.begin(), segments_.end(), index,
        [](std::size_t value, const Segment& other) { return value < other.textStart; });
    --segment;
    const bool isLast = segment + 1 == segments_.end();
    const std::size_t textEnd = isLast ? storage_.size() : (segment + 1)->textStart;
    const std::size_t behind = textEnd - std::min(index, textEnd);
    // Of a reference the place is its start, wherever in its text.
    return segment->rawEnd - std::min(behind, segment->rawEnd - segment->rawStart);
}

}  // namespace lint
