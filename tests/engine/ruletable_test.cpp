// The tables of rules, and that docs/documents.md has a row for each: its rules of the audit under
// "What is told", those of the adapter under "What other exporters write". The examples of the page
// are run.

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <regex>
#include <set>
#include <sstream>

#include <gtest/gtest.h>

#include "engine/documents/audit/documentaudit.h"
#include "engine/documents/documentadapter.h"
#include "engine/documents/documentloader.h"
#include "engine/documents/documentrules.h"
#include "engine/documents/loadedmodel.h"

namespace MCVelscore_850 {
namespace {

using Texts = std::vector<std::string>;

std::string FileText(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

// The lines of a section of docs/documents.md that are rows of its tables.
Texts RowsOf(const std::string& heading)
{
    std::istringstream page(FileText("docs/documents.md"));
    Texts rows;
    bool within = false;
    for (std::string line; std::getline(page, line);) {
        if (line.starts_with("## ")) within = line == "## " + heading;
        if (within && line.starts_with("| ")) rows.push_back(line);
    }
    return rows;
}

struct Row {
    std::string answer;
    std::string strict;
    std::string told;
    std::string example;
};

// | `rule` | fault | counts | what it tells | `wrong` for `right` |
std::map<std::string, Row> ToldRules()
{
    const std::regex form(R"(\| `([a-z-]+)` \| (\w+) \| (counts)? ?\| ?([^|]+) \| (.*?) ?\|)");
    std::map<std::string, Row> rules;
    for (const std::string& line : RowsOf("What is told")) {
        if (!line.starts_with("| `")) continue;
        std::smatch parts;
        EXPECT_TRUE(std::regex_match(line, parts, form)) << "no row of a rule: " << line;
        if (parts.empty()) continue;
        EXPECT_TRUE(rules.emplace(parts[1], Row{parts[2], parts[3], parts[4], parts[5]}).second)
            << line;
    }
    return rules;
}

std::string RowFor(const Rule& rule)
{
    return "| `" + std::string(rule.name) + "` | " + std::string(WordOf(rule.answer)) + " | " +
           (rule.strict && rule.answer != Answer::Fault ? "counts " : "") + "| " +
           std::string(rule.about) + " | `wrong` for `right` |";
}

TEST(Rules, HaveNamesOfTheirOwn)
{
    std::set<std::string_view> names;
    for (const Rule* rule : AllRules()) {
        EXPECT_TRUE(names.insert(rule->name).second) << rule->name;
        EXPECT_TRUE(std::regex_match(std::string(rule->name), std::regex("[a-z]+(-[a-z]+)*")))
            << rule->name;
        EXPECT_EQ(rule->text.find('\n'), std::string_view::npos) << rule->name;
    }
}

TEST(RulePage, HasARowForEachRuleOfTheAuditAndForNoOther)
{
    const std::map<std::string, Row> rows = ToldRules();
    std::set<std::string> known;
    for (const AuditRule* each : AllAuditRules()) {
        const Rule& rule = each->rule;
        known.emplace(rule.name);
        const auto row = rows.find(std::string(rule.name));
        if (row == rows.end()) {
            ADD_FAILURE() << "docs/documents.md lacks\n" << RowFor(rule);
            continue;
        }
        EXPECT_EQ(row->second.answer, WordOf(rule.answer)) << rule.name;
        EXPECT_EQ(row->second.told, rule.about) << rule.name;
        EXPECT_EQ(row->second.strict == "counts", rule.strict && rule.answer != Answer::Fault)
            << RowFor(rule);
    }
    for (const auto& [name, row] : rows) EXPECT_TRUE(known.contains(name)) << name;
}

TEST(RulePage, HasEachRuleOfTheAdapterAndTellsWhichOfThemCount)
{
    std::set<std::string> known;
    std::set<std::string> counting;
    for (const Rule* rule : AdapterRules()) {
        known.emplace(rule->name);
        if (rule->strict) counting.emplace(rule->name);
    }
    std::set<std::string> told;
    std::set<std::string> toldAsCounting;
    const std::regex name(R"(\[([a-z-]+)\](\*)?[;,. |])");
    for (const std::string& line : RowsOf("What other exporters write")) {
        for (std::sregex_iterator each(line.begin(), line.end(), name), end; each != end; ++each) {
            told.insert((*each)[1]);
            if ((*each)[2].matched) toldAsCounting.insert((*each)[1]);
        }
    }
    EXPECT_EQ(told, known);
    EXPECT_EQ(toldAsCounting, counting);
}

// The documents that examples of the page may be edits of.
Texts SoundDocuments()
{
    Texts texts;
    for (const char* folder : {"tests/data/published", "tests/data/cases", "examples"}) {
        for (const auto& file : std::filesystem::recursive_directory_iterator(folder)) {
            const auto suffix = file.path().extension();
            if (suffix == ".pmml" || suffix == ".xml") texts.push_back(FileText(file.path()));
        }
    }
    std::sort(texts.begin(), texts.end());
    return texts;
}

// Whether the document has a finding of that rule.
bool Tells(const std::string& text, std::string_view rule,
           const std::shared_ptr<const Plugin>& plugin)
{
    try {
        Document document = LoadDocumentText(text, "m.pmml");
        return LoadedModel(document, plugin).DocumentFindings().CountOf(rule) > 0;
    } catch (const DocumentFailure& refusal) {
        return refusal.Found().CountOf(rule) > 0;
    } catch (const Failure&) {  // the edit made no document of it
        return false;
    }
}

// "`wrong` for `right`" or "without `right`": in some sound document that has the right text, the
// wrong one in its place, or none, is found by the rule.
TEST(RulePage, ShowsExamplesThatItsRulesFind)
{
    const auto plugin = std::make_shared<const Plugin>(VELSCORE_PLUGIN);
    const Texts sound = SoundDocuments();
    const std::regex form("(?:`([^`]+)` for|without) `([^`]+)`");
    for (const auto& entry : ToldRules()) {
        const std::string& rule = entry.first;
        const auto& row = entry.second;
        std::smatch parts;
        ASSERT_TRUE(std::regex_match(row.example, parts, form)) << rule << ": " << row.example;
        const std::string wrong = parts[1];
        const std::string right = parts[2];
        const bool isFound = std::any_of(sound.begin(), sound.end(), [&](const std::string& text) {
            const size_t at = text.find(right);
            if (at == std::string::npos || Tells(text, rule, plugin)) return false;
            std::string edited = text;
            edited.replace(at, right.size(), wrong);
            return Tells(edited, rule, plugin);
        });
        EXPECT_TRUE(isFound) << rule << ": " << row.example;
    }
}

}  // namespace
}  // namespace MCVelscore_850
