// Operations without state, for the scripts about characters, encodings and escaping.

#include <ctime>
#include <gtest/gtest.h>
#include <iterator>
#include <map>
#include <sstream>

#include "markup/ElemStack.h"
#include "markup/Markup.h"
#include "markup/text/EncodingNameTable.h"
#include "markup/text/NameCompare.h"
#include "markup/text/PredefEntityTable.h"
#include "markup/text/TextEscape.h"
#include "tests/Script.h"
#include "tests/markup/TextChecks.h"

namespace {

using A = script::Arguments;
using Doc = MarkupDocument;

int size(const std::string& text) {
    return static_cast<int>(text.size());
}

template <class... Values>
std::string told(const Values&... values) {
    std::ostringstream out;
    ((out << std::boolalpha << ' ' << values), ...);
    return out.str().substr(1);
}

std::string repeated(const std::string& text, int times) {
    std::ostringstream out;
    std::fill_n(std::ostream_iterator<std::string>(out), times, text);
    return out.str();
}

/// Converts a text behind so many others that it lies across the ends of pieces and of the buffers
/// that the system's converters may have inside (8160 and 16320 characters), and many of it: each
/// time it becomes what it becomes alone, in a time that doesn't depend on what follows.
std::string placed(const A& a) {
    std::string alone = convert(a[0], a[1], a[2]);
    const std::clock_t start = std::clock();
    for (const int end : {64, 1024, 8160, 16320}) {
        for (int before = end - 10; before <= end; ++before) {
            const std::string text = repeated("x", before);
            EXPECT_EQ(convert(a[0], a[1], text + a[2]), convert(a[0], a[1], text) + alone);
        }
    }
    EXPECT_TRUE(convert(a[0], a[1], repeated(a[2], 150000)) == repeated(alone, 150000));
    EXPECT_LT(std::clock() - start, 4 * CLOCKS_PER_SEC);
    return alone;
}

/// How many characters of a text, repeated some times, are told to be lost in the last conversion.
std::string failed(const A& a) {
    const std::string text = repeated(a[2], std::stoi(a[3]));
    TextEncoding encoding(a[0], text.data(), size(text));
    std::string out(static_cast<std::size_t>(encoding.PerformConversion(nullptr, a[1])), '\0');
    encoding.PerformConversion(out.data(), nullptr);
    return told(encoding.failedCharacters());
}

/// Converts to an encoding into the room that another one needs.
std::string room(const A& a) {
    TextEncoding encoding(a[0], a[3].data(), size(a[3]));
    encoding.PerformConversion(nullptr, a[1]);
    std::string out = "......";
    encoding.PerformConversion(out.data(), a[2]);
    return told(encoding.outputCount(), encoding.error(), out);
}

std::string ragged(const A& a) {
    int trailing = -1;
    const TextEncoding encoding(a[0], a[1].data(), size(a[1]) / static_cast<int>(unitSize(a[0])));
    const bool isTold = encoding.FindRaggedEnd(trailing);
    return told(isTold, trailing);
}

/// The character's UTF-8 and UTF-16, each behind an "x" that has to stay, and the measured length
/// of the first.
std::string encode(const A& a) {
    const int character = std::stoi(a[0], nullptr, 0);
    std::string bytes = "x....";
    unsigned short units[3] = {'x'};
    int lengths[3] = {1, 1, 1};
    Doc::EncodeCharUTF8(character, bytes.data(), lengths[0]);
    Doc::EncodeCharUTF16(character, units, lengths[1]);
    Doc::EncodeCharUTF8(character, nullptr, lengths[2]);
    return told(
        bytes.substr(0, static_cast<std::size_t>(lengths[0])),
        std::string(reinterpret_cast<char*>(units), static_cast<std::size_t>(lengths[1]) * 2),
        lengths[2] - 1);
}

/// The first character, the bytes it took, and what detection says of the whole text.
std::string decode(const A& a) {
    const char* cursor = a[0].data();
    const int character = Doc::DecodeCharUTF8(cursor, cursor + a[0].size());
    int nonAscii = -1;
    bool errorAtEnd = false;
    const bool isUtf8 = Doc::DetectUTF8(a[0].data(), size(a[0]), &nonAscii, &errorAtEnd);
    return told(character, cursor - a[0].data(), isUtf8, nonAscii, errorAtEnd);
}

/// Opens the named tags in turn, "/" closing one, and tells each count and the depth at the end.
std::string countTags(const A& a) {
    ElemStack stack(a[0] == "fold");
    std::string counts;
    for (auto name = a.begin() + 1; name != a.end(); ++name) {
        *name == "/" ? stack.PopTag() : void(counts += told(stack.PushTagAndCount(*name), ""));
    }
    return counts + told("depth", stack.depth());
}

// clang-format off
const std::map<std::string, script::Operation> operations{
    {"convert", [](const A& a) { return convert(a[0], a[1], a[2]); }},
    {"placed", placed},
    {"error", [](const A& a) { return told(TextEncoding::converterError(a[1], a[0])); }},
    {"failed", failed},
    {"room", room},
    {"ragged", ragged},
    {"iconvname", [](const A& a) { char name[TextEncoding::iconvNameBufferSize]; return told(TextEncoding::IConvName(name, a[0])); }},
    {"codepage", [](const A& a) { return told(Doc::GetEncodingCodePage(a[0])); }},
    {"toA", [](const A& a) { int lost = -1; const std::string text = Doc::UTF8ToA(a[0], &lost); return told(text, lost); }},
    {"fromA", [](const A& a) { return Doc::AToUTF8(a[0]); }},
    {"encode", encode},
    {"decode", decode},
    {"entity", [](const A& a) { return told(markup::findPredefEntity(a[0])); }},
    {"unescape", [](const A& a) { return UnescapeText(a[1], -1, std::stoi(a[0])); }},
    {"append", [](const A& a) { std::string out = a[1]; markup::appendUnescaped(out, a[2], std::stoi(a[0])); return out; }},
    {"unescapelength", [](const A& a) { return UnescapeText(a[1], std::stoi(a[0]), 0); }},
    {"escape", [](const A& a) { return EscapeText(a[1], std::stoi(a[0])); }},
    {"cdata", [](const A& a) { return x_EncodeCDATASection(a[0]); }},
    {"names", [](const A& a) { return told(x_StrNCmp(a[0].data(), a[1].data(), size(a[0]), a[2] == "fold"), markup::namesEqual(a[0], a[1], a[2] == "fold")); }},
    {"hash", [](const A& a) { return told(x_Hash(a[0].c_str(), std::stoi(a[1]))); }},
    {"slot", [](const A& a) { return told(ElemStack::CalcSlot(a[0].data(), size(a[0]), a[1] == "fold")); }},
    {"count", countTags},
};
// clang-format on

TEST(TextScript, GivesWhatItSays) {
    const auto call = [](const std::string& operation, const A& arguments) {
        return operations.at(operation)(arguments);
    };
    const auto restart = [] {};
    const auto check = [](const std::string& place, const auto& result, const auto& wanted) {
        EXPECT_EQ(result, wanted) << place;
    };
    for (const char* const name : {"names.txt", "encodings.txt", "escaping.txt"}) {
        EXPECT_GT(script::run(name, call, restart, check), 0);
    }
}

TEST(TextArguments, NullReadsAsEmpty) {
    const unsigned short* none = nullptr;
    EXPECT_EQ(UnescapeText(nullptr, -1, 0) + EscapeText(nullptr, 0) + Doc::UTF8ToA(nullptr), "");
    EXPECT_EQ(x_EncodeCDATASection(nullptr), "<![CDATA[]]>");
    EXPECT_EQ(Doc::DecodeCharUTF16(none, none), -1);
    EXPECT_EQ(Doc::UTF16To8(nullptr, nullptr, 3) + Doc::UTF8To16(nullptr, "abc", -1), 0);
    EXPECT_TRUE(Doc::DetectUTF8(nullptr, 5) && Doc::DetectUTF8("\xC3", -1));
    EXPECT_EQ(Doc::GetEncodingCodePage(nullptr) + x_Hash(nullptr, 7), 0);
    EXPECT_EQ(ElemStack::CalcSlot(nullptr, 3, false), 0);
    EXPECT_EQ(TextEncoding("UTF-8", nullptr, 7).PerformConversion(nullptr, "ISO-8859-1"), 0);
    EXPECT_EQ(TextEncoding("UTF-8", "abc", -1).PerformConversion(nullptr, "UTF-16"), 0);
}

}  // namespace
