// A log is short and hardly ever amended, so it is kept as nothing but its text: a new record is
// appended, and one to be amended or read is found by walking the text with the tokenizer.

#include "markup/ResultLog.h"

#include <new>

#include "markup/OpenTagStack.h"
#include "markup/TokenPos.h"
#include "markup/text/TextEscape.h"

namespace {

/// The attribute of the value text; where several bits are set, the first in this order counts.
std::string_view valueName(int code) {
    return (code & RESULT_TYPE) != 0       ? "type"
           : (code & RESULT_ENCODING) != 0 ? "encoding"
           : (code & RESULT_MSG) != 0      ? "msg"
                                           : "tagname";
}

/// The same for the number.
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
    // That only "offset" is left out for -1 is required.
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
    for (const int start : markup::findResults(log)) {
        if (markup::resultName(log, start) == result.name) {
            forEachAttribute(result, [&](std::string_view name, const std::string& value) {
                setAttribute(log, start, name, value);
            });
            return;
        }
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

void markup::addOutOfMemory(std::string& log) noexcept {
    try {
        log.reserve(log.size() + outOfMemoryResult.size());
    } catch (const std::bad_alloc&) {
        log.clear();
    }
    if (log.capacity() - log.size() >= outOfMemoryResult.size()) {
        log += outOfMemoryResult;
    }
}

std::vector<int> markup::findResults(std::string_view log) {
    std::vector<int> starts;
    OpenTagStack tags(false);
    TokenPos token(log);
    NodePos node;
    while (token.ParseNode(node) != NodeEndOfText) {
        if (node.type == NodeElement) {
            starts.push_back(node.start);
            if (node.flags != NodeFlagEmpty) {
                tags.push(static_cast<int>(starts.size()), token.token());
            }
        }
        const int depth = node.type == NodeEndTag ? tags.findMatch(token.token()) : 0;
        if (depth != 0) {
            // What has begun since lies in the element that ends here.
            starts.resize(static_cast<std::size_t>(tags.at(depth).elem));
        }
        while (depth != 0 && tags.depth() >= depth) {
            tags.pop();
        }
    }
    return starts;
}

std::string_view markup::resultName(std::string_view log, int start) {
    TokenPos token(log, 0, start + 1);
    token.FindName();
    return token.token();
}

std::string markup::resultAttribute(std::string_view log, int start, TextArg name) {
    std::string value;
    TokenPos token(log, 0, start + 1);
    if (token.FindAttrib(name)) {
        appendUnescaped(value, token.token(), 0);
    }
    return value;
}
