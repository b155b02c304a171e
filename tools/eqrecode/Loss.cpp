// The document layer replaces what it can't convert, leaves zeros out and cuts characters short, as
// it has to, and tells little of it; some of the system's converters don't even give back what they
// have written. So nothing is believed: a text that was read has to give the same bytes again, and
// to be what the system alone makes of them; one that is to be written has to be what the system
// alone makes of the new bytes, and what the document layer reads from them.
//
// Of what is found wrong the first is told that explains the others: UTF-16 without a mark, say, is
// also a text full of zeros, and often none of UTF-8.

#include "tools/eqrecode/Loss.h"

#include <algorithm>
#include <cstdio>
#include <stdexcept>

#include "markup/Markup.h"
#include "markup/ResultMessages.h"
#include "tools/eqrecode/Codec.h"
#include "tools/eqrecode/MemoryFile.h"

namespace eqrecode {

namespace {

bool isContinuation(char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U;
}

/// Where two texts begin to differ, at the start of a character of `text`; nothing when they don't.
std::optional<std::size_t> firstDifference(std::string_view text, std::string_view other) {
    if (text == other) {
        return std::nullopt;
    }
    auto at = static_cast<std::size_t>(std::ranges::mismatch(text, other).in1 - text.begin());
    while (at > 0 && at < text.size() && isContinuation(text[at])) {
        --at;
    }
    return at;
}

/// The first character above U+10FFFF, which are none, though the system takes them for some.
std::optional<std::size_t> firstBeyondUnicode(std::string_view text) {
    const auto isBeyond = [](unsigned char lead, unsigned char next) {
        return lead > 0xF4 || (lead == 0xF4 && next >= 0x90);
    };
    const auto found = std::ranges::adjacent_find(text, isBeyond);
    return found == text.end() ? std::nullopt : std::optional<std::size_t>(found - text.begin());
}

/// Lines end at a line feed, columns count characters from 1.
std::string placeOf(std::string_view text, std::size_t offset) {
    const std::string_view before = text.substr(0, offset);
    const auto lines = std::ranges::count(before, '\n');
    const std::string_view line = before.substr(before.rfind('\n') + 1);
    const auto columns =
        line.size() - static_cast<std::size_t>(std::ranges::count_if(line, isContinuation));
    return ':' + std::to_string(lines + 1) + ':' + std::to_string(columns + 1);
}

/// The character at an offset as "U+20AC".
std::string characterAt(std::string_view text, std::size_t offset) {
    if (offset >= text.size()) {
        return "the end";
    }
    const char* cursor = text.data() + offset;
    char name[16];
    std::snprintf(
        name, sizeof name, "U+%04X",
        static_cast<unsigned>(MarkupDocument::DecodeCharUTF8(cursor, text.data() + text.size())));
    return name;
}

/// The byte at an offset as "0x98 at offset 57".
std::string byteAt(std::string_view bytes, std::size_t offset) {
    char name[48];
    if (offset < bytes.size()) {
        std::snprintf(name, sizeof name, "0x%02x at offset %zu",
                      static_cast<unsigned>(static_cast<unsigned char>(bytes[offset])), offset);
    } else {
        std::snprintf(name, sizeof name, "the end at offset %zu", offset);
    }
    return name;
}

std::string readBack(std::string_view bytes) {
    const MemoryFile file(bytes);
    std::string text;
    std::string results;
    if (!MarkupDocument::ReadTextFile(file.path(), text, &results)) {
        throw std::runtime_error("can't be read back: " + markup::renderResults(results));
    }
    return text;
}

/// Whether a file is in another encoding than the document layer has found, or may be.
std::optional<Loss> wrongForm(std::string_view bytes, const Form& form, std::string_view text) {
    const std::string declared = form.mark == 0 ? declaredEncoding(bytes) : "";
    if (!declared.empty() && MarkupDocument::GetDeclaredEncoding(text) != declared) {
        return Loss{"", "declares the encoding " + declared + ", and is not in it"};
    }
    // XML has neither a shift nor an escape; encodings with several sets of characters do.
    const std::size_t shift = text.find_first_of("\x0E\x0F\x1B");
    const bool hasTags = text.empty() || text.find('<') != std::string_view::npos;
    if (shift != std::string_view::npos || !hasTags) {
        return Loss{shift == std::string_view::npos ? "" : placeOf(text, shift),
                    "read as " + form.encoding + ", but seems to be in another encoding"};
    }
    return std::nullopt;
}

}  // namespace

std::optional<Loss> lossOnReading(std::string_view bytes, const Form& form, std::string_view text,
                                  std::string_view again) {
    if (!isKnown(form)) {
        return Loss{"", "declares the encoding " + form.encoding + ", which is unknown here"};
    }
    const Decoding truth = decode(bytes, form);
    const auto lossAt = [&](std::size_t at, const std::string& what) {
        return Loss{placeOf(truth.text, at), what};
    };
    if (const std::size_t zero = truth.text.find('\0'); zero != std::string::npos) {
        return lossAt(zero, form.mark != 0 ? "U+0000 is left out"
                                           : "U+0000 is left out; is it UTF-16 without a mark?");
    }
    if (auto loss = wrongForm(bytes, form, text)) {
        return loss;
    }
    if (const auto at = firstBeyondUnicode(truth.text)) {
        return lossAt(*at, characterAt(truth.text, *at) + " is no character");
    }
    if (truth.fault) {
        return lossAt(truth.text.size(),
                      byteAt(bytes, *truth.fault) + " is no character of " + form.encoding);
    }
    if (const auto at = firstDifference(truth.text, text)) {
        return lossAt(*at, characterAt(truth.text, *at) + " is read as something else");
    }
    if (bytes != again) {
        const auto at = std::ranges::mismatch(bytes, again).in1 - bytes.begin();
        return Loss{"", byteAt(bytes, static_cast<std::size_t>(at)) +
                            ": the text read from here on is written otherwise in " +
                            form.encoding + ", and may be wrong"};
    }
    return std::nullopt;
}

std::optional<Loss> lossOnWriting(std::string_view source, std::string_view text, const Form& form,
                                  std::string_view bytes) {
    const Form found = formOf(bytes);
    if (found != form) {
        return Loss{"",
                    "a file in " + form.encoding + " would be read as one in " + found.encoding};
    }
    // All but the declaration stands in the source as well, as far from its end.
    const auto lossAt = [&](std::size_t at, const char* what) {
        const std::size_t same = firstDifference(text, source).value_or(text.size());
        const std::size_t behind = text.size() - at;
        const std::size_t there =
            at < same ? at : std::max(same, source.size() - std::min(behind, source.size()));
        return Loss{placeOf(source, there), characterAt(text, at) + what + form.encoding};
    };
    if (const auto at = firstDifference(text, decode(bytes, form).text)) {
        return lossAt(*at, " can't be kept in ");
    }
    if (const auto at = firstDifference(text, readBack(bytes))) {
        return lossAt(*at, " would not be read back from ");
    }
    return std::nullopt;
}

}  // namespace eqrecode
