// The documents under tests/data/cases by both roads of a TableScorer: rows together, where the
// model has a block scorer, and rows alone.
#include <bit>
#include <filesystem>
#include <map>
#include <set>
#include <thread>

#include <gtest/gtest.h>

#include "engine/documents/loadedmodel.h"
#include "engine/scoring/tablescorer.h"
#include "engine/tables/bytesource.h"
#include "engine/tables/rowreader.h"
#include "host/messages/scoringlog.h"
#include "host/model/scoremodel.h"

namespace MCVelscore_850 {
namespace {

// The documents whose model has no block scorer, and why.
const std::map<std::string, std::string> kWithoutBlocks{};

std::vector<std::string> CaseFolders()
{
    std::vector<std::string> folders;
    for (const auto& entry : std::filesystem::directory_iterator("tests/data/cases")) {
        if (std::filesystem::exists(entry.path() / "model.pmml")) {
            folders.push_back(entry.path().filename().string());
        }
    }
    std::sort(folders.begin(), folders.end());
    return folders;
}

// A case folder: its model, and the rows of its table.
struct CaseFolder {
    explicit CaseFolder(const std::string& name)
        : path("tests/data/cases/" + name + "/"),
          model(path + "model.pmml", std::make_shared<Plugin>(VELSCORE_PLUGIN))
    {
        InputFile source(path + "input.csv");
        RowReader reader(source);
        header = reader.Header();
        std::span<const std::string_view> fields;
        while (reader.Next(fields)) texts.insert(texts.end(), fields.begin(), fields.end());
        views.assign(texts.begin(), texts.end());
    }

    std::string path;
    LoadedModel model;
    std::vector<std::string> header;
    std::vector<std::string> texts;
    std::vector<std::string_view> views;
};

// All that a table's results tell, each number by its bits, a line a row; the table `times` over.
std::vector<std::string> ScoreTable(const CaseFolder& folder, size_t times)
{
    TableScorer scorer(folder.model, folder.header, "input.csv",
                       {.results = {.linearPredictor = true, .linearPredictorError = true}});
    ResultBlock results(scorer.Schema());
    TextRows rows(folder.header.size());
    std::vector<std::string> lines;
    const size_t columns = folder.header.size();
    std::vector<std::string_view> all;
    for (size_t i = 0; i < times; ++i) {
        all.insert(all.end(), folder.views.begin(), folder.views.end());
    }
    for (size_t from = 0; from < all.size(); from += TableScorer::kRows * columns) {
        const size_t count = std::min(TableScorer::kRows * columns, all.size() - from);
        scorer.Score(rows.Block(std::span(all).subspan(from, count)), results);
        for (size_t row = 0; row < results.rows; ++row) {
            const CaseStatus& status = results.StatusOf(row);
            std::string line = std::to_string(status.code);
            line.append(" ").append(status.FieldName()).append(" ");
            line.append(status.text.value_or("(none)"));
            for (size_t c = 0; c < results.columns.size(); ++c) {
                const ResultBlock::Column& column = results.columns[c];
                line += ' ';
                if (!HasRow(column.present, row)) continue;
                line += column.codes.empty()
                            ? std::to_string(std::bit_cast<uint64_t>(column.numbers[row]))
                            : std::to_string(column.codes[row]);
            }
            lines.push_back(std::move(line));
        }
    }
    return lines;
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
                             std::string name = folder.param;
                             for (char& c : name) {
                                 if (std::isalnum(static_cast<unsigned char>(c)) == 0) c = '_';
                             }
                             return name;
                         });

TEST_P(BothRoads, TellTheSame)
{
    const CaseFolder folder(GetParam());
    ASSERT_FALSE(folder.views.empty());
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
