// Conversion between two encodings, in one go and through files.

#include <iconv.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "fuzz/Check.h"
#include "fuzz/FuzzInput.h"
#include "fuzz/MemoryFile.h"
#include "markup/FilePos.h"
#include "markup/Markup.h"
#include "markup/text/EncodingNameTable.h"
#include "markup/text/TextEncoding.h"
#include "markup/text/UnicodeCodec.h"
#include "markup/text/Utf8Sweep.h"

namespace {

/// What iconv_open returns without a converter.
const auto noConverter = reinterpret_cast<iconv_t>(-1);

/// A name of the table, or any text.
std::string pickName(FuzzInput& in) {
    static const char* const suffixes[] = {"", "", "//TRANSLIT", "//IGNORE"};
    const unsigned length = in.byte();
    if (length >= 0x80) {
        return std::string(in.bytes(length - 0x80));
    }
    const auto names = markup::allEncodingNames();
    return std::string(names[in.raw<std::uint16_t>() % names.size()].name) + in.choose(suffixes);
}

std::size_t unitSize(const std::string& encoding) {
    const int codePage = x_GetEncodingCodePage(encoding);
    return codePage == CodePageUtf16 ? 2 : codePage == CodePageUtf32 ? 4 : 1;
}

/// Measures, then converts into a block of just that size.
std::string convert(const std::string& from, const std::string& to, std::string_view bytes) {
    const bool isUnknown = x_GetEncodingCodePage(from) == CodePageUnknown;
    const std::size_t unit = isUnknown ? 1 : unitSize(to);
    const ExactCopy source(bytes.substr(0, bytes.size() / unitSize(from) * unitSize(from)));
    TextEncoding conversion(from, source.data(),
                            static_cast<int>(source.view().size() / unitSize(from)));
    const int measured = conversion.PerformConversion(nullptr, to);
    const std::size_t size = static_cast<std::size_t>(measured) * unit;
    const std::unique_ptr<char[]> target(new char[size]);
    const int count = conversion.PerformConversion(target.get(), nullptr);
    // A stateful converter may shift once more while measuring, where it starts a new piece.
    check(count <= measured && conversion.outputCount() == count, "what was measured is enough:",
          from + " to " + to + ", " + std::to_string(measured) + " then " + std::to_string(count));
    return {target.get(), static_cast<std::size_t>(count) * unit};
}

std::string upperCase(std::string name) {
    for (char& c : name) {
        c = c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
    }
    return name;
}

/// What the system's converter gives with all the room it may want, each byte that it refuses
/// replaced by "?".
std::string model(iconv_t converter, std::string_view bytes) {
    std::string source(bytes);
    std::string target(source.size() * 16 + 64, '\0');
    char* input = source.data();
    char* output = target.data();
    std::size_t inputLeft = source.size();
    std::size_t room = target.size();
    while (inputLeft > 0 && iconv(converter, &input, &inputLeft, &output, &room) == SIZE_MAX) {
        check(errno != E2BIG, "the model has room");
        if (errno != EILSEQ || inputLeft == 0) {
            break;
        }
        ++input;
        --inputLeft;
        iconv(converter, nullptr, nullptr, &output, &room);
        *output++ = '?';
        --room;
    }
    iconv(converter, nullptr, nullptr, &output, &room);
    return target.substr(0, target.size() - room);
}

/// Whether one of the system's converters itself goes wrong. Told to ignore faults, some (those
/// from CP949 and ISO-2022-CN-EXT) write out what happens to lie in memory; the product asks for
/// that from UTF-8 only. That to ISO-2022-KR begins anew with every letter it transliterates, but
/// not after its output was full.
bool isFaultOfSystem(const std::string& from, const std::string& to) {
    const std::string target = upperCase(to);
    const auto has = [&](const char* part) { return target.find(part) != std::string::npos; };
    return (has("IGNORE") && x_GetEncodingCodePage(from) != CodePageUtf8) ||
           (has("TRANSLIT") && (has("2022-KR") || has("2022KR")));
}

void checkAgainstModel(const std::string& from, const std::string& to, std::string_view bytes) {
    const auto isOwn = [](const std::string& name) {
        return name.size() >= maxEncodingNameLength || upperCase(name) == "UTF-16" ||
               unitSize(name) != 1;
    };
    const std::string result = convert(from, to, bytes);
    if (isOwn(from) || isOwn(to)) {
        return;
    }
    const iconv_t converter = iconv_open(upperCase(to).c_str(), upperCase(from).c_str());
    check(TextEncoding::CanConvert(to, from) == (converter != noConverter), "there is a converter");
    if (converter == noConverter) {
        check(result.empty(), "without a converter there is no result");
        return;
    }
    checkSame(result, model(converter, bytes), from + " to " + to + " gives what the system gives");
    iconv_close(converter);
}

void checkRaggedEnd(const std::string& encoding, std::string_view bytes) {
    const std::size_t unit = unitSize(encoding);
    const ExactCopy source(bytes.substr(0, bytes.size() / unit * unit));
    const int units = static_cast<int>(source.view().size() / unit);
    int trailing = -1;
    if (!TextEncoding(encoding, source.data(), units).FindRaggedEnd(trailing)) {
        return;
    }
    const int cut = trailing / static_cast<int>(unit);
    check(trailing >= 0 && cut <= units, "a ragged end lies in the text");
    const bool isUtf8 = x_GetEncodingCodePage(encoding) == CodePageUtf8;
    int again = -1;
    TextEncoding(encoding, source.data(), units - cut).FindRaggedEnd(again);
    check(again == 0 || !isUtf8, "without its ragged end a text has none");
}

/// Strictly: no overlong forms, no surrogates, no NUL.
bool isPlainUtf8(std::string_view text) {
    const char* at = text.data();
    const char* const end = at + text.size();
    while (at != end) {
        const char* const start = at;
        const int character = DecodeCharUTF8(at, end);
        char bytes[4];
        int length = 0;
        EncodeCharUTF8(character, bytes, length);
        const bool isShortest = length == at - start &&
                                std::memcmp(bytes, start, static_cast<std::size_t>(length)) == 0;
        if (character <= 0 || character > 0x10FFFF || (character & 0x1FF800) == 0xD800 ||
            !isShortest) {
            return false;
        }
    }
    return true;
}

/// A text read in blocks is the text.
void checkBlocks(std::string_view bytes, unsigned block, MemoryFile& file) {
    file.put(bytes);
    FilePos reading(DocFlagReadFile);
    check(reading.FileOpen(file.path()), "the file can be opened");
    const std::size_t mark = bytes.size() - static_cast<std::size_t>(reading.remaining());
    reading.encoding = "UTF-8";
    std::string all;
    while (reading.remaining() > 0 && !reading.isUtf16()) {
        std::string piece;
        reading.opByteLength = static_cast<int>(std::min<std::int64_t>(block, reading.remaining()));
        check(reading.FileReadText(piece), "a block can be read");
        all += piece;
    }
    checkSame(all, bytes.substr(mark), "blocks make the whole");
}

/// The sweep takes just the plain texts, which come back from every conversion as they are.
void checkUtf8(std::string_view bytes, unsigned block, MemoryFile& file) {
    const ExactCopy text(bytes);
    const bool isPlain = markup::plainUtf8Length(text.view()) == text.view().size();
    check(isPlain == isPlainUtf8(text.view()), "plain UTF-8 is told apart");
    if (!isPlain) {
        return;
    }
    checkSame(convert("UTF-8", "UTF-8", bytes), bytes, "plain UTF-8 stays as it is");
    check(MarkupDocument::DetectUTF8(text.data(), static_cast<int>(bytes.size())), "and is UTF-8");
    checkSame(convert("UTF-32", "UTF-8", convert("UTF-8", "UTF-32", bytes)), bytes,
              "and comes back");
    // Where characters of several bytes touch, those of two may look like one: so it is required.
    const auto isAscii = [](char c) { return static_cast<signed char>(c) >= 0; };
    for (auto run = bytes.begin(); run != bytes.end();) {
        const auto end = std::find_if(run, bytes.end(), isAscii);
        if (end - run > 3) {
            return;
        }
        run = std::find_if_not(end, bytes.end(), isAscii);
    }
    checkBlocks(bytes, block, file);
}

/// Reads the bytes as a file of the one encoding and writes the text as one of the other.
void checkFiles(const std::string& from, const std::string& to, std::string bytes,
                MemoryFile& file) {
    std::string text;
    std::string encoding = from;
    int flags = 0;
    file.put(bytes);
    check(MarkupDocument::ReadTextFile(file.path(), text, nullptr, &flags, &encoding),
          "the file is read");
    std::erase(bytes, '\0');
    if (flags == 0 && !from.empty() && unitSize(from) == 1 &&
        TextEncoding::CanConvert("UTF-8", from)) {
        checkSame(text, convert(from, "UTF-8", bytes), "a file is converted whole");
    }
    encoding = to;
    flags = 0;
    check(MarkupDocument::WriteTextFile(file.path(), text, nullptr, &flags, &encoding),
          "the text is written");
    if (!to.empty() && !text.empty()) {
        const bool isConverted = TextEncoding::CanConvert(to, "UTF-8");
        checkSame(file.bytes(), isConverted ? convert("UTF-8", to, text) : text,
                  "a text is converted whole");
    }
}

/// Keeps a converter open to and from every encoding of the table, so that the system does not
/// load and unload them for every run.
class Converters {
  public:
    Converters() {
        for (const EncodingName& row : markup::allEncodingNames()) {
            const std::string name = upperCase(std::string(row.name));
            converters_.push_back(iconv_open("UTF-8", name.c_str()));
            converters_.push_back(iconv_open(name.c_str(), "UTF-8"));
        }
    }
    Converters(const Converters&) = delete;
    Converters& operator=(const Converters&) = delete;
    ~Converters() {
        for (const iconv_t converter : converters_) {
            if (converter != noConverter) {
                iconv_close(converter);
            }
        }
    }

  private:
    std::vector<iconv_t> converters_;
};

}  // namespace

/// Loads the system's converters once and for all.
extern "C" int LLVMFuzzerInitialize(int*, char***) {
    static const Converters converters;
    return 0;
}

/// Two names: 128 and its length and the name, or two bytes of its number in the table and a
/// suffix; the size of a block, the text.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzInput in(data, size);
    static MemoryFile file;
    const std::string from = pickName(in);
    const std::string to = pickName(in);
    const unsigned block = in.byte() + 8;
    const std::string_view text = in.rest();
    if (isFaultOfSystem(from, to)) {
        return 0;
    }
    checkAgainstModel(from, to, text);
    checkRaggedEnd(from, text);
    checkUtf8(text, block, file);
    checkFiles(from, to, std::string(text), file);
    return 0;
}
