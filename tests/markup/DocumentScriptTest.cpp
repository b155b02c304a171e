// Operations on one document, for the scripts about parsing, navigation, results and loading.

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <fstream>
#include <gtest/gtest.h>
#include <map>
#include <sstream>
#include <thread>

#include "markup/FileWriting.h"
#include "markup/Markup.h"
#include "markup/ResultLog.h"
#include "markup/ResultMessages.h"
#include "tests/Script.h"

namespace {

using script::answer;

/// One document, and the operations that a script may do on it.
class Script {
  public:
    ~Script() { unlink(path_.c_str()); }

    std::string run(const std::string& operation, const script::Arguments& arguments) {
        // clang-format off
        using S = Script;
        using A = script::Arguments;
        static const std::map<std::string, std::function<std::string(S&, const A&)>> operations{
            {"doc", [](S& s, const A& a) { return answer(s.doc.SetDoc(a[0])); }},
            {"flags", [](S& s, const A& a) { s.doc.SetDocFlags(std::stoi(a[0])); return a[0]; }},
            {"getflags", [](S& s, const A&) { return std::to_string(s.doc.GetDocFlags()); }},
            {"text", [](S& s, const A&) { return std::string(s.doc.GetDoc()); }},
            {"own", [](S& s, const A& a) { return answer(s.doc.SetDoc(s.doc.GetDoc().data() + std::stoi(a[0]))); }},
            {"repeat", [](S& s, const A& a) { return answer(s.doc.SetDoc(repeat(a))); }},
            {"tree", [](S& s, const A&) { return s.tree(); }},
            {"nodes", [](S&, const A& a) { return nodes(a[0]); }},
            {"log", [](S& s, const A&) { return s.doc.GetResult(); }},
            {"logend", [](S& s, const A&) { return s.doc.GetResult().substr(s.doc.GetResult().rfind('<')).substr(0, 40); }},
            {"error", [](S& s, const A&) { return s.doc.GetError(); }},
            {"fileerror", [](S& s, const A&) { return std::to_string(s.doc.GetFileError()); }},
            {"find", [](S& s, const A& a) { return answer(s.doc.FindElem(name(a))); }},
            {"child", [](S& s, const A& a) { return answer(s.doc.FindChildElem(name(a))); }},
            {"node", [](S& s, const A& a) { return std::to_string(s.doc.FindNode(std::stoi(a[0]))); }},
            {"into", [](S& s, const A&) { return answer(s.doc.IntoElem()); }},
            {"out", [](S& s, const A&) { return answer(s.doc.OutOfElem()); }},
            {"save", [](S& s, const A& a) { return answer(s.doc.SavePos(name(a), map(a))); }},
            {"restore", [](S& s, const A& a) { return answer(s.doc.RestorePos(name(a), map(a))); }},
            {"mapsize", [](S& s, const A& a) { return answer(s.doc.SetMapSize(std::stoi(a[0]), map(a))); }},
            {"parseelem", [](S& s, const A& a) { return s.parseElem(std::stoi(a[0]), std::stoi(a[1])); }},
            {"release", [](S& s, const A& a) { return s.release(std::stoi(a[0])); }},
            {"outofrange", [](S& s, const A&) { return s.outOfRange(); }},
            {"pos", [](S& s, const A&) { return s.position(); }},
            {"name", [](S& s, const A&) { return s.doc.GetTagName(); }},
            {"data", [](S& s, const A&) { return s.doc.GetData(); }},
            {"attrib", [](S& s, const A& a) { return s.doc.GetAttrib(name(a)); }},
            {"pathof", [](S& s, const A& a) { return s.pathOf(std::stoi(a[0])); }},
            {"nth", [](S& s, const A& a) { return s.attribute(std::stoi(a[0])); }},
            {"path", [](S&, const A& a) { return path(a[0]); }},
            {"declared", [](S&, const A& a) { return MarkupDocument::GetDeclaredEncoding(a[0]); }},
            {"add", [](S& s, const A& a) { return s.addResult(a); }},
            {"setlog", [](S& s, const A& a) { return s.log_ = a[0]; }},
            {"addto", [](S& s, const A& a) { s.log_.assign(std::stoul(a[0]), 'x'); x_AddResult(s.log_, "bom"); return s.log_.substr(std::stoul(a[0])); }},
            {"render", [](S&, const A& a) { return markup::renderResults(a[0]); }},
            {"file", [](S& s, const A& a) { std::ofstream(s.path_, std::ios::binary) << a[0]; return a[0]; }},
            {"load", [](S& s, const A& a) { return answer(s.doc.Load(a.empty() ? s.path_ : a[0])); }},
            {"read", [](S& s, const A& a) { return s.read(a); }},
            {"filedoc", [](S& s, const A& a) { return answer(s.doc.Save(a.empty() ? s.path_ : a[0])); }},
            {"bytes", [](S& s, const A&) { return s.bytes(); }},
            {"write", [](S& s, const A& a) { return s.write(a); }},
            {"flush", [](S& s, const A& a) { return s.flush(a); }},
            {"limit", [](S&, const A& a) { return limit(RLIMIT_FSIZE, a); }},
            {"descriptors", [](S&, const A& a) { return limit(RLIMIT_NOFILE, a); }},
            {"roundtrip", [](S& s, const A& a) { return s.roundTrip(a[0], a[1]); }},
        };
        // clang-format on
        const auto found = operations.find(operation);
        const std::string result =
            found == operations.end() ? "no such operation" : found->second(*this, arguments);
        isEdited_ = operation == "release" || operation == "outofrange" ||
                    operation == "parseelem" || (isEdited_ && operation != "doc");
        const std::string broken = isEdited_ ? "" : doc.checkInvariants();
        return broken.empty() ? result : "broken: " + broken;
    }

    MarkupDocument doc;

  private:
    static TextArg name(const script::Arguments& a) {
        return a.empty() ? TextArg(nullptr) : TextArg(a[0]);
    }
    static int map(const script::Arguments& a) { return a.size() < 2 ? 0 : std::stoi(a[1]); }

    static std::string repeat(const script::Arguments& a) {
        std::string text = a[0];
        for (int n = std::stoi(a[2]); n > 0; --n) {
            text += a[1];
        }
        return text + a[3];
    }

    /// What the workers give for records that are not there, and a cursor outside its text.
    std::string outOfRange() {
        std::ostringstream out;
        PathPos any{TextArg(nullptr)};
        for (const int pos : {-1, 0, doc.recordCount(), 1 << 24}) {
            TokenPos token("<a b='1'>", 0, pos == 0 ? -1 : pos + 100);
            NodePos node;
            out << doc.x_FindElem(pos, pos, any) << doc.x_ReleasePos(pos) << doc.startTagLength(pos)
                << doc.x_GetTagName(pos) << doc.x_GetData(pos) << doc.x_GetAttrib(pos, "b")
                << doc.x_GetPath(pos) << (pos == 0 ? 0 : doc.x_ParseElem(pos, token))
                << token.ParseNode(node) << token.FindName() << token.FindAttrib("b") << ' ';
        }
        return out.str() + doc.x_GetTagName(doc.x_GetFreePos());
    }

    std::string parseElem(int parent, int offset) {
        TokenPos token(doc.GetDoc(), 0, offset);
        return std::to_string(doc.x_ParseElem(parent, token));
    }

    std::string release(int pos) {
        const int next = doc.x_ReleasePos(pos);
        doc.x_CheckSavedPos();
        return std::to_string(next);
    }

    std::string addResult(const script::Arguments& a) {
        x_AddResult(log_, a[0], a[1] == "-" ? TextArg(nullptr) : TextArg(a[1]), std::stoi(a[2]),
                    std::stoi(a[3]), std::stoi(a[4]));
        return log_;
    }

    /// Each record as: name start+length tag lengths, level, flags, parent child next previous.
    std::string tree() const {
        std::ostringstream out;
        for (int i = 0; i < doc.recordCount(); ++i) {
            const ElemPos& e = doc.record(i);
            out << (i == 0 ? "" : " ") << doc.x_GetTagName(i) << '(' << e.start << '+' << e.length
                << ' ' << e.packedStartTagLength() << '/' << e.endTagLength() << " L" << e.level()
                << (e.hasFlag(ElemFlagFirst) ? " first" : "")
                << (e.hasFlag(ElemFlagUnended) ? " unended" : "")
                << (e.hasFlag(ElemFlagIllData) ? " illdata" : "")
                << (e.hasFlag(ElemFlagIllFormed) ? " illformed" : "") << ' ' << e.parent << ' '
                << e.child << ' ' << e.next << ' ' << e.previous << ')';
        }
        return out.str();
    }

    static std::string nodes(const std::string& text) {
        TokenPos token(text);
        NodePos node;
        std::ostringstream out;
        while (token.ParseNode(node) != NodeEndOfText) {
            std::string log;
            for (const Result& result : node.results) {
                x_AddResult(log, result);
            }
            out << (node.start == 0 ? "" : " ") << node.type << ':' << node.start << '+'
                << node.length << (node.flags == NodeFlagEmpty ? "/" : "") << log;
        }
        return out.str();
    }

    std::string position() const {
        const MarkupDocument::Position& p = doc.position();
        std::ostringstream out;
        out << p.parent << ' ' << p.main << ' ' << p.child << ' ' << p.nodeType << ' '
            << p.nodeOffset << '+' << p.nodeLength;
        return out.str();
    }

    /// The path of record `pos`, after those of all records before it were asked for.
    std::string pathOf(int pos) const {
        for (int i = 1; i < pos; ++i) {
            doc.x_GetPath(i);
        }
        return doc.x_GetPath(pos);
    }

    std::string attribute(int n) const {
        std::string attribName;
        std::string value;
        const bool found = doc.GetNthAttrib(n, attribName, value);
        return found ? attribName + "=" + value + "," + doc.GetAttribName(n) : "none";
    }

    static std::string path(const std::string& text) {
        PathPos parsed{TextArg(text)};
        parsed.ParsePath();
        return std::to_string(parsed.type) + " " + std::string(parsed.firstName()) + " " +
               std::to_string(parsed.attributeOffset);
    }

    std::string read(const script::Arguments& a) const {
        std::string text;
        std::string results;
        std::string encoding = a.empty() ? "" : a[0];
        int flags = a.size() < 2 ? 0 : std::stoi(a[1]);
        const bool ok = MarkupDocument::ReadTextFile(path_, text, &results, &flags, &encoding);
        return answer(ok) + "|" + text + "|" + results + "|" + std::to_string(flags) + "|" +
               encoding;
    }

    std::string bytes() const {
        std::ifstream file(path_, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

    /// Arguments: text, encoding, flags.
    std::string write(const script::Arguments& a) const {
        std::string results;
        std::string encoding = a[1];
        int flags = std::stoi(a[2]);
        const bool ok = MarkupDocument::WriteTextFile(path_, a[0], &results, &flags, &encoding);
        return answer(ok) + "|" + results + "|" + std::to_string(flags) + "|" + encoding;
    }

    /// Writes pieces through one file object opened under the flags that come first, or not opened
    /// for "-"; tells the log of each and what is left of the last one, of which only 3 bytes are
    /// written.
    std::string flush(const script::Arguments& a) const {
        FileWriting file(a[0] == "-" ? 0 : std::stoi(a[0]));
        std::string told = answer(a[0] != "-" && file.FileOpen(path_)) + file.ioResult;
        for (std::size_t i = 1; i < a.size(); ++i) {
            std::string piece = a[i];
            const bool isLast = i + 1 == a.size();
            told += "|" + answer(file.FileFlush(piece, isLast ? 3 : -1, isLast)) + file.ioResult +
                    piece;
        }
        return told + "|" + answer(file.FileClose());
    }

    /// Limits what the process may use, the size of files that it writes or the descriptors beyond
    /// those it has; 0 takes the limit away.
    static std::string limit(decltype(RLIMIT_FSIZE) resource, const script::Arguments& a) {
        std::signal(SIGXFSZ, SIG_IGN);
        const int next = dup(STDERR_FILENO);
        close(next);
        rlimit limit{};
        getrlimit(resource, &limit);
        const rlim_t least = resource == RLIMIT_NOFILE ? static_cast<rlim_t>(next) : 0;
        limit.rlim_cur = a[0] == "0" ? limit.rlim_max : least + std::stoul(a[0]);
        return answer(setrlimit(resource, &limit) == 0);
    }

    /// Writes a document with this text in this encoding, then loads, saves and loads it; tells
    /// what did not come back the same.
    std::string roundTrip(const std::string& encoding, const std::string& text) {
        const std::string whole =
            "<?xml version='1.0' encoding='" + encoding + "'?><a>" + text + "</a>";
        int flags = doc.GetDocFlags();
        MarkupDocument::WriteTextFile(path_, whole, nullptr, &flags);
        const std::string original = bytes();
        std::string failed =
            doc.Load(path_) && doc.GetDoc() == whole ? "" : " load: " + std::string(doc.GetDoc());
        const std::string before = tree() + std::to_string(doc.GetDocFlags());
        failed += doc.Save(path_) ? "" : " save";
        failed += bytes() == original ? "" : " bytes: " + bytes();
        failed +=
            doc.Load(path_) && doc.GetDoc() == whole ? "" : " again: " + std::string(doc.GetDoc());
        failed += tree() + std::to_string(doc.GetDocFlags()) == before ? "" : " tree";
        return failed.empty() ? "same, " + std::to_string(original.size()) + " bytes" : failed;
    }

    std::string path_ = testing::TempDir() + "script" + std::to_string(getpid()) + ".xml";
    std::string log_;
    bool isEdited_ = false;  ///< a released record breaks the rules until the next parse
};

class DocumentScript : public testing::TestWithParam<const char*> {};

TEST_P(DocumentScript, GivesWhatItSays) {
    auto document = std::make_unique<Script>();
    const int checks = script::run(
        GetParam(),
        [&](const std::string& operation, const script::Arguments& arguments) {
            return document->run(operation, arguments);
        },
        [&] { document = std::make_unique<Script>(); },
        [](const std::string& place, const std::string& result, const std::string& wanted) {
            EXPECT_EQ(result, wanted) << place;
        });
    EXPECT_GT(checks, 0);
}

INSTANTIATE_TEST_SUITE_P(Data, DocumentScript,
                         testing::Values("parse.txt", "navigate.txt", "results.txt", "load.txt",
                                         "save.txt", "roundtrip.txt"));

// The text is longer than a pipe holds, so that the reader is gone before all is written.
TEST(Saving, ToAPipeThatIsClosedFails) {
    std::signal(SIGPIPE, SIG_IGN);
    const std::string path = testing::TempDir() + "pipe" + std::to_string(getpid());
    ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
    std::thread reader([&] { std::ifstream(path).get(); });
    MarkupDocument doc;
    doc.SetDoc("<a>" + std::string(1 << 20, 'x') + "</a>");
    EXPECT_FALSE(doc.Save(path));
    EXPECT_EQ(doc.GetError(), "UTF-8 length 1048583 to Broken pipe");
    reader.join();
    unlink(path.c_str());
}

}  // namespace
