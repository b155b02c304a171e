#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>

#include "lint/Rule.h"
#include "lint/RuleList.h"

namespace lint {

namespace {

std::string contentOf(const std::string& path) {
    std::ifstream file(path);
    return {std::istreambuf_iterator<char>(file), {}};
}

TEST(Rules, AreFoundByTheirIdentifier) {
    for (const Rule& rule : rules()) {
        EXPECT_EQ(findRule(rule.id), &rule);
        EXPECT_EQ(&ruleOf(rule.id), &rule);
    }
    EXPECT_EQ(findRule("EQ100"), nullptr);
    EXPECT_EQ(findRule("EQ999"), nullptr);
    EXPECT_EQ(findRule(""), nullptr);
}

TEST(Rules, SayAllInTheirForms) {
    for (const Rule& rule : rules()) {
        SCOPED_TRACE(rule.id);
        for (const std::string_view words : {rule.summary, rule.effect}) {
            ASSERT_FALSE(words.empty());
            EXPECT_NE(words.back(), '.');
            EXPECT_EQ(words.find('\n'), std::string_view::npos);
        }
        const auto sentences = std::ranges::count(rule.explanation, '.');
        EXPECT_GE(sentences, 2);
        EXPECT_EQ(rule.explanation.back(), '.');
        ASSERT_FALSE(rule.example.empty());
        EXPECT_NE(rule.example.back(), '\n');
    }
}

TEST(Rules, AreAllInTheCases) {
    const std::string cases = contentOf(LINT_CASES);
    for (const Rule& rule : rules()) {
        const std::string wanted = " [" + std::string(rule.id) + "]\n";
        EXPECT_NE(cases.find(wanted), std::string::npos) << rule.id;
    }
}

TEST(RuleList, ExplainsWithinTheTerminal) {
    for (const Rule& rule : rules()) {
        std::stringstream text;
        explain(rule, text);
        for (std::string line; std::getline(text, line);) {
            EXPECT_LE(line.size(), 80U) << line;
        }
    }
}

TEST(RuleList, HasTheSameRulesForPeopleAndPrograms) {
    std::stringstream text;
    std::stringstream json;
    listRules(text);
    listRulesJson(json);
    for (const auto& rule : nlohmann::json::parse(json.str())) {
        std::string line;
        while (std::getline(text, line) && !line.starts_with("  EQ")) {
        }
        EXPECT_NE(line.find(rule.at("id").get<std::string>()), std::string::npos);
        EXPECT_NE(line.find(rule.at("severity").get<std::string>()), std::string::npos);
        EXPECT_TRUE(line.ends_with(rule.at("summary").get<std::string>()));
        EXPECT_EQ(ruleOf(rule.at("id").get<std::string>()).effect, rule.at("effect"));
    }
    std::string line;
    EXPECT_FALSE(std::getline(text, line)) << line;
}

// With RULES_PAGE_TO=PATH in the environment the page as it should be is written there.
TEST(RuleList, MakesThePage) {
    std::stringstream page;
    rulesPage(page);
    if (const char* const path = std::getenv("RULES_PAGE_TO")) {
        std::ofstream(path) << page.str();
    }
    EXPECT_EQ(contentOf(RULES_PAGE), page.str());
}

}  // namespace

}  // namespace lint
