// Conversion between two encodings, in one go and through files.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "fuzz/FuzzInput.h"
#include "fuzz/MemoryFile.h"
#include "markup/FileReading.h"
#include "markup/Markup.h"
#include "tests/markup/TextChecks.h"

namespace {

/// A text read in blocks is the text.
void checkBlocks(const std::string& text, long block, MemoryFile& file) {
    file.put(text);
    FileReading reading(0);
    require(reading.FileOpen(file.path()), "the file can be opened");
    reading.encoding = "UTF-8";
    std::string all = text.substr(0, static_cast<std::size_t>(reading.fileByteOffset));
    for (TextBuffer piece; reading.remaining() > 0; all += piece.view()) {
        reading.opByteLength = static_cast<int>(std::min<std::int64_t>(block, reading.remaining()));
        require(reading.FileReadText(piece), "a block can be read");
    }
    requireSame(all, text, "blocks make the whole");
}

/// Reads the bytes as a file of the one encoding and writes the text as one of the other.
void checkFiles(std::string from, std::string to, std::string bytes, MemoryFile& file) {
    std::string text;
    int flags = 0;
    file.put(bytes);
    require(MarkupDocument::ReadTextFile(file.path(), text, nullptr, &flags, &from), "it is read");
    std::erase(bytes, '\0');
    if (flags == 0 && !from.empty() && unitSize(from) == 1 &&
        TextEncoding::CanConvert("UTF-8", from)) {
        requireSame(text, convert(from, "UTF-8", bytes), "a file is converted whole");
    }
    require(MarkupDocument::WriteTextFile(file.path(), text, nullptr, nullptr, &to),
            "it is written");
    const bool isConverted = !text.empty() && TextEncoding::CanConvert(to, "UTF-8");
    requireSame(file.bytes(), isConverted ? convert("UTF-8", to, text) : text, "and so is a text");
}

}  // namespace

/// The names of two encodings behind their lengths, the size of a block, a text.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzInput in(data, size);
    static MemoryFile file;
    const std::string from(in.shortText());
    const std::string to(in.shortText());
    const long block = in.pick(8, 263);
    const std::string text(in.rest());
    // Told to ignore faults, some of the system's converters write what happens to lie in memory.
    const std::string_view ignore = "ignore";
    const auto isSame = [](char a, char b) { return (a | 0x20) == b; };
    if (std::search(to.begin(), to.end(), ignore.begin(), ignore.end(), isSame) == to.end()) {
        checkConversion(from, to, text);
    }
    int trailing = 0;
    const int units = static_cast<int>(text.size() / unitSize(from));
    const std::vector<char> exact(text.begin(), text.end());
    TextEncoding(from, exact.data(), units).FindRaggedEnd(trailing);
    require(trailing >= 0 && trailing <= static_cast<int>(text.size()), "a ragged end lies in it");
    // Where characters of several bytes touch, those of two may look like one: so it is required.
    const auto isHigh = [](char c, int) { return static_cast<signed char>(c) < 0; };
    if (checkUtf8(text) == text.size() &&
        std::search_n(text.begin(), text.end(), 4, 0, isHigh) == text.end()) {
        checkBlocks(text, block, file);
    }
    checkFiles(from, to, text, file);
    return 0;
}
