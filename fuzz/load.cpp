// Any bytes as a file: loads them, then moves over what came of it.

#include <cstddef>
#include <cstdint>
#include <string>

#include "fuzz/Check.h"
#include "fuzz/FuzzInput.h"
#include "fuzz/MemoryFile.h"
#include "markup/Markup.h"

namespace {

/// Those that a document may have before it is loaded.
constexpr int flags = 0x3FF & ~(DocFlagReadFile | DocFlagWriteFile);

void checkRules(const MarkupDocument& document) {
    const std::string broken = document.checkInvariants();
    check(broken.empty(), "invariants:", broken);
}

/// An argument for the searches: none, a name that the document has, or an element path with it.
std::string pickName(const MarkupDocument& document, FuzzInput& in) {
    static const std::string before[] = {"", "/", "//", "x/", "["};
    static const std::string behind[] = {"", "/x", "[1]", "[@x='1']", "/@x", "]", " "};
    const int count = document.recordCount();
    const auto pos = count == 0 ? 0 : in.pick(0, count - 1);
    return in.choose(before) + document.x_GetTagName(static_cast<int>(pos)) + in.choose(behind);
}

bool isSame(const MarkupDocument::Position& a, const MarkupDocument::Position& b) {
    return a.parent == b.parent && a.main == b.main && a.child == b.child &&
           a.nodeType == b.nodeType && a.nodeOffset == b.nodeOffset && a.nodeLength == b.nodeLength;
}

/// Reads all that the current position offers.
void readAll(const MarkupDocument& document) {
    document.GetTagName();
    std::string storage;
    const std::string_view view = document.dataView(document.position().main, storage);
    checkSame(document.GetData(), view, "the data and its view agree");
    std::string name;
    std::string value;
    int count = 0;
    while (document.GetNthAttrib(count, name, value)) {
        checkSame(document.GetAttribName(count), name, "the name of an attribute is its name");
        ++count;
    }
    check(document.GetAttribName(count).empty(), "there is no attribute behind the last");
    document.GetAttrib(name);
    document.GetAttrib("encoding");
}

/// One move of any kind; one that finds nothing leaves the position as it was.
void move(MarkupDocument& document, FuzzInput& in) {
    const MarkupDocument::Position before = document.position();
    bool hasMoved = true;
    bool mayMove = false;
    switch (in.upTo(9)) {
        case 0:
            hasMoved = document.FindElem();
            break;
        case 1:
            hasMoved = document.IntoElem();
            break;
        case 2:
            hasMoved = document.FindElem(pickName(document, in));
            break;
        case 3:
            hasMoved = document.OutOfElem();
            break;
        case 4:
            hasMoved = document.FindNode(in.raw<std::uint16_t>()) != 0;
            break;
        case 5:
            hasMoved = document.FindNode() != 0;
            break;
        case 6:
            document.FindChildElem(pickName(document, in));
            mayMove = true;  // to the first element, also when it has no such child
            break;
        case 7:
            hasMoved = document.RestorePos(in.oneIn(3) ? "a" : "", in.byte() % 4 - 1);
            break;
        case 8:
            document.SetMapSize(in.raw<std::int8_t>(), in.byte() % 4 - 1);
            hasMoved = false;
            break;
        default:
            document.SavePos(in.oneIn(3) ? "a" : "", in.byte() % 4 - 1);
            hasMoved = false;
    }
    check(hasMoved || mayMove || isSame(before, document.position()),
          "a move that finds nothing moves nothing");
    checkRules(document);
    readAll(document);
}

/// Goes through the elements by entering and leaving them: each is met once, in the order of the
/// records.
void walkElements(MarkupDocument& document) {
    int met = 0;
    while (true) {
        if (document.FindElem()) {
            ++met;
            check(document.position().main == met, "the walk meets the records in order");
            document.IntoElem();
        } else if (!document.OutOfElem()) {
            break;
        }
    }
    check(met + 1 == document.recordCount() || document.recordCount() == 0,
          "the walk meets every record");
}

/// Goes through the nodes at the document's level: they follow one another without a gap.
void walkNodes(MarkupDocument& document) {
    int end = 0;
    while (document.FindNode() != 0) {
        const MarkupDocument::Position& at = document.position();
        const ElemPos& element = document.record(at.main);
        const bool isElement = at.nodeLength == 0;
        check((isElement ? element.start : at.nodeOffset) == end, "nodes follow one another");
        end += isElement ? element.length : at.nodeLength;
    }
    check(end == static_cast<int>(document.GetDoc().size()) || document.recordCount() == 0,
          "the nodes are the whole text");
}

}  // namespace

/// Flags of the document, a text of moves, the file.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzInput in(data, size);
    static MemoryFile file;
    MarkupDocument document;
    document.SetDocFlags(in.raw<std::uint16_t>() & flags);
    const std::string_view moves = in.shortText();
    file.put(in.rest());
    const bool isLoaded = document.Load(file.path());
    check(!isLoaded || document.IsWellFormed(), "what is loaded is well-formed");
    document.GetError();
    checkRules(document);
    FuzzInput choices(reinterpret_cast<const std::uint8_t*>(moves.data()), moves.size());
    while (!choices.isEmpty()) {
        move(document, choices);
    }
    document.SetDoc(std::string(document.GetDoc()));
    walkElements(document);
    document.SetDoc(std::string(document.GetDoc()));
    walkNodes(document);
    return 0;
}
