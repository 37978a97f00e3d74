// Tables of JSON Lines through the command, read and written. What is written is read by another
// program's library.

#include <cstdlib>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "tests/system/csvtext.h"
#include "tests/system/runcommand.h"
#include "tests/system/testmodel.h"

namespace MCVelscore_850 {
namespace {

using Json = nlohmann::ordered_json;
using Texts = std::vector<std::string>;

std::vector<Json> ParseLines(const std::string& text)
{
    std::vector<Json> rows;
    size_t begin = 0;
    for (size_t end = text.find('\n'); end != std::string::npos; end = text.find('\n', begin)) {
        rows.push_back(Json::parse(text.begin() + static_cast<long>(begin),
                                   text.begin() + static_cast<long>(end)));
        begin = end + 1;
    }
    EXPECT_EQ(begin, text.size()) << "the last line has no end";
    return rows;
}

// The table as JSON Lines: what is a number in JSON becomes one, an empty field null.
std::string AsJsonLines(const CsvText& table)
{
    std::string text;
    for (const Texts& row : table.rows) {
        text += "{";
        for (size_t i = 0; i < row.size(); ++i) {
            const Json parsed = Json::parse(row[i], nullptr, false);
            const std::string value = row[i].empty()       ? "null"
                                      : parsed.is_number() ? row[i]
                                                           : Json(row[i]).dump();
            text += (i == 0 ? "" : ", ") + Json(table.header[i]).dump() + ": " + value;
        }
        text += "}\n";
    }
    return text;
}

// y = 1 + 2 x + 10 [sex = m], standard error 2.
class JsonTables : public testing::Test {
protected:
    JsonTables() : model_(folder_.Write("model.pmml", TestModel().Text())) {}

    Finished Score(const std::string& table, Texts options = {}) const
    {
        options.insert(options.begin(), {"score", model_});
        return RunVelscore(options, table);
    }
    std::vector<Json> Scores(const std::string& table, Texts options = {}) const
    {
        options.insert(options.end(), {"--format", "jsonl"});
        const Finished run = Score(table, options);
        EXPECT_EQ(run.exitCode, 0) << run.err;
        return ParseLines(run.out);
    }
    Finished Shell(const std::string& line) const
    {
        return RunProgram({"/bin/sh", "-c", line, VELSCORE_COMMAND, model_, folder_.Path()});
    }

    ScratchFolder folder_;
    std::string model_;
};

TEST_F(JsonTables, OfEveryFamilyGiveTheScoresOfTheSameTableAsCsv)
{
    for (const char* name : {"lm-swiss", "glm-mtcars-interaction", "blr-birthwt-treatment",
                             "clr-infert", "cox-veteran-strata", "glz-poisson-offset-insurance",
                             "glz-logit-number-birthwt", "mlr-iris-squared"}) {
        SCOPED_TRACE(name);
        const std::string model = DataFile(std::string("cases/") + name + "/model.pmml");
        const std::string csv = ReadFile(DataFile(std::string("cases/") + name + "/input.csv"));
        const Finished expected = RunVelscore({"score", model}, csv);
        ASSERT_EQ(expected.exitCode, 0) << expected.err;
        const std::string table = folder_.Write("cases.txt", AsJsonLines(ParseCsv(csv)));
        for (const char* threads : {"1", "3"}) {
            const Finished run = RunVelscore({"score", model, table, "--threads", threads});
            EXPECT_EQ(run.out, expected.out);
            EXPECT_EQ(run.err, expected.err);
        }
        // And as JSON each cell is what it is in CSV.
        const Finished run = RunVelscore({"score", model, "--format", "jsonl"}, csv);
        EXPECT_EQ(run.err, expected.err);
        const CsvText cells = ParseCsv(expected.out);
        const std::vector<Json> rows = ParseLines(run.out);
        ASSERT_EQ(rows.size(), cells.rows.size());
        for (size_t row = 0; row < rows.size(); ++row) {
            ASSERT_EQ(rows[row].size(), cells.header.size());
            size_t column = 0;
            for (const auto& [key, value] : rows[row].items()) {
                EXPECT_EQ(key, cells.header[column]);
                const std::string& cell = cells.rows[row][column++];
                if (cell.empty()) {
                    EXPECT_TRUE(value.is_null()) << key;
                } else if (value.is_number()) {
                    EXPECT_EQ(value.get<double>(), std::strtod(cell.c_str(), nullptr)) << key;
                } else {
                    EXPECT_EQ(value, cell) << key;
                    EXPECT_TRUE(key == "prediction" || key == "status_field") << key;
                }
            }
        }
    }
}

TEST_F(JsonTables, RowsHoldNumbersTextsAndNull)
{
    const Finished run = Score("x,sex\n1,m\n,f\n", {"--format", "jsonl"});
    EXPECT_EQ(run.out.substr(0, run.out.find(",\"ci_lower\"")), R"({"prediction":13,"std_dev":2)");
    EXPECT_TRUE(run.out.ends_with(
        "\n{\"prediction\":null,\"std_dev\":null,\"ci_lower\":null,\"ci_upper\":null,"
        "\"status\":90029,\"status_field\":\"x\"}\n"))
        << run.out;
}

TEST_F(JsonTables, KeptValuesStayWhatTheyWere)
{
    const std::string table =
        "{\"x\":1,\"sex\":\"m\",\"t\":\"a\\u00e9\\n\",\"n\":0.50,\"w\":true,\"e\":\"\"}\n"
        "{\"sex\":\"m\",\"x\":1e0,\"n\":null,\"w\":1e999}\n";
    const Finished run =
        Score(table, {"--format", "jsonl", "--keep", "w,n,t,e,x", "--columns", "prediction"});
    EXPECT_EQ(run.out,
              "{\"w\":true,\"n\":0.50,\"t\":\"a\\u00e9\\n\",\"e\":\"\",\"x\":1,\"prediction\":13}\n"
              "{\"w\":1e999,\"n\":null,\"t\":null,\"e\":null,\"x\":1e0,\"prediction\":13}\n")
        << run.err;
    EXPECT_EQ(Score(table, {"--keep", "w,n,t,e,x", "--columns", "prediction"}).out,
              "w,n,t,e,x,prediction\ntrue,0.50,\"a\xC3\xA9\n\",,1,13\n1e999,,,,1e0,13\n");
    // Of CSV they are texts.
    EXPECT_EQ(
        Scores("x,sex,n\n1,m,0.50\n1,m,\n", {"--keep", "n", "--columns", "prediction"}),
        (std::vector<Json>{{{"n", "0.50"}, {"prediction", 13}}, {{"n", ""}, {"prediction", 13}}}));
}

TEST_F(JsonTables, TextThatIsntUtf8IsWrittenWithReplacements)
{
    const std::vector<Json> rows = Scores("x,sex,n\n1,m,a\xFF\n", {"--keep", "n"});
    ASSERT_EQ(rows.size(), 1u);
    EXPECT_EQ(rows[0]["n"], "a\xEF\xBF\xBD");
}

TEST_F(JsonTables, SuffixOfTheOutputTellsItsFormUnlessTheFormIsTold)
{
    const std::string csv = Score("x,sex\n1,m\n").out;
    const std::string json = Score("x,sex\n1,m\n", {"--format", "jsonl"}).out;
    for (const char* name : {"a.jsonl", "a.ndjson", "a.b.jsonl"}) {
        const std::string file = folder_.Path(name);
        EXPECT_EQ(Score("x,sex\n1,m\n", {"-o", file}).exitCode, 0);
        EXPECT_EQ(ReadFile(file), json) << name;
        EXPECT_EQ(Score("x,sex\n1,m\n", {"-o", file, "--format", "csv"}).exitCode, 0);
        EXPECT_EQ(ReadFile(file), csv) << name;
    }
    const std::string file = folder_.Path("a.csv");
    EXPECT_EQ(Score("x,sex\n1,m\n", {"-o", file, "--format", "jsonl"}).exitCode, 0);
    EXPECT_EQ(ReadFile(file), json);
    for (const char* unpack : {"a.jsonl.gz | gzip -dc", "a.ndjson.zst | zstd -qdc"}) {
        const std::string name(unpack, std::string(unpack).find(' '));
        EXPECT_EQ(Score("x,sex\n1,m\n", {"-o", folder_.Path(name)}).exitCode, 0);
        EXPECT_EQ(Shell("cd \"$2\" && cat " + std::string(unpack)).out, json);
        // Without rows it is a compressed file all the same.
        EXPECT_EQ(Score("x,sex\n", {"-o", folder_.Path(name)}).exitCode, 0);
        const Finished none = Shell("cd \"$2\" && cat " + std::string(unpack));
        EXPECT_EQ(none.exitCode, 0) << none.err;
        EXPECT_EQ(none.out + none.err, "");
    }
}

TEST_F(JsonTables, CountTheirRowsInFullWhenTheRunEndsEarly)
{
    const Finished run = Score("{\"x\":1,\"sex\":\"m\"}\n{\"x\":2}\n[]\n", {"--format", "jsonl"});
    EXPECT_EQ(run.exitCode, 3);
    EXPECT_NE(run.err.find("row 3 isn't a JSON object on a line of its own: it doesn't begin with "
                           "'{' [269340]"),
              std::string::npos)
        << run.err;
    EXPECT_NE(run.err.find("whole rows written before that: 2\n"), std::string::npos) << run.err;
    EXPECT_EQ(ParseLines(run.out).size(), 2u);
}

TEST_F(JsonTables, RowsThatCantBeReadGoToTheRejects)
{
    const std::string rejects = folder_.Path("rejects.csv");
    const std::vector<Json> rows = Scores(
        "{\"x\":1,\"sex\":\"m\",\"k\":1,\"u\":{}}\n\n{\"x\":1,}\n{\"x\":[1]}\n"
        "{\"x\":1,\"k\":{}}\n{\"x\":1,\"x\":1}\n{\"x\":\"\xFF\"}\n{\"x\":\"one\"}\n",
        {"--rejects", rejects, "--keep", "k"});
    ASSERT_EQ(rows.size(), 7u);
    EXPECT_EQ(rows[0]["prediction"], 13);
    EXPECT_EQ(rows[0]["k"], 1);
    for (size_t i = 1; i < rows.size(); ++i) {
        EXPECT_TRUE(rows[i]["prediction"].is_null()) << i;
        EXPECT_TRUE(rows[i]["k"].is_null()) << i;
        EXPECT_GT(rows[i]["status"], 0) << i;
    }
    const CsvText table = ParseCsv(ReadFile(rejects));
    EXPECT_EQ(table.Texts("row"), (Texts{"2", "3", "4", "5", "6", "7"}));
    EXPECT_EQ(table.Texts("byte_offset"), (Texts{"32", "41", "51", "66", "80", "90"}));
    EXPECT_EQ(table.Texts("class"), (Texts{"not JSON", "nested value", "nested value", "key twice",
                                           "encoding", "not a number"}));
    EXPECT_EQ(table.Texts("column"), (Texts{"", "x", "k", "x", "", "x"}));
    EXPECT_EQ(table.Texts("code"),
              (Texts{"269340", "269341", "269341", "269342", "269325", "269050"}));
    EXPECT_EQ(table.Texts("record")[1], "{\"x\":[1]}");
}

TEST_F(JsonTables, ColumnThatTheFirstObjectLacksIsMissing)
{
    const Finished run = Score("{\"x\":1}\n{\"x\":1,\"sex\":\"m\"}\n");
    EXPECT_EQ(run.exitCode, 3);
    EXPECT_NE(run.err.find("no column 'sex'"), std::string::npos) << run.err;
    EXPECT_NE(run.err.find("give it every key, null where there is no value"), std::string::npos)
        << run.err;
}

struct Refusal {
    Texts options;
    std::string told;
};

TEST_F(JsonTables, OptionsOfCsvAreWrongUsage)
{
    const std::string table = "{\"x\":1,\"sex\":\"m\"}\n";
    for (const Refusal& refusal :
         {Refusal{{"--no-header"}, "--no-header has no meaning for standard input"},
          Refusal{{"--delimiter", ","}, "--delimiter has no meaning for standard input"},
          Refusal{{"--delimiter", "tab"}, "--delimiter has no meaning for standard input"},
          Refusal{{"--format", "jsonl", "--out-delimiter", ";"},
                  "--out-delimiter has no meaning for an output of JSON Lines"},
          Refusal{{"-o", folder_.Path("x.jsonl"), "--out-delimiter", ";"},
                  "--out-delimiter has no meaning for an output of JSON Lines"},
          Refusal{{"--format", "json"}, "none of csv, jsonl"}}) {
        const Finished run = Score(table, refusal.options);
        EXPECT_EQ(run.exitCode, 1) << refusal.told;
        EXPECT_NE(run.err.find(refusal.told), std::string::npos) << run.err;
        EXPECT_EQ(run.out, "");
    }
    EXPECT_EQ(Score(table, {"--out-delimiter", ";", "--columns", "prediction,status"}).out,
              "prediction;status\n13;0\n");
}

TEST_F(JsonTables, DecimalMarkIsThatOfStringsAndOfCsvAlone)
{
    const std::string table =
        "{\"x\":1.5,\"sex\":\"m\"}\n{\"x\":\"1,5\",\"sex\":\"m\"}\n"
        "{\"x\":\"1.5\",\"sex\":\"m\"}\n{\"x\":15e-1,\"sex\":\"f\"}\n";
    const Texts columns{"--decimal", ",", "--columns", "prediction,status", "--keep", "x"};
    const std::vector<Json> rows = Scores(table, columns);
    ASSERT_EQ(rows.size(), 4u);
    EXPECT_EQ(rows[0].dump(), R"({"x":1.5,"prediction":14,"status":0})");
    EXPECT_EQ(rows[1].dump(), R"({"x":"1,5","prediction":14,"status":0})");
    EXPECT_EQ(rows[2]["status"], 269050);
    EXPECT_EQ(rows[3].dump(), R"({"x":1.5,"prediction":4,"status":0})");
    Texts options = columns;
    options.insert(options.end(), {"--out-delimiter", ";"});
    EXPECT_EQ(Score(table, options).out,
              "x;prediction;status\n1.5;14;0\n1,5;14;0\n1.5;;269050\n15e-1;4;0\n");
}

TEST_F(JsonTables, OfOtherOrdersAndFormsGoTogetherOrAreRefused)
{
    const std::string first =
        folder_.Write("1.jsonl", "{\"x\":1,\"sex\":\"m\"}\n{\"x\":2,\"sex\":\"m\"}\n");
    const std::string second = folder_.Write("2.jsonl", "{\"sex\":\"m\",\"z\":0,\"x\":3}\n");
    const Texts predictions{"--columns", "prediction"};
    const auto run = [&](const std::string& other) {
        return Score("", {first, other, "--columns", "prediction"});
    };
    EXPECT_EQ(run(second).out, "prediction\n13\n15\n17\n");
    const Finished lacking = run(folder_.Write("3.jsonl", "{\"x\":1}\n"));
    EXPECT_EQ(lacking.exitCode, 3);
    EXPECT_NE(lacking.err.find("3.jsonl has no column where"), std::string::npos) << lacking.err;
    EXPECT_NE(lacking.err.find("'sex'"), std::string::npos) << lacking.err;
    const Finished other = run(folder_.Write("4.csv", "x,sex\n1,m\n"));
    EXPECT_EQ(other.exitCode, 3);
    EXPECT_NE(other.err.find("4.csv is comma-separated values, " + first + " JSON Lines"),
              std::string::npos)
        << other.err;
}

TEST_F(JsonTables, CompressedOnesAndThoseToEmitAreReadToo)
{
    const std::string table =
        "{\"y\":1,\"x\":1.5,\"sex\":\"m\"}\n{\"y\":2,\"x\":2.5,\"sex\":\"f\"}\n";
    folder_.Write("t.jsonl", table);
    const std::string plain = Score(table).out;
    EXPECT_EQ(Shell("gzip -c \"$2/t.jsonl\" | \"$0\" score \"$1\"").out, plain);
    EXPECT_EQ(Shell("zstd -qc \"$2/t.jsonl\" | \"$0\" score \"$1\"").out, plain);
    const std::string csv = folder_.Write("t.csv", "y,x,sex\n1,1.5,m\n2,2.5,f\n");
    const Finished expected = RunVelscore({"verify", model_, "--emit", csv});
    const Finished run = RunVelscore({"verify", model_, "--emit", folder_.Path("t.jsonl")});
    EXPECT_EQ(run.exitCode, 0) << run.err;
    EXPECT_EQ(run.out, expected.out);
}

TEST_F(JsonTables, HoldCurvesAndTheDocumentsOwnColumns)
{
    const std::string cox = DataFile("cases/cox-veteran-strata/");
    const CsvText csv = ParseCsv(RunVelscore({"curve", cox + "model.pmml", cox + "input.csv"}).out);
    const std::vector<Json> curves = ParseLines(
        RunVelscore({"curve", cox + "model.pmml", cox + "input.csv", "--format", "jsonl"}).out);
    ASSERT_EQ(curves.size(), csv.rows.size());
    for (size_t i = 0; i < curves.size(); ++i) {
        size_t column = 0;
        for (const auto& [key, value] : curves[i].items()) {
            ASSERT_EQ(key, csv.header[column]);
            const std::string& cell = csv.rows[i][column++];
            ASSERT_EQ(value.is_null(), cell.empty());
            if (!cell.empty()) {
                ASSERT_EQ(value.get<double>(), std::strtod(cell.c_str(), nullptr));
            }
        }
        ASSERT_EQ(column, 4u);
    }
    TestModel model;
    model.afterSchema =
        "<Output><OutputField name='fit' feature='predictedValue'/>"
        "<OutputField name='kind' feature='transformedValue' optype='categorical' "
        "dataType='string'><FieldRef field='sex'/></OutputField></Output>";
    const Finished run = RunVelscore({"score", folder_.Write("own.pmml", model.Text()), "--output",
                                      "document", "--format", "jsonl"},
                                     "x,sex\n1,m\n,f\n");
    EXPECT_EQ(run.out,
              "{\"fit\":13,\"kind\":\"m\",\"status\":0,\"status_field\":null}\n"
              "{\"fit\":null,\"kind\":null,\"status\":90029,\"status_field\":\"x\"}\n")
        << run.err;
}

TEST_F(JsonTables, OutputFieldCalledLikeTheStatusIsRefused)
{
    TestModel model;
    model.afterSchema = "<Output><OutputField name='status' feature='predictedValue'/></Output>";
    const Finished run = RunVelscore({"score", folder_.Write("own.pmml", model.Text()), "--output",
                                      "document", "--format", "jsonl"},
                                     "x,sex\n1,m\n");
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_NE(run.err.find("the key 'status' twice"), std::string::npos) << run.err;
}

TEST_F(JsonTables, MembersThatNobodyReadsCostNoMemory)
{
    std::string members;
    for (int i = 0; i < 1500000; ++i) members += "\"z\":1,";
    const std::string line = "{" + members + "\"x\":1,\"sex\":\"m\"}\n";
    RunningVelscore running({"score", model_, "--threads", "1", "--columns", "prediction"});
    ASSERT_TRUE(running.Write("{\"x\":1,\"sex\":\"m\"}\n" + line + line + line));
    running.AwaitInputTaken();
    // The parser's some 6 bytes for each of a line, and the line itself in buffers that double.
    // A sanitizer's own memory comes on top.
    EXPECT_LT(running.PeakKilobytes(), kIsSanitized ? 1000000 : 160000);
    running.CloseInput();
    EXPECT_EQ(running.Finish().out, "prediction\n13\n13\n13\n13\n");
}

}  // namespace
}  // namespace MCVelscore_850
