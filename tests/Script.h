#pragma once

#include <cstdlib>
#include <fstream>
#include <functional>
#include <string>
#include <vector>

/// Tests written as data: in a script of tests/data each line is an operation with its arguments
/// and, behind "=>", what it must give:
///
///     operation argument|argument => result
///
/// A blank line begins anew, "#" begins a comment. Texts are written with \n \t \r \\ \0 and \xNN,
/// a "|" as \x7C. With REWRITE_SCRIPTS set in the environment the results are written into the
/// scripts, to be reviewed as a diff.
namespace script {

using Arguments = std::vector<std::string>;
using Operation = std::function<std::string(const Arguments&)>;

inline std::string unescape(const std::string& text) {
    static const std::string letters = "ntr0";
    static const std::string meanings("\n\t\r\0", 4);
    std::string plain;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '\\' || i + 1 == text.size()) {
            plain += text[i];
        } else if (text[++i] == 'x') {
            plain += static_cast<char>(std::stoi(text.substr(i + 1, 2), nullptr, 16));
            i += 2;
        } else {
            const std::size_t letter = letters.find(text[i]);
            plain += letter == std::string::npos ? text[i] : meanings[letter];
        }
    }
    return plain;
}

inline std::string escape(const std::string& text) {
    std::string escaped;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        char code[5];
        std::snprintf(code, sizeof code, "\\x%02X", byte);
        escaped += c == '\\' ? "\\\\" : byte < 0x20 || byte > 0x7E ? code : std::string(1, c);
    }
    return escaped;
}

/// The arguments of a call; one empty argument when the operation stands alone with a space.
inline Arguments split(const std::string& text) {
    Arguments arguments(1);
    for (const char c : text) {
        if (c == '|') {
            arguments.emplace_back();
        } else {
            arguments.back() += c;
        }
    }
    for (std::string& argument : arguments) {
        argument = unescape(argument);
    }
    return arguments;
}

inline std::string answer(bool value) {
    return value ? "true" : "false";
}

/// Runs script `name`: `call` gives the result of an operation, `restart` begins anew, `check` is
/// told the place, the result and what it must be. Returns the number of results checked.
inline int run(
    const std::string& name,
    const std::function<std::string(const std::string&, const Arguments&)>& call,
    const std::function<void()>& restart,
    const std::function<void(const std::string&, const std::string&, const std::string&)>& check) {
    const std::string path = TEST_DATA "/" + name;
    std::ifstream file(path);
    std::string rewritten;
    int checks = 0;
    int number = 0;
    for (std::string line; std::getline(file, line); rewritten += line + "\n") {
        ++number;
        if (line.empty()) {
            restart();
        }
        if (line.empty() || line[0] == '#') {
            continue;
        }
        const std::size_t arrow = line.find(" =>");
        const std::string text = line.substr(0, arrow);
        const std::size_t space = text.find(' ');
        const std::string result =
            call(text.substr(0, space),
                 space == std::string::npos ? Arguments{} : split(text.substr(space + 1)));
        if (arrow != std::string::npos) {
            const std::string wanted = line.size() > arrow + 4 ? line.substr(arrow + 4) : "";
            check(name + " line " + std::to_string(number) + ": " + text, escape(result),
                  escape(unescape(wanted)));
            line = text + " => " + escape(result);
            ++checks;
        }
    }
    if (std::getenv("REWRITE_SCRIPTS") != nullptr) {
        std::ofstream(path) << rewritten;
    }
    return checks;
}

}  // namespace script
