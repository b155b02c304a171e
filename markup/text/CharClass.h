#pragma once

#include <array>
#include <cstddef>
#include <string_view>

/// Character classes of the tokenizer: a scanning loop is one table look-up and one test a byte.
enum CharClass : unsigned char {
    ClassSpace = 1,       ///< tab, line feed, carriage return, space
    ClassNameStart = 2,   ///< begins an element name: "A"-"Z", ":", "_" and every byte above 0x60
    ClassTagName = 4,     ///< ends a tag's name in the parser: white space, "/", ">"
    ClassAttrName = 8,    ///< ends an attribute name: white space, "/", "=", ">", "?"
    ClassAttrValue = 16,  ///< ends an unquoted attribute value: white space, ">"
    ClassName = 32,       ///< ends a name read by `TokenPos::FindName`
    ClassPathName = 64,   ///< ends a name in a path, and an open tag's name for its end tag
};

namespace markup {

namespace charclass {

inline constexpr std::string_view space = "\t\n\r ";

constexpr std::array<unsigned char, 256> makeTable() {
    std::array<unsigned char, 256> classes{};
    const auto add = [&classes](std::string_view bytes, unsigned char bit) {
        for (const char c : bytes) {
            auto& entry = classes[static_cast<unsigned char>(c)];
            entry = static_cast<unsigned char>(entry | bit);
        }
    };
    add(space, ClassSpace | ClassTagName | ClassAttrName | ClassAttrValue | ClassName);
    add("ABCDEFGHIJKLMNOPQRSTUVWXYZ:_", ClassNameStart);
    // The test is "above 0x60", so { | } ~ DEL begin a name as well.
    for (unsigned byte = 0x61; byte <= 0xFF; ++byte) {
        classes[byte] = static_cast<unsigned char>(classes[byte] | ClassNameStart);
    }
    add("/>", ClassTagName);
    add("/=>?", ClassAttrName);
    add(">", ClassAttrValue);
    add("!\"'/;<=>?\\", ClassName);
    add(" /=[]", ClassPathName);
    return classes;
}

inline constexpr std::array<unsigned char, 256> table = makeTable();

}  // namespace charclass

/// True when `c` belongs to any of the classes in the bit set `classes`.
constexpr bool isClass(char c, unsigned classes) {
    return (charclass::table[static_cast<unsigned char>(c)] & classes) != 0;
}

/// The first position from `pos` on that holds no byte of the classes, the text's size when there
/// is none. Requires: pos <= text.size().
constexpr std::size_t skipClass(std::string_view text, std::size_t pos, unsigned classes) {
    while (pos < text.size() && isClass(text[pos], classes)) {
        ++pos;
    }
    return pos;
}

/// The first position from `pos` on that holds a byte of one of the classes, the text's size when
/// there is none. Requires: pos <= text.size().
constexpr std::size_t findClass(std::string_view text, std::size_t pos, unsigned classes) {
    while (pos < text.size() && !isClass(text[pos], classes)) {
        ++pos;
    }
    return pos;
}

}  // namespace markup
