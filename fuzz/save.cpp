// Any bytes as a file: loads, saves and loads them again.

#include "fuzz/FuzzInput.h"
#include "fuzz/MemoryFile.h"
#include "markup/BomTable.h"
#include "markup/Markup.h"

namespace {

/// Whether a text is promised to come back, also where no encoding has to hold its characters: one
/// that declares none, at its start either, without NULs, which loading removes, without what would
/// be taken for a mark, and without surrogates, which are not written to UTF-16.
bool comesBack(const std::string& text, int flags) {
    const bool isUtf16 = (flags & (DocFlagUtf16LeFile | DocFlagUtf16BeFile)) != 0;
    const bool declaresNone = MarkupDocument::GetDeclaredEncoding(text).empty() &&
                              MarkupDocument::GetDeclaredEncoding(text.substr(0, 1024)).empty();
    return text.find('\0') == std::string::npos &&
           ((flags & bomFlags) != 0 || (declaresNone && !text.starts_with(bomTable[0].bytes))) &&
           (!isUtf16 ||
            text.find_first_of("\xF0\xF1\xF2\xF3\xF4\xF5\xF6\xF7") == std::string::npos);
}

}  // namespace

/// The file.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static MemoryFile file;
    MarkupDocument first, second;
    file.put(FuzzInput(data, size).rest());
    first.Load(file.path());
    if (first.GetFileError() != 0) {
        return 0;
    }
    const bool isUtf8 = first.GetResult().find(ResultConvertedTo) != std::string::npos;
    const std::string text(first.GetDoc());
    const int flags = first.GetDocFlags();
    require(first.Save(file.path()), "what is read can be saved");
    require(first.GetDoc() == text && first.GetDocFlags() == flags, "saving changes nothing");
    second.Load(file.path());
    require(second.GetFileError() == 0, "what is saved can be read");
    if (isUtf8 && comesBack(text, flags)) {
        requireSame(second.GetDoc(), text, "the text comes back");
        require(second.GetDocFlags() == flags || text.empty(), "the flags come back");
    }
    return 0;
}
