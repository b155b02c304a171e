// Operations without state, for the scripts about characters, encodings and escaping.

#include <ctime>
#include <gtest/gtest.h>

#include "markup/ElemStack.h"
#include "markup/Markup.h"
#include "markup/text/EncodingNameTable.h"
#include "markup/text/NameCompare.h"
#include "markup/text/PredefEntityTable.h"
#include "markup/text/TextEscape.h"
#include "tests/Script.h"
#include "tests/markup/TextChecks.h"

namespace {

using script::number, script::repeated, script::told;
using A = script::Arguments;
using Doc = MarkupDocument;

int size(const std::string& text) {
    return static_cast<int>(text.size());
}

/// "(null)" is a null text.
TextArg arg(const A& a, std::size_t i = 0) {
    return script::isNull(a, i) ? TextArg(nullptr) : TextArg(a[i]);
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

/// Converts to an encoding, a text as many times as told, into the room that another one needs (6
/// bytes or more); tells what that came to, and how it begins.
std::string room(const A& a) {
    const std::string text = repeated(a[3], number(a, 4, 1));
    TextEncoding encoding(a[0], text.data(), size(text));
    const int measured = encoding.PerformConversion(nullptr, a[1]);
    std::string out(static_cast<std::size_t>(std::max(measured, 6)), '.');
    encoding.PerformConversion(out.data(), a[2]);
    return told(encoding.outputCount(), encoding.error(), encoding.failedCharacters(),
                out.substr(0, 6));
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
    std::string bytes = "x....";
    std::vector<unsigned short> units{'x', 0, 0};
    int lengths[3] = {1, 1, 0};
    Doc::EncodeCharUTF8(number(a), bytes.data(), lengths[0]);
    Doc::EncodeCharUTF16(number(a), units.data(), lengths[1]);
    Doc::EncodeCharUTF8(number(a), nullptr, lengths[2]);
    bytes.resize(static_cast<std::size_t>(lengths[0]));
    units.resize(static_cast<std::size_t>(lengths[1]));
    const std::string_view unitBytes(reinterpret_cast<char*>(units.data()), units.size() * 2);
    return told(bytes, unitBytes, lengths[2]);
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
const std::map<std::string, std::function<std::string(const A&)>> operations{
    {"convert", [](const A& a) { return convert(a[0], a[1], a[2]); }},
    {"placed", placed},
    {"error", [](const A& a) { return told(TextEncoding::converterError(a[1], a[0])); }},
    {"room", room},
    {"ragged", ragged},
    {"iconvname", [](const A& a) { char name[TextEncoding::iconvNameBufferSize]; return told(TextEncoding::IConvName(name, a[0])); }},
    {"codepage", [](const A& a) { return told(Doc::GetEncodingCodePage(arg(a))); }},
    {"toA", [](const A& a) { int lost = -1; const std::string text = Doc::UTF8ToA(arg(a), &lost); return told(text, lost); }},
    {"fromA", [](const A& a) { return Doc::AToUTF8(a[0]); }},
    {"encode", encode},
    {"decode", decode},
    {"entity", [](const A& a) { return told(markup::findPredefEntity(a[0])); }},
    {"unescape", [](const A& a) { return UnescapeText(arg(a, 1), -1, number(a)); }},
    {"append", [](const A& a) { std::string out = a[1]; markup::appendUnescaped(out, a[2], number(a)); return out; }},
    {"unescapelength", [](const A& a) { return UnescapeText(a[1], number(a), 0); }},
    {"escape", [](const A& a) { return EscapeText(arg(a, 1), number(a)); }},
    {"cdata", [](const A& a) { return x_EncodeCDATASection(arg(a)); }},
    {"names", [](const A& a) { return told(x_StrNCmp(a[0].data(), a[1].data(), size(a[0]), a[2] == "fold"), markup::namesEqual(a[0], a[1], a[2] == "fold")); }},
    {"hash", [](const A& a) { return told(x_Hash(script::text(a), number(a, 1))); }},
    {"slot", [](const A& a) { return told(ElemStack::CalcSlot(script::text(a), size(a[0]), a[1] == "fold")); }},
    {"count", countTags},
};
// clang-format on

struct World {
    static std::string run(const std::string& operation, const A& a) {
        return operations.at(operation)(a);
    }
};

TEST(TextScript, GivesWhatItSays) {
    for (const char* const name : {"names.txt", "encodings.txt", "escaping.txt"}) {
        script::run<World>(name);
    }
}

TEST(TextArguments, NullReadsAsEmpty) {
    const unsigned short* none = nullptr;
    EXPECT_EQ(Doc::DecodeCharUTF16(none, none), -1);
    EXPECT_EQ(Doc::UTF16To8(nullptr, nullptr, 3) + Doc::UTF8To16(nullptr, "abc", -1), 0);
    EXPECT_TRUE(Doc::DetectUTF8(nullptr, 5) && Doc::DetectUTF8("\xC3", -1));
    EXPECT_EQ(TextEncoding("UTF-8", nullptr, 7).PerformConversion(nullptr, "ISO-8859-1"), 0);
    EXPECT_EQ(TextEncoding("UTF-8", "abc", -1).PerformConversion(nullptr, "UTF-16"), 0);
}

}  // namespace
