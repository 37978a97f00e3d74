// The documents under tests/data/cases and tests/data/regression by both roads of a TableScorer:
// rows together, where the model has a block scorer, and rows alone.
#include <filesystem>
#include <map>
#include <set>
#include <thread>

#include <gtest/gtest.h>

#include "engine/documents/loadedmodel.h"
#include "host/messages/scoringlog.h"
#include "host/model/scoremodel.h"
#include "scoredtable.h"

namespace MCVelscore_850 {
namespace {

// The documents whose model has no block scorer, and why.
const std::map<std::string, std::string> kWithoutBlocks{};

std::vector<std::string> CaseFolders()
{
    std::vector<std::string> folders;
    for (const char* const room : {"tests/data/cases", "tests/data/regression"}) {
        for (const auto& entry : std::filesystem::directory_iterator(room)) {
            if (std::filesystem::exists(entry.path() / "model.pmml")) {
                folders.push_back(entry.path().string());
            }
        }
    }
    std::sort(folders.begin(), folders.end());
    return folders;
}

// A case folder: its model, and its table.
struct CaseFolder {
    explicit CaseFolder(const std::string& folder)
        : path(folder + "/"),
          model(path + "model.pmml", std::make_shared<Plugin>(VELSCORE_PLUGIN)),
          table(path + "input.csv")
    {}

    std::string path;
    LoadedModel model;
    CaseTable table;
};

std::vector<std::string> ScoreTable(const CaseFolder& folder, size_t times)
{
    return ScoreTable(folder.model, folder.table, times);
}

// The same with a trace on, by which every row goes alone.
std::vector<std::string> ScoreAlone(const CaseFolder& folder, size_t times)
{
    ScoringLog* log = ScoringLog::GetInstance();
    log->SetSink([](int, std::string_view) {});
    log->SetLevel(1);
    std::vector<std::string> lines = ScoreTable(folder, times);
    log->SetLevel(0);
    log->SetSink(nullptr);
    return lines;
}

class BothRoads : public testing::TestWithParam<std::string> {};
INSTANTIATE_TEST_SUITE_P(Cases, BothRoads, testing::ValuesIn(CaseFolders()),
                         [](const auto& folder) {
                             auto name = std::filesystem::path(folder.param).filename().string();
                             for (char& c : name) {
                                 if (std::isalnum(static_cast<unsigned char>(c)) == 0) c = '_';
                             }
                             return name;
                         });

TEST_P(BothRoads, TellTheSame)
{
    const CaseFolder folder(GetParam());
    ASSERT_FALSE(folder.table.views.empty());
    // So often that rows go together after those that settle the model.
    EXPECT_EQ(ScoreTable(folder, 3), ScoreAlone(folder, 3));
}

TEST_P(BothRoads, TellTheSameAtEveryConfidenceLevel)
{
    CaseFolder folder(GetParam());
    if (!folder.model.Description().hasConfidenceLevel) return;
    std::set<std::vector<std::string>> tables;
    constexpr double kLevels[] = {ScoreModel::kDefaultConfidenceLevel, 0.5, 0.9, 0.99, 0.999};
    for (const double level : kLevels) {
        folder.model.SetConfidenceLevel(level);
        const auto together = ScoreTable(folder, 3);
        EXPECT_EQ(together, ScoreAlone(folder, 3)) << level;
        tables.insert(together);
    }
    EXPECT_EQ(tables.size(), std::size(kLevels));
}

TEST_P(BothRoads, ATableTwiceThroughOneOpenModelIsScoredTheSame)
{
    const CaseFolder folder(GetParam());
    const auto first = ScoreTable(folder, 2);
    EXPECT_EQ(ScoreTable(folder, 2), first);
}

TEST_P(BothRoads, OnlyTheListedModelsHaveNoBlockScorer)
{
    const CaseFolder folder(GetParam());
    const bool has = folder.model.Model().MakeBatchScorer() != nullptr;
    EXPECT_EQ(has, kWithoutBlocks.count(GetParam()) == 0);
}

TEST_P(BothRoads, EightThreadsOnOneModelTellTheSame)
{
    const CaseFolder folder(GetParam());
    const auto alone = ScoreTable(folder, 3);
    std::vector<std::vector<std::string>> found(8);
    std::vector<std::thread> threads;
    for (auto& lines : found) threads.emplace_back([&] { lines = ScoreTable(folder, 3); });
    for (std::thread& thread : threads) thread.join();
    for (const auto& lines : found) EXPECT_EQ(lines, alone);
}

}  // namespace
}  // namespace MCVelscore_850
