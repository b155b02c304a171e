// Operations without state, for the scripts about characters, encodings and escaping.

#include <ctime>
#include <gtest/gtest.h>
#include <map>

#include "markup/ElemStack.h"
#include "markup/Markup.h"
#include "markup/text/EncodingNameTable.h"
#include "markup/text/NameCompare.h"
#include "markup/text/PredefEntityTable.h"
#include "markup/text/TextEscape.h"
#include "tests/Script.h"
#include "tests/markup/Convert.h"

namespace {

using A = script::Arguments;

int size(const std::string& text) {
    return static_cast<int>(text.size());
}

std::string ragged(const A& a) {
    int trailing = -1;
    const TextEncoding encoding(a[0], a[1].data(), size(a[1]) / static_cast<int>(unitSize(a[0])));
    const bool told = encoding.FindRaggedEnd(trailing);
    return script::answer(told) + " " + std::to_string(trailing);
}

std::string repeated(const std::string& text, int times) {
    std::string all;
    for (; times > 0; --times) {
        all += text;
    }
    return all;
}

/// Converts a text behind so many others that it lies across the ends of pieces and of the buffers
/// that the system's converters may have inside (8160 and 16320 characters), and many of it: each
/// time it becomes what it becomes alone. Not so where the time for a fault depends on what
/// follows.
std::string placed(const A& a) {
    const std::string alone = convert(a[0], a[1], a[2]);
    const std::clock_t start = std::clock();
    for (const int end : {64, 1024, 8160, 16320}) {
        for (int before = end - 10; before <= end; ++before) {
            const std::string text = std::string(static_cast<std::size_t>(before), 'x');
            require(convert(a[0], a[1], text + a[2]) == convert(a[0], a[1], text) + alone,
                    "behind " + std::to_string(before));
        }
    }
    require(convert(a[0], a[1], repeated(a[2], 150000)) == repeated(alone, 150000), "repeated");
    require(std::clock() - start < 4 * CLOCKS_PER_SEC, "in time");
    return alone;
}

/// How many characters of a text repeated some times are told to be lost, twice.
std::string failed(const A& a) {
    const std::string text = repeated(a[2], a.size() > 3 ? std::stoi(a[3]) : 1);
    TextEncoding encoding(a[0], text.data(), size(text));
    std::string out(static_cast<std::size_t>(encoding.PerformConversion(nullptr, a[1])), '\0');
    encoding.PerformConversion(out.data(), nullptr);
    const int first = encoding.failedCharacters();
    encoding.PerformConversion(out.data(), nullptr);
    return std::to_string(first) + " " + std::to_string(encoding.failedCharacters());
}

std::string iconvName(const A& a) {
    char buffer[TextEncoding::iconvNameBufferSize];
    return TextEncoding::IConvName(buffer, a[0]) + std::string(" ") +
           script::answer(TextEncoding::CanConvert("UTF-8", a[0]) &&
                          TextEncoding::CanConvert(a[0], "UTF-8"));
}

/// The character's UTF-8 and UTF-16, each behind an "x" that has to stay.
std::string encode(const A& a) {
    const int character = std::stoi(a[0], nullptr, 0);
    char bytes[5] = "x";
    unsigned short units[3] = {'x'};
    int byteLength = 1;
    int unitLength = 1;
    MarkupDocument::EncodeCharUTF8(character, bytes, byteLength);
    MarkupDocument::EncodeCharUTF16(character, units, unitLength);
    int measured = 1;
    MarkupDocument::EncodeCharUTF8(character, nullptr, measured);
    MarkupDocument::EncodeCharUTF16(character, nullptr, measured);
    EXPECT_EQ(measured, byteLength + unitLength - 1);
    return std::string(bytes, static_cast<std::size_t>(byteLength)) + " " +
           std::string(reinterpret_cast<const char*>(units),
                       static_cast<std::size_t>(unitLength) * 2);
}

/// The first character, the bytes it took, and what detection says of the whole text.
std::string decode(const A& a) {
    const char* cursor = a[0].data();
    const int character = MarkupDocument::DecodeCharUTF8(cursor, a[0].data() + a[0].size());
    int nonAscii = -1;
    bool errorAtEnd = false;
    const bool isUtf8 = MarkupDocument::DetectUTF8(a[0].data(), size(a[0]), &nonAscii, &errorAtEnd);
    return std::to_string(character) + " " + std::to_string(cursor - a[0].data()) + " " +
           script::answer(isUtf8) + " " + std::to_string(nonAscii) + " " +
           script::answer(errorAtEnd);
}

std::string compareNames(const A& a) {
    const bool fold = a[2] == "fold";
    return std::to_string(x_StrNCmp(a[0].data(), a[1].data(), size(a[0]), fold)) + " " +
           script::answer(markup::namesEqual(a[0], a[1], fold));
}

/// Opens the named tags in turn, "/" closing one, and tells each count and the depth at the end.
std::string countTags(const A& a) {
    ElemStack stack(a[0] == "fold");
    std::string counts;
    for (auto name = a.begin() + 1; name != a.end(); ++name) {
        if (*name == "/") {
            stack.PopTag();
        } else {
            counts += std::to_string(stack.PushTagAndCount(*name)) + " ";
        }
    }
    return counts + "depth " + std::to_string(stack.depth());
}

std::string lostCharacters(const A& a) {
    int lost = -1;
    const std::string text = MarkupDocument::UTF8ToA(a[0], &lost);
    return text + " " + std::to_string(lost);
}

// clang-format off
const std::map<std::string, script::Operation> operations{
    {"convert", [](const A& a) { return convert(a[0], a[1], a[2]); }},
    {"placed", placed},
    {"error", [](const A& a) { return std::to_string(TextEncoding::converterError(a[1], a[0])); }},
    {"failed", failed},
    {"ragged", ragged},
    {"iconvname", iconvName},
    {"codepage", [](const A& a) { return std::to_string(MarkupDocument::GetEncodingCodePage(a[0])); }},
    {"toA", lostCharacters},
    {"fromA", [](const A& a) { return MarkupDocument::AToUTF8(a[0]); }},
    {"encode", encode},
    {"decode", decode},
    {"entity", [](const A& a) { return std::to_string(markup::findPredefEntity(a[0])); }},
    {"unescape", [](const A& a) { return UnescapeText(a[1], -1, std::stoi(a[0])); }},
    {"unescapelength", [](const A& a) { return UnescapeText(a[1], std::stoi(a[0]), 0); }},
    {"escape", [](const A& a) { return EscapeText(a[1], std::stoi(a[0])); }},
    {"cdata", [](const A& a) { return x_EncodeCDATASection(a[0]); }},
    {"names", compareNames},
    {"hash", [](const A& a) { return std::to_string(x_Hash(a[0].c_str(), std::stoi(a[1]))); }},
    {"slot", [](const A& a) { return std::to_string(ElemStack::CalcSlot(a[0].data(), size(a[0]), a[1] == "fold")); }},
    {"count", countTags},
};
// clang-format on

class TextScript : public testing::TestWithParam<const char*> {};

TEST_P(TextScript, GivesWhatItSays) {
    const int checks = script::run(
        GetParam(),
        [](const std::string& operation, const A& arguments) {
            return operations.at(operation)(arguments);
        },
        [] {},
        [](const std::string& place, const std::string& result, const std::string& wanted) {
            EXPECT_EQ(result, wanted) << place;
        });
    EXPECT_GT(checks, 0);
}

INSTANTIATE_TEST_SUITE_P(Data, TextScript,
                         testing::Values("names.txt", "encodings.txt", "escaping.txt"));

TEST(TextArguments, NullReadsAsEmpty) {
    const unsigned short* none = nullptr;
    EXPECT_EQ(UnescapeText(nullptr, -1, 0) + EscapeText(nullptr, 0), "");
    EXPECT_EQ(x_EncodeCDATASection(nullptr), "<![CDATA[]]>");
    EXPECT_EQ(MarkupDocument::GetEncodingCodePage(nullptr), 0);
    EXPECT_EQ(MarkupDocument::UTF8ToA(nullptr), "");
    EXPECT_EQ(MarkupDocument::DecodeCharUTF16(none, none), -1);
    EXPECT_EQ(MarkupDocument::UTF16To8(nullptr, nullptr, 3), 0);
    EXPECT_EQ(MarkupDocument::UTF8To16(nullptr, "abc", -1), 0);
    EXPECT_TRUE(MarkupDocument::DetectUTF8(nullptr, 5));
    EXPECT_TRUE(MarkupDocument::DetectUTF8("\xC3", -1));
    EXPECT_EQ(x_Hash(nullptr, 7) + ElemStack::CalcSlot(nullptr, 3, false), 0);
}

}  // namespace
