// The forms in which people and programs get to see the table of rules. What a rule says is nowhere
// written down but in its row: the page among the documents is one of these forms too, and a test
// holds it against the table.

#include "lint/RuleList.h"

#include <algorithm>
#include <array>
#include <iomanip>
#include <nlohmann/json.hpp>
#include <ostream>
#include <string>
#include <string_view>

namespace lint {

namespace {

constexpr std::size_t terminalWidth = 80;
constexpr std::size_t pageWidth = 110;

/// What the rules of each hundred are about.
constexpr std::array<std::string_view, 8> titles{
    "The files of a set", "Text and mark-up", "Headers and dates", "DATA and its fields",
    "Configurations",     "Detectors",        "Vectors",           "Files compared"};

/// The title of the rule's hundred, "" unless the rule is the first of it.
std::string_view titleBefore(const Rule& rule) {
    const char hundred = rule.id[2];
    const bool isFirst = &rule == rules().data() || (&rule - 1)->id[2] != hundred;
    return isFirst ? titles.at(static_cast<std::size_t>(hundred - '1')) : std::string_view();
}

/// Writes the words of a text in lines of at most `width` characters, if no word is longer.
void fill(std::ostream& out, std::string_view text, std::size_t width) {
    std::size_t column = 0;
    while (!text.empty()) {
        const std::string_view word = text.substr(0, text.find_first_of(" \n"));
        text.remove_prefix(std::min(word.size() + 1, text.size()));
        const bool fits = column + 1 + word.size() <= width;
        out << (column == 0 ? "" : fits ? " " : "\n") << word;
        column = (column == 0 ? 0 : fits ? column + 1 : 0) + word.size();
    }
    out << '\n';
}

/// The text with nothing in it that Markdown takes for a mark.
std::string forMarkdown(std::string_view text) {
    std::string escaped;
    for (const char c : text) {
        if (std::string_view("\\`*[<&|").find(c) != std::string_view::npos) {
            escaped += '\\';
        }
        escaped += c;
    }
    return escaped;
}

/// Writes the lines of an example, each behind some blanks.
void indent(std::ostream& out, std::string_view example) {
    while (!example.empty()) {
        const std::string_view line = example.substr(0, example.find('\n'));
        example.remove_prefix(std::min(line.size() + 1, example.size()));
        out << "    " << line << '\n';
    }
}

}  // namespace

void listRules(std::ostream& out) {
    for (const Rule& rule : rules()) {
        if (const std::string_view title = titleBefore(rule); !title.empty()) {
            out << (&rule == rules().data() ? "" : "\n") << title << '\n';
        }
        out << "  " << rule.id << "  " << std::left << std::setw(8) << nameOf(rule.severity) << ' '
            << rule.summary << '\n';
    }
}

void listRulesJson(std::ostream& out) {
    auto list = nlohmann::ordered_json::array();
    for (const Rule& rule : rules()) {
        list.push_back({{"id", rule.id},
                        {"severity", nameOf(rule.severity)},
                        {"summary", rule.summary},
                        {"effect", rule.effect}});
    }
    out << list.dump(1) << '\n';
}

void explain(const Rule& rule, std::ostream& out) {
    const std::string id(rule.id);
    fill(out, id + ", " + std::string(nameOf(rule.severity)) + ": " + std::string(rule.summary),
         terminalWidth);
    fill(out, "The converter " + std::string(rule.effect) + ".", terminalWidth);
    out << '\n';
    fill(out, rule.explanation, terminalWidth);
    out << '\n';
    indent(out, rule.example);
}

void rulesPage(std::ostream& out) {
    out << "# The rules of eqlint\n\n"
           "This page is made from the program's own table; `eqlint --explain ID` shows the same. "
           "An **error** ends the\n"
           "run; with a **warning** it goes on, and the record is not what the file says; with a "
           "**note** nothing is lost.\n"
           "The severity here is the highest that a rule has.\n\n"
           "| Rule | Severity | When | The converter |\n|---|---|---|---|\n";
    for (const Rule& rule : rules()) {
        out << "| [" << rule.id << "](#eq" << rule.id.substr(2) << ") | " << nameOf(rule.severity)
            << " | " << forMarkdown(rule.summary) << " | " << forMarkdown(rule.effect) << " |\n";
    }
    for (const Rule& rule : rules()) {
        if (const std::string_view title = titleBefore(rule); !title.empty()) {
            out << "\n## " << title << '\n';
        }
        out << "\n### " << rule.id << "\n\n";
        fill(out, forMarkdown(rule.explanation), pageWidth);
        out << "\n```text\n" << rule.example << "\n```\n";
    }
}

}  // namespace lint
