#pragma once

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <gtest/gtest.h>
#include <iomanip>
#include <map>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include "tests/Escaping.h"

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

/// What a script may do to a `World`, by name.
template <class World>
using Operations = std::map<std::string, std::function<std::string(World&, const Arguments&)>>;

/// An argument that is missing, or "(null)", is a null text and the number 0.
inline bool isNull(const Arguments& a, std::size_t i) {
    return i >= a.size() || a[i] == "(null)";
}

inline const char* text(const Arguments& a, std::size_t i = 0) {
    return isNull(a, i) ? nullptr : a[i].c_str();
}

template <class Number = int>
Number number(const Arguments& a, std::size_t i = 0, long missing = 0) {
    return static_cast<Number>(isNull(a, i) ? missing : std::stol(a[i], nullptr, 0));
}

/// The values on one line.
template <class... Values>
std::string told(const Values&... values) {
    std::ostringstream line;
    line << std::boolalpha << std::setprecision(15);
    ((line << ' ' << values), ...);
    return line.str().substr(1);
}

inline std::string repeated(const std::string& text, int times) {
    std::string all;
    while (times-- > 0) {
        all += text;
    }
    return all;
}

/// Cuts a text at each "|": one empty argument when there is none.
inline Arguments split(const std::string& text) {
    Arguments arguments;
    std::istringstream pieces(text + '|');
    for (std::string piece; std::getline(pieces, piece, '|');) {
        arguments.push_back(unescape(piece));
    }
    return arguments;
}

/// Runs a script on a `World`, and on another one behind each blank line; `World::run` does an
/// operation and gives its result.
template <class World>
void run(const std::string& name) {
    const std::string path = TEST_DATA "/" + name;
    std::ifstream file(path);
    std::string rewritten;
    std::optional<World> world(std::in_place);
    int checks = 0;
    int lineNumber = 0;
    for (std::string line; std::getline(file, line); rewritten += line + "\n") {
        ++lineNumber;
        if (line.empty()) {
            world.emplace();
        }
        if (line.empty() || line[0] == '#') {
            continue;
        }
        const std::size_t arrow = line.find(" =>");
        const std::string call = line.substr(0, arrow);
        const std::size_t space = std::min(call.find(' '), call.size());
        const Arguments arguments =
            space == call.size() ? Arguments{} : split(call.substr(space + 1));
        const std::string result = escape(world->run(call.substr(0, space), arguments));
        if (arrow != std::string::npos) {
            const std::string wanted = line.size() > arrow + 4 ? line.substr(arrow + 4) : "";
            EXPECT_EQ(result, escape(unescape(wanted)))
                << name << " line " << lineNumber << ": " << call;
            line = call + " => " + result;
            ++checks;
        }
    }
    EXPECT_GT(checks, 0) << name;
    if (std::getenv("REWRITE_SCRIPTS") != nullptr) {
        std::ofstream(path) << rewritten;
    }
}

}  // namespace script
