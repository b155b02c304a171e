// The parser against a model that follows the rules one element at a time: end tags are sought down
// the whole stack, and every child of an unended element is lifted by itself, level by level.

#include <gtest/gtest.h>
#include <random>

#include "markup/Markup.h"
#include "markup/text/CharClass.h"
#include "markup/text/NameCompare.h"

namespace {

struct Elem {
    int start = 0, length = 0, tagLength = 0, endTagLength = 0, level = 0;
    bool first = false, unended = false, illData = false;
    int parent = 0;
    std::vector<int> children{};

    bool operator==(const Elem&) const = default;
};

class Model {
  public:
    Model(const std::string& text, int flags) : ignoreCase_((flags & DocFlagIgnoreCase) != 0) {
        elems[0].length = static_cast<int>(text.size());
        TokenPos token(text, flags);
        NodePos node;
        for (int type; (type = token.ParseNode(node)) != NodeEndOfText;) {
            if (type == NodeElement) {
                open(node, token.token());
            } else if (type == NodeEndTag) {
                end(node, token.token());
            } else if (type == NodeSyntaxError) {
                elems[current()].illData = illFormed = true;
            }
        }
        while (!stack_.empty()) {
            closeUnended();
        }
    }

    std::vector<Elem> elems{1};
    bool illFormed = false;

  private:
    struct Open {
        std::size_t elem;
        std::string name;
    };

    std::size_t current() const { return stack_.empty() ? 0 : stack_.back().elem; }

    void open(const NodePos& node, std::string_view name) {
        Elem elem{node.start, node.length, node.length, 0, static_cast<int>(stack_.size())};
        elem.parent = static_cast<int>(current());
        elem.first = elems[current()].children.empty();
        elems[current()].children.push_back(static_cast<int>(elems.size()));
        elems.push_back(elem);
        if (node.flags == 0) {
            stack_.push_back({elems.size() - 1, std::string(name)});
        }
    }

    bool closes(std::string_view endName, const std::string& name) const {
        return endName.size() <= name.size() &&
               (endName.size() == name.size() ||
                std::string_view(" /=[]").find(name[endName.size()]) != std::string_view::npos) &&
               markup::namesEqual(endName, name.substr(0, endName.size()), ignoreCase_);
    }

    void end(const NodePos& node, std::string_view name) {
        auto match = std::find_if(stack_.rbegin(), stack_.rend(),
                                  [&](const Open& open) { return closes(name, open.name); });
        if (match == stack_.rend()) {
            elems[current()].illData = illFormed = true;
            return;
        }
        const std::size_t matched = match->elem;
        while (current() != matched) {
            closeUnended();
        }
        elems[matched].length = node.start + node.length - elems[matched].start;
        elems[matched].endTagLength = node.length;
        stack_.pop_back();
    }

    void closeUnended() {
        illFormed = true;
        Elem& elem = elems[current()];
        Elem& parent = elems[static_cast<std::size_t>(elem.parent)];
        elem.unended = true;
        parent.illData = parent.illData || elem.illData;
        elem.illData = false;
        for (const int child : elem.children) {
            elems[static_cast<std::size_t>(child)].parent = elem.parent;
            elems[static_cast<std::size_t>(child)].first = false;
            parent.children.push_back(child);
        }
        elem.children.clear();
        stack_.pop_back();
    }

    bool ignoreCase_;
    std::vector<Open> stack_;
};

/// A record as the model has it, which keeps lists of children instead of links.
Elem elemOf(const MarkupDocument& doc, int pos) {
    const ElemPos& record = doc.record(pos);
    Elem elem{record.start, record.length, record.packedStartTagLength(), record.endTagLength(),
              record.level()};
    elem.first = record.hasFlag(ElemFlagFirst);
    elem.unended = record.hasFlag(ElemFlagUnended);
    elem.illData = record.hasFlag(ElemFlagIllData);
    elem.parent = record.parent;
    for (int child = record.child; child != 0; child = doc.record(child).next) {
        elem.children.push_back(child);
    }
    return elem;
}

void compare(const std::string& text, int flags) {
    MarkupDocument doc;
    doc.SetDocFlags(flags);
    doc.SetDoc(text);
    const Model model(text, flags);
    ASSERT_EQ(doc.checkInvariants(), "") << text;
    ASSERT_EQ(doc.recordCount(), static_cast<int>(model.elems.size())) << text;
    EXPECT_EQ(doc.record(0).hasFlag(ElemFlagIllFormed), model.illFormed) << text;
    for (int pos = 0; pos < doc.recordCount(); ++pos) {
        ASSERT_EQ(elemOf(doc, pos), model.elems[static_cast<std::size_t>(pos)])
            << text << " record " << pos;
    }
}

TEST(ParseModel, AgreesOnRandomStreamsOfTags) {
    static const std::vector<std::string> pieces{
        "<a>",  "<a>",  "<b>",      "<B>",      "<a=1>", "<a=1=2>", "<a[x>",   "<a]=>",  "<\351A>",
        "<b/>", "</a>", "</a>",     "</b>",     "</B>",  "</a=1>",  "</a=>",   "</a[x>", "</a]>",
        "</=>", "</>",  "</\351a>", "</\351A>", "text",  "<1>",     "<!--c-->"};
    std::mt19937 random(20261121);
    for (int round = 0; round < 6000; ++round) {
        std::string text;
        for (auto n = random() % (round % 50 == 0 ? 400 : 24); n > 0; --n) {
            text += pieces[random() % pieces.size()];
        }
        compare(text, round % 2 == 0 ? 0 : DocFlagIgnoreCase);
    }
}

TEST(ParseModel, AgreesOnDamagedDocuments) {
    static const std::string base =
        "<?xml version='1.0'?><!DOCTYPE r [<!ENTITY e '>'>]><r a='1' b=\"x>y\"><!-- c "
        "--><s>t&amp;</s>"
        "<u v=w/><![CDATA[<z>]]><k><l/></k></r>\n";
    static const std::string_view alphabet("<>/='\"!?-[] aC\0\xE9", 16);
    std::mt19937 random(7);
    for (int round = 0; round < 6000; ++round) {
        std::string text = base.substr(0, round % 3 == 0 ? random() % base.size() : base.size());
        for (auto n = random() % 4; n > 0 && !text.empty(); --n) {
            text.replace(random() % text.size(), random() % 3, 1,
                         alphabet[random() % alphabet.size()]);
        }
        compare(text, 0);
    }
}

}  // namespace
