// Loads an XML file and does one thing to it, for bench/growth.py to time what eqconvert does not
// do:
//
//     navigate attributes|siblings|children|nodes|data FILE
//
// Prints how many things it met. Exit status 1 for another operation.

#include <array>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

#include "markup/Markup.h"

namespace {

/// Reads the attributes of the root element one after another.
std::size_t attributes(MarkupDocument& document) {
    std::size_t count = 0;
    std::string name;
    std::string value;
    for (int n = 0; document.GetNthAttrib(n, name, value); ++n) {
        count += value.size();
    }
    return count;
}

/// Finds the children of the root element that are called "sought", going among them.
std::size_t siblings(MarkupDocument& document) {
    std::size_t count = 0;
    document.IntoElem();
    while (document.FindElem("sought")) {
        ++count;
    }
    return count;
}

/// Finds the same from the root element.
std::size_t children(MarkupDocument& document) {
    std::size_t count = 0;
    while (document.FindChildElem("sought")) {
        ++count;
    }
    return count;
}

/// Goes over all nodes in the root element and reads them.
std::size_t nodes(MarkupDocument& document) {
    std::size_t count = 0;
    document.IntoElem();
    while (document.FindNode() != 0) {
        count += document.GetData().size();
    }
    return count;
}

/// Reads the text of the root element.
std::size_t data(MarkupDocument& document) {
    return document.GetData().size();
}

struct Operation {
    std::string_view name;
    std::size_t (*perform)(MarkupDocument& document);
};

constexpr std::array<Operation, 5> operations{{{"attributes", attributes},
                                               {"siblings", siblings},
                                               {"children", children},
                                               {"nodes", nodes},
                                               {"data", data}}};

}  // namespace

int main(int argc, char** argv) {
    for (const Operation& operation : operations) {
        if (argc == 3 && operation.name == argv[1]) {
            MarkupDocument document;
            document.Load(argv[2]);
            document.FindElem();
            std::printf("%zu\n", operation.perform(document));
            return EXIT_SUCCESS;
        }
    }
    std::fputs("usage: navigate attributes|siblings|children|nodes|data FILE\n", stderr);
    return EXIT_FAILURE;
}
