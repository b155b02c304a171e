// Any bytes as a file: loads them, then moves over what came of it.

#include "fuzz/FuzzInput.h"
#include "fuzz/MemoryFile.h"
#include "markup/Markup.h"

namespace {

using D = MarkupDocument;

/// A name that the document has, on its own or in an element path.
std::string pickName(const D& document, FuzzInput& in) {
    static const char* const paths[] = {"%", "/%", "%/x", "%[1]", "%[@x='1']", "[%", "%]"};
    const auto pos = in.pick(0, document.recordCount() - 1);
    std::string path = in.choose(paths);
    return path.replace(path.find('%'), 1, document.x_GetTagName(pos));
}

/// Moves of any kind; each tells whether it may have moved. FindChildElem goes to the first element
/// also when that has no such child.
bool (*const moves[])(D&, FuzzInput&) = {
    [](D& d, FuzzInput&) { return d.FindElem(); },
    [](D& d, FuzzInput&) { return d.IntoElem(); },
    [](D& d, FuzzInput& in) { return d.FindElem(pickName(d, in)); },
    [](D& d, FuzzInput&) { return d.OutOfElem(); },
    [](D& d, FuzzInput& in) { return d.FindNode(in.raw<std::uint16_t>()) != 0; },
    [](D& d, FuzzInput& in) { return d.FindChildElem(pickName(d, in)) || true; },
    [](D& d, FuzzInput& in) { return d.RestorePos("", in.pick(-1, 2)); },
    [](D& d, FuzzInput& in) { return d.SavePos("", in.pick(-1, 2)) && false; },
};

/// Reads all that the current position offers.
void readAll(const D& document) {
    const int main = document.position().main;
    std::string storage;
    requireSame(document.GetData(), document.dataView(main, storage),
                "the data and its view agree");
    require(document.x_GetPath(main).empty() == (main == 0), "an element has a path");
    document.GetTagName();
    std::string name, value;
    for (int n = 0; document.GetNthAttrib(n, name, value); ++n) {
        requireSame(document.GetAttribName(n), name, "the name of an attribute is its name");
    }
    document.GetAttrib(name);
}

/// Goes through all elements by entering and leaving them.
void walkElements(D& document) {
    int met = 0;
    do {
        while (document.FindElem()) {
            require(document.position().main == ++met, "the walk meets the records in order");
            document.IntoElem();
        }
    } while (document.OutOfElem());
    require(met + 1 == document.recordCount(), "the walk meets every record");
}

/// Goes through the nodes at the document's level.
void walkNodes(D& document) {
    int end = 0;
    while (document.FindNode() != 0) {
        const D::Position& at = document.position();
        const ElemPos& elem = document.record(at.main);
        const bool isElem = at.nodeLength == 0;
        require((isElem ? elem.start : at.nodeOffset) == end, "nodes follow one another");
        end += isElem ? elem.length : at.nodeLength;
    }
    require(end == static_cast<int>(document.GetDoc().size()), "the nodes are the whole text");
}

}  // namespace

/// Flags of the document, a text of moves, the file.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzInput in(data, size);
    static MemoryFile file;
    D document;
    document.SetDocFlags(in.raw<std::uint16_t>() & 0x3FF & ~(DocFlagReadFile | DocFlagWriteFile));
    const std::string_view choices = in.shortText();
    file.put(in.rest());
    require(!document.Load(file.path()) || document.IsWellFormed(),
            "what is loaded is well-formed");
    document.GetError();
    in = FuzzInput(choices);
    while (!in.isEmpty()) {
        const D::Position before = document.position();
        const bool mayHaveMoved = in.choose(moves)(document, in);
        require(mayHaveMoved || document.position() == before, "what finds nothing moves nothing");
        requireSame(document.checkInvariants(), "", "the rules hold");
        readAll(document);
    }
    document.SetDoc(std::string(document.GetDoc()));
    walkElements(document);
    document.x_ParseDoc();
    walkNodes(document);
    return 0;
}
