// Every folder of tests/data/cases through the library, Arrow in and Arrow out, beside what the
// command writes for the same table.

#include <algorithm>
#include <bit>
#include <cstdlib>
#include <filesystem>

#include <gtest/gtest.h>

#include "capi/include/velscore.hpp"
#include "tests/capi/madetables.h"
#include "tests/system/csvtext.h"
#include "tests/system/runcommand.h"

namespace velscore_tests {
namespace {

using MCVelscore_850::CsvText;
using MCVelscore_850::DataFile;
using MCVelscore_850::Finished;
using MCVelscore_850::ParseCsv;
using MCVelscore_850::ReadFile;
using MCVelscore_850::RunVelscore;

std::vector<std::string> CaseNames()
{
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(DataFile("cases"))) {
        if (entry.is_directory()) names.push_back(entry.path().filename().string());
    }
    std::sort(names.begin(), names.end());
    return names;
}

std::optional<double> NumberOf(const std::string& text)
{
    char* end = nullptr;
    const double number = std::strtod(text.c_str(), &end);
    if (text.empty() || *end != '\0' || text.find_first_of("nNiIxX") != std::string::npos) {
        return std::nullopt;
    }
    return number;
}

using TextColumn = std::vector<std::optional<std::string>>;

TextColumn TextsOf(const CsvText& table, const std::string& name, size_t first, size_t end)
{
    const std::vector<std::string> all = table.Texts(name);
    TextColumn texts(all.begin() + static_cast<std::ptrdiff_t>(first),
                     all.begin() + static_cast<std::ptrdiff_t>(end));
    for (auto& text : texts) {
        if (text->empty() || *text == "NA") text.reset();
    }
    return texts;
}

// A column as a data frame would have it: numbers where all of its texts are.
bool IsOfNumbers(const CsvText& table, const std::string& name)
{
    const TextColumn texts = TextsOf(table, name, 0, table.rows.size());
    return std::all_of(texts.begin(), texts.end(),
                       [](const auto& text) { return !text || NumberOf(*text); });
}

MadeArray TypedColumn(const CsvText& table, const std::string& name, size_t first, size_t end)
{
    const TextColumn texts = TextsOf(table, name, first, end);
    if (IsOfNumbers(table, name)) {
        std::vector<std::optional<double>> numbers;
        for (const auto& text : texts) numbers.push_back(text ? NumberOf(*text) : std::nullopt);
        return Numbers(name, numbers);
    }
    TextColumn entries;
    std::vector<std::optional<int16_t>> indexes;
    for (const auto& text : texts) {
        if (!text) {
            indexes.emplace_back();
            continue;
        }
        const auto found = std::find(entries.begin(), entries.end(), text);
        indexes.emplace_back(static_cast<int16_t>(found - entries.begin()));
        if (found == entries.end()) entries.push_back(text);
    }
    return Indexed<int16_t>("s", indexes, Texts(name, entries));
}

// Tables of uneven lengths, one of them empty, so that blocks end within them.
std::vector<MadeArray> TablesOf(const CsvText& table, bool isTyped)
{
    const size_t rows = table.rows.size();
    const std::vector<size_t> ends{0, std::min<size_t>(rows, 3), std::min<size_t>(rows, 3), rows};
    std::vector<MadeArray> tables;
    for (size_t i = 1; i < ends.size(); ++i) {
        std::vector<MadeArray> columns;
        for (const std::string& name : table.header) {
            columns.push_back(
                isTyped ? TypedColumn(table, name, ends[i - 1], ends[i])
                        : Texts<int64_t>(name, TextsOf(table, name, ends[i - 1], ends[i])));
        }
        tables.push_back(Table(std::move(columns)));
    }
    return tables;
}

// Bits, but for the sign of a 0, which the command doesn't write.
bool IsSame(double found, double expected)
{
    return std::bit_cast<uint64_t>(found + 0.0) == std::bit_cast<uint64_t>(expected + 0.0);
}

void ExpectSame(const ReadTables& found, const CsvText& expected)
{
    ASSERT_EQ(found.names, expected.header);
    ASSERT_EQ(found.rows, expected.rows.size());
    for (size_t i = 0; i < found.names.size(); ++i) {
        for (size_t row = 0; row < expected.rows.size(); ++row) {
            const Value& value = found.columns[i][row];
            const std::string& text = expected.rows[row][i];
            SCOPED_TRACE(found.names[i] + ", row " + std::to_string(row + 1));
            if (value.number) {
                const auto number = NumberOf(text);
                ASSERT_TRUE(number.has_value()) << text;
                EXPECT_TRUE(IsSame(*value.number, *number)) << *value.number << " " << text;
            } else {
                EXPECT_EQ(value.text.value_or(""), text);
            }
        }
    }
}

class ArrowCases : public testing::TestWithParam<std::string> {
protected:
    void Check(bool isTyped)
    {
        const std::string folder = DataFile("cases/" + GetParam() + "/");
        const Finished run = RunVelscore({"score", folder + "model.pmml", folder + "input.csv"});
        ASSERT_EQ(run.exitCode, 0) << run.err;
        const CsvText input = ParseCsv(ReadFile(folder + "input.csv"));
        const auto model = velscore::Model::Open(folder + "model.pmml");
        const std::vector<MadeArray> tables = TablesOf(input, isTyped);
        ArrowArrayStream in = ExportStream({.schema = tables.front(), .tables = tables});
        ArrowArrayStream out = model.Score(in);
        EXPECT_EQ(in.release, nullptr);
        std::string error;
        const ReadTables found = ReadAll(out, &error);
        EXPECT_EQ(error, "");
        ExpectSame(found, ParseCsv(run.out));
        EXPECT_EQ(alive, 0);
    }
};

TEST_P(ArrowCases, TextsScoreAsTheCommandScoresThem) { Check(false); }
TEST_P(ArrowCases, NumbersAndDictionariesScoreAsTheCommandScoresTheirTexts) { Check(true); }

TEST_P(ArrowCases, AFileThatIsScannedScoresAsTheCommandScoresIt)
{
    const std::string folder = DataFile("cases/" + GetParam() + "/");
    const Finished run = RunVelscore({"score", folder + "model.pmml", folder + "input.csv"});
    ASSERT_EQ(run.exitCode, 0) << run.err;
    const auto model = velscore::Model::Open(folder + "model.pmml");
    ArrowArrayStream out = model.ScanCsv(folder + "input.csv", {}, 2);
    std::string error;
    const ReadTables found = ReadAll(out, &error);
    EXPECT_EQ(error, "");
    ExpectSame(found, ParseCsv(run.out));
}

INSTANTIATE_TEST_SUITE_P(R, ArrowCases, testing::ValuesIn(CaseNames()), [](const auto& each) {
    std::string name = each.param;
    std::replace_if(
        name.begin(), name.end(),
        [](char c) { return !std::isalnum(static_cast<unsigned char>(c)); }, '_');
    return name;
});

}  // namespace
}  // namespace velscore_tests
