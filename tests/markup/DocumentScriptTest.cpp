// Operations on one document, for the scripts about parsing, navigation, results and files.

#include <unistd.h>

#include <fstream>
#include <gtest/gtest.h>

#include "markup/FileWriting.h"
#include "markup/Markup.h"
#include "markup/ResultLog.h"
#include "markup/ResultMessages.h"
#include "tests/Script.h"
#include "tests/markup/Limits.h"

namespace {

using script::number, script::told;
using A = script::Arguments;

std::string path(const A& a) {
    PathPos parsed{TextArg(a[0])};
    parsed.ParsePath();
    return told(parsed.type, parsed.firstName(), parsed.attributeOffset);
}

/// The nodes of a text, one after another, and what is wrong with each.
std::string nodes(const A& a) {
    TokenPos token(a[0]);
    NodePos node;
    std::string all;
    while (token.ParseNode(node) != NodeEndOfText) {
        all += (all.empty() ? "" : " ") + std::to_string(node.type) + ":" +
               std::to_string(node.start) + "+" + std::to_string(node.length) +
               (node.flags == NodeFlagEmpty ? "/" : "");
        for (const Result& result : node.results) {
            x_AddResult(all, result);
        }
    }
    return all;
}

/// A document, a log and a file, with the object through which it is written piece by piece.
struct World {
    ~World() { unlink(file.c_str()); }

    std::string run(const std::string& operation, const A& a) {
        const std::string result = operations.at(operation)(*this, a);
        // A released record breaks the rules until the next parse.
        isEdited = operation == "release" || operation == "outofrange" ||
                   operation == "parseelem" || (isEdited && operation != "doc");
        const std::string broken = isEdited ? "" : doc.checkInvariants();
        return broken.empty() ? result : "broken: " + broken;
    }

    static TextArg name(const A& a) { return a.empty() ? TextArg(nullptr) : TextArg(a[0]); }
    const std::string& pathOf(const A& a) const { return a.empty() ? file : a[0]; }
    std::string bytes() const {
        std::ifstream in(file, std::ios::binary);
        return {std::istreambuf_iterator<char>(in), {}};
    }
    std::string outOfRange();
    std::string tree() const;
    std::string attribute(int n) const;
    std::string read(const A& a) const;
    std::string write(const A& a) const;
    std::string put(std::string piece, int length, bool flush);
    std::string roundTrip(const A& a);

    MarkupDocument doc;
    std::string log;
    std::optional<FileWriting> out{std::in_place, 0};
    std::string file = testing::TempDir() + "script" + std::to_string(getpid()) + ".xml";
    bool isEdited = false;
    static const script::Operations<World> operations;
};

// clang-format off
using W = World;
// NOLINTNEXTLINE(cppcoreguidelines-interfaces-global-init): the flags of streams are constants
const script::Operations<W> World::operations{
    {"doc", [](W& w, const A& a) { return told(w.doc.SetDoc(a[0])); }},
    {"flags", [](W& w, const A& a) { w.doc.SetDocFlags(number(a)); return a[0]; }},
    {"getflags", [](W& w, const A&) { return told(w.doc.GetDocFlags()); }},
    {"text", [](W& w, const A&) { return told(w.doc.GetDoc()); }},
    {"own", [](W& w, const A& a) { return told(w.doc.SetDoc(w.doc.GetDoc().data() + number(a))); }},
    {"repeat", [](W& w, const A& a) { return told(w.doc.SetDoc(a[0] + script::repeated(a[1], number(a, 2)) + a[3])); }},
    {"tree", [](W& w, const A&) { return w.tree(); }},
    {"nodes", [](W&, const A& a) { return nodes(a); }},
    {"log", [](W& w, const A&) { return w.doc.GetResult(); }},
    {"logend", [](W& w, const A&) { return w.doc.GetResult().substr(w.doc.GetResult().rfind('<')).substr(0, 40); }},
    {"error", [](W& w, const A&) { return w.doc.GetError(); }},
    {"fileerror", [](W& w, const A&) { return told(w.doc.GetFileError()); }},
    {"find", [](W& w, const A& a) { return told(w.doc.FindElem(w.name(a))); }},
    {"child", [](W& w, const A& a) { return told(w.doc.FindChildElem(w.name(a))); }},
    {"node", [](W& w, const A& a) { return told(w.doc.FindNode(number(a))); }},
    {"into", [](W& w, const A&) { return told(w.doc.IntoElem()); }},
    {"out", [](W& w, const A&) { return told(w.doc.OutOfElem()); }},
    {"save", [](W& w, const A& a) { return told(w.doc.SavePos(w.name(a), number(a, 1))); }},
    {"restore", [](W& w, const A& a) { return told(w.doc.RestorePos(w.name(a), number(a, 1))); }},
    {"mapsize", [](W& w, const A& a) { return told(w.doc.SetMapSize(number(a), number(a, 1))); }},
    {"parseelem", [](W& w, const A& a) { TokenPos token(w.doc.GetDoc(), 0, number(a, 1)); return told(w.doc.x_ParseElem(number(a), token)); }},
    {"release", [](W& w, const A& a) { const int next = w.doc.x_ReleasePos(number(a)); w.doc.x_CheckSavedPos(); return told(next); }},
    {"outofrange", [](W& w, const A&) { return w.outOfRange(); }},
    {"pos", [](W& w, const A&) { const MarkupDocument::Position& p = w.doc.position(); return told(p.parent, p.main, p.child, p.nodeType, p.nodeOffset, p.nodeLength); }},
    {"name", [](W& w, const A&) { return w.doc.GetTagName(); }},
    {"data", [](W& w, const A&) { return w.doc.GetData(); }},
    {"attrib", [](W& w, const A& a) { return w.doc.GetAttrib(w.name(a)); }},
    {"pathof", [](W& w, const A& a) { for (int i = 1; i < number(a); ++i) w.doc.x_GetPath(i); return w.doc.x_GetPath(number(a)); }},
    {"nth", [](W& w, const A& a) { return w.attribute(number(a)); }},
    {"path", [](W&, const A& a) { return path(a); }},
    {"declared", [](W&, const A& a) { return MarkupDocument::GetDeclaredEncoding(a[0]); }},
    {"add", [](W& w, const A& a) { x_AddResult(w.log, a[0], a[1] == "-" ? TextArg(nullptr) : TextArg(a[1]), number(a, 2), number(a, 3), number(a, 4)); return w.log; }},
    {"setlog", [](W& w, const A& a) { return w.log = a[0]; }},
    {"addto", [](W& w, const A& a) { w.log = script::repeated("x", number(a)); x_AddResult(w.log, "bom"); return w.log.substr(number<std::size_t>(a)); }},
    {"render", [](W&, const A& a) { return markup::renderResults(a[0]); }},
    {"file", [](W& w, const A& a) { std::ofstream(w.file, std::ios::binary) << a[0]; return a[0]; }},
    {"load", [](W& w, const A& a) { return told(w.doc.Load(w.pathOf(a))); }},
    {"read", [](W& w, const A& a) { return w.read(a); }},
    {"filedoc", [](W& w, const A& a) { return told(w.doc.Save(w.pathOf(a))); }},
    {"bytes", [](W& w, const A&) { return w.bytes(); }},
    {"write", [](W& w, const A& a) { return w.write(a); }},
    {"open", [](W& w, const A& a) { w.out.emplace(number(a)); const bool isOpen = w.out->FileOpen(w.file); return told(w.out->ioResult, isOpen); }},
    {"put", [](W& w, const A& a) { return w.put(a[0], -1, false); }},
    {"last", [](W& w, const A& a) { return w.put(a[0], number(a, 1), true); }},
    {"close", [](W& w, const A&) { return told(w.out->FileClose()); }},
    {"limit", [](W&, const A& a) { return told(limitTo(RLIMIT_FSIZE, number(a, 0, -1))); }},
    {"descriptors", [](W&, const A& a) { return told(limitTo(RLIMIT_NOFILE, number(a, 0, -1))); }},
    {"roundtrip", [](W& w, const A& a) { return w.roundTrip(a); }},
};
// clang-format on

/// What the workers give for records that are not there, and a cursor outside its text.
std::string World::outOfRange() {
    std::string all;
    for (const int pos : {-1, 0, doc.recordCount(), 1 << 24}) {
        TokenPos token("<a b='1'>", 0, pos == 0 ? -1 : pos + 100);
        NodePos node;
        PathPos any{TextArg(nullptr)};
        all += told(doc.x_FindElem(pos, pos, any), doc.x_ReleasePos(pos), doc.startTagLength(pos),
                    doc.x_GetTagName(pos), doc.x_GetData(pos), doc.x_GetAttrib(pos, "b"),
                    doc.x_GetPath(pos), pos == 0 ? 0 : doc.x_ParseElem(pos, token),
                    token.ParseNode(node), token.FindName(), token.FindAttrib("b")) +
               ";";
    }
    return all + doc.x_GetTagName(doc.x_GetFreePos());
}

/// Each record as: name(start+length tag lengths, level, flags, parent child next previous).
std::string World::tree() const {
    std::ostringstream all;
    for (int i = 0; i < doc.recordCount(); ++i) {
        const ElemPos& e = doc.record(i);
        all << (i == 0 ? "" : " ") << doc.x_GetTagName(i) << '(' << e.start << '+' << e.length
            << ' ' << e.packedStartTagLength() << '/' << e.endTagLength() << " L" << e.level()
            << (e.hasFlag(ElemFlagFirst) ? " first" : "")
            << (e.hasFlag(ElemFlagUnended) ? " unended" : "")
            << (e.hasFlag(ElemFlagIllData) ? " illdata" : "")
            << (e.hasFlag(ElemFlagIllFormed) ? " illformed " : " ")
            << told(e.parent, e.child, e.next, e.previous) << ')';
    }
    return all.str();
}

std::string World::attribute(int n) const {
    std::string name, value;
    const bool isFound = doc.GetNthAttrib(n, name, value);
    return isFound ? name + "=" + value + "," + doc.GetAttribName(n) : "none";
}

std::string World::read(const A& a) const {
    std::string text, results, encoding = a.empty() ? "" : a[0];
    int flags = number(a, 1);
    const bool isRead = MarkupDocument::ReadTextFile(file, text, &results, &flags, &encoding);
    return told(isRead, text, results, flags, encoding);
}

/// Arguments: text, encoding, flags.
std::string World::write(const A& a) const {
    std::string results, encoding = a[1];
    int flags = number(a, 2);
    const bool isDone = MarkupDocument::WriteTextFile(file, a[0], &results, &flags, &encoding);
    return told(isDone, results, flags, encoding);
}

/// Writes some of a piece through the file object; tells its log and what is left of the piece.
std::string World::put(std::string piece, int length, bool flush) {
    const bool isDone = out->FileFlush(piece, length, flush);
    return told(piece, out->ioResult, isDone);
}

/// Writes a document with a text in an encoding, then loads, saves and loads it, each time with the
/// same outcome.
std::string World::roundTrip(const A& a) {
    const std::string whole = "<?xml version='1.0' encoding='" + a[0] + "'?><a>" + a[1] + "</a>";
    int flags = doc.GetDocFlags();
    MarkupDocument::WriteTextFile(file, whole, nullptr, &flags);
    const auto load = [&] {
        const bool isSame = doc.Load(file) && doc.GetDoc() == whole;
        return told(isSame, bytes(), tree(), doc.GetDocFlags());
    };
    const std::string first = load();
    const bool isSaved = doc.Save(file);
    const std::string second = load();
    return isSaved && first == second && first.starts_with("true")
               ? told("same,", bytes().size(), "bytes")
               : first + second;
}

TEST(DocumentScript, GivesWhatItSays) {
    for (const char* const name : {"parse.txt", "navigate.txt", "results.txt", "load.txt",
                                   "save.txt", "roundtrip.txt", "trees.txt"}) {
        script::run<World>(name);
    }
}

}  // namespace
