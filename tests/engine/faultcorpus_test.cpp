// The documents of tests/data/faults: each is a sound one with one fault, or with something that is
// none, and has to be told at its place or scored as the sound one is.
#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "engine/documents/loadedmodel.h"
#include "scoredtable.h"
#include "tests/scratchfolder.h"

namespace MCVelscore_850 {
namespace {

using Json = nlohmann::json;

const std::string kData = "tests/data/";

// What the sound document's own table gives; nothing where it has none.
std::vector<std::string> ScoresOfCase(const LoadedModel& model, const std::string& base)
{
    const auto table = std::filesystem::path(base).parent_path() / "input.csv";
    if (!std::filesystem::exists(table)) return {};
    return ScoreTable(model, CaseTable(table.string()), 1);
}

std::string FileText(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

struct Expected {
    std::string name;
    std::string base;
    Json edits;
    std::string answer;
    std::string rule;
    int code = 0;  // where the reader refuses by itself
    unsigned long line = 0;
    unsigned long column = 0;
};

void PrintTo(const Expected& expected, std::ostream* out) { *out << expected.name; }

std::vector<Expected> Documents()
{
    std::ifstream file(kData + "faults/faults.jsonl");
    std::vector<Expected> documents;
    for (std::string line; std::getline(file, line);) {
        const Json row = Json::parse(line);
        documents.push_back({row["name"], row["base"], row["edits"], row["answer"],
                             row.value("rule", ""), row.value("code", 0), row.value("line", 0UL),
                             row.value("column", 0UL)});
    }
    return documents;
}

std::string Edited(const Expected& expected)
{
    const std::string base = FileText(kData + expected.base);
    std::string text;
    size_t at = 0;
    for (const Json& edit : expected.edits) {
        const auto offset = edit[0].get<size_t>();
        const auto before = edit[1].get<std::string>();
        EXPECT_EQ(base.substr(offset, before.size()), before) << "the base has changed";
        text.append(base, at, offset - at).append(edit[2].get<std::string>());
        at = offset + before.size();
    }
    return text.append(base, at);
}

std::shared_ptr<const Plugin> SharedPlugin()
{
    static const auto plugin = std::make_shared<const Plugin>(VELSCORE_PLUGIN);
    return plugin;
}

std::string Told(const Findings& findings)
{
    std::string text;
    for (const Finding& finding : findings.Kept()) text += "\n  " + finding.ToString();
    return text;
}

std::string Key(const Finding& finding, bool withPlace)
{
    std::string key = std::string(finding.rule->name) + " " +
                      std::to_string(static_cast<int>(finding.answer)) + " " + finding.text;
    if (withPlace) key += " at " + std::to_string(finding.place.line);
    return key;
}

// What a document is told and scored without any fault in it.
struct Sound {
    std::vector<std::string> keys;
    std::vector<std::string> scores;
};

const Sound& SoundOf(const std::string& base)
{
    static std::map<std::string, Sound> known;
    const auto found = known.find(base);
    if (found != known.end()) return found->second;
    const LoadedModel model(kData + base, SharedPlugin());
    Sound sound;
    for (const Finding& finding : model.DocumentFindings().Kept()) {
        sound.keys.push_back(Key(finding, false));
    }
    sound.scores = ScoresOfCase(model, kData + base);
    return known.emplace(base, std::move(sound)).first->second;
}

class FaultCorpus : public testing::TestWithParam<Expected> {
protected:
    // The edited document as a file.
    std::string Write() const { return folder_.Write("model.pmml", Edited(GetParam())); }
    bool IsTold(const Findings& findings, Answer answer) const
    {
        const Expected& expected = GetParam();
        return std::any_of(findings.Kept().begin(), findings.Kept().end(), [&](const auto& each) {
            return each.answer == answer && each.rule->name == expected.rule &&
                   each.place.line == expected.line && each.place.column == expected.column;
        });
    }
    std::string Wanted() const
    {
        const Expected& expected = GetParam();
        return "wanted: " + expected.answer + " " + expected.rule +
               (expected.code != 0 ? std::to_string(expected.code) : "") + " at line " +
               std::to_string(expected.line) + ", column " + std::to_string(expected.column);
    }

private:
    ScratchFolder folder_;
};

INSTANTIATE_TEST_SUITE_P(Documents, FaultCorpus, testing::ValuesIn(Documents()),
                         [](const auto& document) {
                             std::string name = document.param.name;
                             std::replace_if(
                                 name.begin(), name.end(),
                                 [](unsigned char c) { return std::isalnum(c) == 0; }, '_');
                             return name;
                         });

TEST_P(FaultCorpus, IsToldAtItsPlaceOrScoredAsTheSoundOne)
{
    const Expected& expected = GetParam();
    const std::string path = Write();
    try {
        const LoadedModel model(path, SharedPlugin());
        const Findings& findings = model.DocumentFindings();
        ASSERT_NE(expected.answer, "fault") << Wanted() << Told(findings);
        if (expected.answer == "sound") {
            std::vector<std::string> keys;
            for (const Finding& finding : findings.Kept()) keys.push_back(Key(finding, false));
            EXPECT_EQ(keys, SoundOf(expected.base).keys) << Told(findings);
        } else {
            const Answer answer = expected.answer == "notice" ? Answer::Notice : Answer::Adapted;
            EXPECT_TRUE(IsTold(findings, answer)) << Wanted() << Told(findings);
        }
        EXPECT_EQ(ScoresOfCase(model, kData + expected.base), SoundOf(expected.base).scores);
    } catch (const DocumentFaults& faults) {
        EXPECT_EQ(expected.answer, "fault") << Told(faults.Found());
        EXPECT_TRUE(IsTold(faults.Found(), Answer::Fault)) << Wanted() << Told(faults.Found());
    } catch (const DocumentFailure& refusal) {
        if (expected.code == refusal.Code() && expected.line == refusal.Line() &&
            expected.column == refusal.Column()) {
            return;
        }
        ADD_FAILURE() << Wanted() << "\n  refused by the reader: " << refusal.what() << " ["
                      << refusal.Code() << "] at line " << refusal.Line();
    }
}

TEST(FaultCorpusItself, HoldsFaultsOfEveryAnswer)
{
    std::map<std::string, size_t> counts;
    for (const Expected& expected : Documents()) ++counts[expected.answer];
    EXPECT_GE(counts["fault"], 400u);
    EXPECT_GE(counts["notice"], 20u);
    EXPECT_GE(counts["sound"], 100u);
}

}  // namespace
}  // namespace MCVelscore_850
