#pragma once

#include <cstdio>
#include <string>
#include <string_view>

namespace script {

/// The bytes that a text of a script stands for: \n \t \r \0 and \xNN are what they are in C++, any
/// other character behind a backslash is itself.
inline std::string unescape(std::string_view text) {
    constexpr std::string_view letters = "ntr0";
    constexpr std::string_view meanings("\n\t\r\0", letters.size());
    std::string bytes;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '\\' || i + 1 == text.size()) {
            bytes += text[i];
        } else if (text[++i] == 'x') {
            bytes += static_cast<char>(std::stoi(std::string(text.substr(i + 1, 2)), nullptr, 16));
            i += 2;
        } else {
            const std::size_t letter = letters.find(text[i]);
            bytes += letter < letters.size() ? meanings[letter] : text[i];
        }
    }
    return bytes;
}

/// A text on one line, whatever bytes it holds.
inline std::string escape(std::string_view bytes) {
    std::string text;
    for (const char c : bytes) {
        char code[5];
        std::snprintf(code, sizeof code, c >= ' ' && c <= '~' ? "%c" : "\\x%02X",
                      static_cast<unsigned char>(c));
        text += c == '\\' ? "\\\\" : code;
    }
    return text;
}

}  // namespace script
