// Loads an XML document and saves it, in another encoding when one is named:
//
//     eqrecode IN OUT [ENCODING]
//
// The result line of each step goes to standard error. With ENCODING the XML declaration is
// rewritten to that name, so that the file reads back; UTF-16LE and UTF-16BE are written with their
// byte-order mark. Shows how the document layer is called. Exit status 1 when the file can't be
// read or saved.

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <new>
#include <string>
#include <string_view>

#include "markup/DocFlags.h"
#include "markup/Markup.h"
#include "markup/ResultMessages.h"
#include "markup/text/EncodingNameTable.h"
#include "markup/text/TextEncoding.h"

namespace {

/// Prints a result line and returns `succeeded`.
bool report(const std::string& line, bool succeeded) {
    std::fprintf(stderr, "eqrecode: %s\n", line.c_str());
    return succeeded;
}

/// What an XML declaration may say: a letter, then letters, digits, ".", "_" and "-".
bool isEncodingName(std::string_view name) {
    const auto isLetter = [](char c) { return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z'); };
    const auto isNameByte = [&](char c) {
        return isLetter(c) || (c >= '0' && c <= '9') || c == '.' || c == '_' || c == '-';
    };
    return !name.empty() && isLetter(name.front()) &&
           std::all_of(name.begin(), name.end(), isNameByte);
}

/// The flag of the byte-order mark for an encoding, 0 for one without.
int markOf(const std::string& encoding) {
    constexpr int utf16BigEndian = 1201;
    switch (MarkupDocument::GetEncodingCodePage(encoding)) {
        case CodePageUtf16:
            return DocFlagUtf16LeFile;
        case utf16BigEndian:
            return DocFlagUtf16BeFile;
        default:
            return 0;
    }
}

/// Whether a file in this encoding reads back: without a mark its declaration has to be the same
/// bytes as in ASCII.
bool canReadBack(const std::string& encoding) {
    if (markOf(encoding) != 0) {
        return true;
    }
    if (MarkupDocument::GetEncodingCodePage(encoding) == CodePageUtf32) {
        return false;  // has units of its own, not bytes
    }
    const std::string declaration = "<?xml version=\"1.0\" encoding='" + encoding + "'?>";
    const auto size = static_cast<int>(declaration.size());
    TextEncoding conversion("UTF-8", declaration.data(), size);
    std::string converted(declaration.size(), '\0');
    if (conversion.PerformConversion(nullptr, encoding) != size) {
        return false;
    }
    conversion.PerformConversion(converted.data(), nullptr);
    return converted == declaration;
}

/// Makes the XML declaration of `text` name `encoding`: rewrites the name, adds it behind the
/// version, or adds a declaration.
void declareEncoding(std::string& text, const std::string& encoding) {
    TokenPos target(text, DocFlagIgnoreCase);
    NodePos node;
    const bool isInstruction = target.ParseNode(node) == NodeProcessingInstruction;
    target.next = 2;
    if (!isInstruction || !target.FindName() || !target.Match("xml")) {
        text.insert(0, "<?xml version=\"1.0\" encoding=\"" + encoding + "\"?>\n");
        return;
    }
    TokenPos name(text, DocFlagIgnoreCase, 2);
    const auto end = static_cast<std::size_t>(node.length) - 2;
    TokenPos version = name;
    if (name.FindAttrib("encoding")) {
        // A value without its closing quote runs out of the declaration.
        const auto left = static_cast<std::size_t>(name.left);
        const bool isQuoted = text[left - 1] == '"' || text[left - 1] == '\'';
        text.replace(left, std::min(name.token().size(), end - std::min(left, end)),
                     isQuoted ? encoding : '"' + encoding + '"');
        return;
    }
    // Where the version is, its closing quote included; "standalone" has to come behind.
    std::size_t at = end;
    if (version.FindAttrib("version")) {
        const auto close = static_cast<std::size_t>(version.left) + version.token().size();
        at = close < end && (text[close] == '"' || text[close] == '\'') ? close + 1 : end;
    }
    text.insert(at, " encoding=\"" + encoding + "\"");
}

/// Whether the loader will find the encoding in the file: only near its start, and not behind what
/// it can't read.
bool isDeclared(const std::string& text, const std::string& encoding) {
    constexpr std::size_t probeLength = 1024;
    const std::string_view start = std::string_view(text).substr(0, probeLength);
    return MarkupDocument::GetDeclaredEncoding(start) == encoding;
}

bool saveAs(const MarkupDocument& document, const char* path, std::string encoding) {
    if (!isEncodingName(encoding) || !canReadBack(encoding)) {
        return report("can't write a file in " + encoding + " that reads back", false);
    }
    int flags = markOf(encoding);
    std::string text(document.GetDoc());
    declareEncoding(text, encoding);
    if (flags == 0 && !isDeclared(text, encoding)) {
        return report("can't declare " + encoding + " where it would be found", false);
    }
    std::string results;
    const bool isSaved = MarkupDocument::WriteTextFile(path, text, &results, &flags, &encoding);
    return report(markup::renderResults(results), isSaved);
}

/// Loads `in` and saves it as `out`, in `encoding` unless that is null.
bool recode(const char* in, const char* out, const char* encoding) {
    MarkupDocument document;
    document.Load(in);
    // That a document is not well-formed is no failure here: its text is whole.
    if (!report(document.GetError(), document.GetFileError() == 0)) {
        return false;
    }
    if (encoding != nullptr) {
        return saveAs(document, out, encoding);
    }
    const bool isSaved = document.Save(out);
    return report(document.GetError(), isSaved);
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3 && argc != 4) {
        std::fputs("usage: eqrecode IN OUT [ENCODING]\n", stderr);
        return 1;
    }
    // A closed pipe and a file that grows too large are to be reported as failed writes.
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
    try {
        return recode(argv[1], argv[2], argc == 4 ? argv[3] : nullptr) ? 0 : 1;
    } catch (const std::bad_alloc&) {
        std::fputs("eqrecode: out of memory\n", stderr);
        return 1;
    }
}
