// Any bytes as a file: loads, saves and loads them again.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>

#include "fuzz/Check.h"
#include "fuzz/FuzzInput.h"
#include "fuzz/MemoryFile.h"
#include "markup/BomTable.h"
#include "markup/Markup.h"
#include "markup/text/EncodingNameTable.h"
#include "markup/text/TextEncoding.h"

namespace {

/// The text in another encoding.
std::string converted(const std::string& text, const std::string& from, const std::string& to) {
    TextEncoding conversion(from, text.data(), static_cast<int>(text.size()));
    std::string out(static_cast<std::size_t>(conversion.PerformConversion(nullptr, to)), '\0');
    out.resize(static_cast<std::size_t>(conversion.PerformConversion(out.data(), nullptr)));
    return out;
}

/// Whether a text is promised to come back: its encoding is found in the file as in the text, has
/// its characters (UTF-16 is written without surrogates), and is none of wider units without a
/// mark, which can't be read back. A text must not begin like a mark, either.
bool canComeBack(const std::string& text, const std::string& file, int flags) {
    constexpr std::size_t probeLength = 1024;
    std::string encoding = MarkupDocument::GetDeclaredEncoding(text);
    if (text.find('\0') != std::string::npos) {
        return false;  // loading removes it
    }
    if ((flags & (DocFlagUtf16LeFile | DocFlagUtf16BeFile)) != 0) {
        return text.find_first_of("\xF0\xF1\xF2\xF3\xF4\xF5\xF6\xF7") == std::string::npos;
    }
    if ((flags & DocFlagUtf8Preamble) != 0) {
        encoding = "UTF-8";
    } else if (MarkupDocument::GetDeclaredEncoding(file.substr(0, probeLength)) != encoding) {
        return false;
    }
    const bool looksMarked = std::any_of(bomTable.begin(), bomTable.end(), [&](const Bom& bom) {
        return (flags & bomFlags) == 0 && file.starts_with(bom.bytes);
    });
    encoding = encoding.empty() ? "UTF-8" : encoding;
    const int codePage = x_GetEncodingCodePage(encoding);
    if (looksMarked || codePage == CodePageUtf16 || codePage == CodePageUtf32) {
        return false;
    }
    return !TextEncoding::CanConvert(encoding, "UTF-8") ||
           converted(converted(text, "UTF-8", encoding), encoding, "UTF-8") == text;
}

bool isRead(const MarkupDocument& document) {
    return document.GetResult().find("<file_error") == std::string::npos;
}

void checkSameTree(const MarkupDocument& a, const MarkupDocument& b) {
    check(a.recordCount() == b.recordCount(), "there are as many elements");
    for (int i = 0; i < a.recordCount(); ++i) {
        check(std::memcmp(&a.record(i), &b.record(i), sizeof(ElemPos)) == 0,
              "the elements are the same");
    }
}

}  // namespace

/// Flags of the document, the file.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzInput in(data, size);
    static MemoryFile original;
    static MemoryFile copy;
    constexpr int choosableFlags =
        DocFlagIgnoreCase | DocFlagTrimWhitespace | DocFlagCollapseWhitespace;
    const int flags = in.raw<std::uint16_t>() & choosableFlags;
    original.put(in.rest());
    copy.put("what was there before is replaced");

    MarkupDocument first;
    first.SetDocFlags(flags);
    const bool isWellFormed = first.Load(original.path());
    const std::string text(first.GetDoc());
    const int loadedFlags = first.GetDocFlags();
    if (!isRead(first)) {
        return 0;
    }
    check(first.Save(copy.path()), "what is read can be saved");
    checkSame(first.GetDoc(), text, "saving leaves the text");
    check(first.GetDocFlags() == loadedFlags, "saving leaves the flags");

    MarkupDocument second;
    second.SetDocFlags(flags);
    const bool isStillWellFormed = second.Load(copy.path());
    check(isRead(second), "what is saved can be read");
    if (!canComeBack(text, copy.bytes(), loadedFlags)) {
        return 0;
    }
    checkSame(second.GetDoc(), text, "the text comes back");
    check(isStillWellFormed == isWellFormed, "it is as well-formed as before");
    check(second.GetDocFlags() == loadedFlags || text.empty(), "the flags come back");
    checkSameTree(first, second);
    const std::string saved = copy.bytes();
    check(second.Save(copy.path()), "it can be saved again");
    checkSame(copy.bytes(), saved, "the file is the same then");
    return 0;
}
