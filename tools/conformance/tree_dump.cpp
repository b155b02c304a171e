// Loads an XML file and writes what navigation finds in it, for compare_trees.py to compare:
//
//     tree_dump FILE
//
// One item after another, each a letter, its value and a NUL (which no XML text holds):
//
//     ?  what happened in loading          @  name=value of an attribute
//     !  a document type is there          ~  a piece of text, or a CDATA section
//     <  an element begins; its name       _  a piece of white space
//     >  it ends                           #  before it: the data of an element without children
//
// Exit status 0 when the file was accepted, 2 when it was not; a broken document aborts.

#include <cstdio>
#include <cstdlib>
#include <string>

#include "markup/Markup.h"

namespace {

constexpr int notAccepted = 2;

void item(char kind, const std::string& value = {}) {
    std::putchar(kind);
    std::fwrite(value.c_str(), 1, value.size() + 1, stdout);
}

void beginElement(const MarkupDocument& document) {
    item('<', document.GetTagName());
    std::string name;
    std::string value;
    for (int n = 0; document.GetNthAttrib(n, name, value); ++n) {
        item('@', name.append("=").append(value));
    }
}

void endElement(const MarkupDocument& document) {
    if (document.record(document.position().main).child == 0) {
        item('#', document.GetData());
    }
    item('>');
}

/// Writes every node in document order. Text outside the root element is no data.
void walk(MarkupDocument& document) {
    int depth = 0;
    while (true) {
        const int type = document.FindNode();
        switch (type) {
            case 0:
                if (depth-- == 0) {
                    return;
                }
                document.OutOfElem();
                endElement(document);
                break;
            case NodeElement:
                beginElement(document);
                document.IntoElem();
                ++depth;
                break;
            case NodeDocumentType:
                item('!');
                break;
            case NodeWhitespace:
            case NodeText:
            case NodeCDataSection:
                if (depth > 0) {
                    item(type == NodeWhitespace ? '_' : '~', document.GetData());
                }
                break;
            default:
                break;
        }
    }
}

}  // namespace

int main(int argc, char** argv) {
    MarkupDocument document;
    const bool isAccepted = document.Load(argc > 1 ? argv[1] : nullptr);
    const std::string broken = document.checkInvariants();
    if (!broken.empty()) {
        std::fprintf(stderr, "tree_dump: %s\n", broken.c_str());
        std::abort();
    }
    item('?', document.GetError());
    walk(document);
    return isAccepted ? EXIT_SUCCESS : notAccepted;
}
