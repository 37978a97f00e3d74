// Runs over a few rows: what is written of them, line by line, and told.
#include <fstream>
#include <iterator>
#include <stdexcept>

#include <fmt/format.h>
#include <gtest/gtest.h>

#include "engine/scoring/blocktask.h"
#include "engine/scoring/curveshaper.h"
#include "engine/scoring/resultschema.h"
#include "engine/scoring/scoringsession.h"
#include "host/messages/messages.h"
#include "tests/engine/smallmodels.h"
#include "tests/scratchfolder.h"

namespace MCVelscore_850 {
namespace {

using Texts = std::vector<std::string>;

std::string ReadWhole(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

class SmallRun : public testing::Test {
protected:
    // What is written of one table; the rejects go beside it where they are asked for.
    std::string Written(const LoadedModel& model, const std::string& table,
                        const ScoringOptions& options = {}, const std::string& name = "cases.csv")
    {
        ScoringSession session(model, {folder_.Write(name, table)}, options);
        RowWriter writer(folder_.Path("rows"));
        std::optional<RowWriter> rejects;
        if (options.rejects) rejects.emplace(folder_.Path("rejects"));
        session.Run(writer, rejects ? &*rejects : nullptr);
        writer.Close();
        if (rejects) rejects->Close();
        report_ = session.Report();
        return ReadWhole(folder_.Path("rows"));
    }
    ScratchFolder folder_;
    ScoringReport report_;
};

// y = 1 + 2 x + 10 [sex = m].
TEST_F(SmallRun, DefaultsOfTheDocumentStandForCasesWithoutAScore)
{
    TestModel model;
    model.afterSchema =
        "<Output><OutputField name='fit'/><OutputField name='se' feature='standardError'/>"
        "</Output><Targets><Target field='y'><TargetValue defaultValue='7'/></Target></Targets>";
    EXPECT_EQ(
        Written(OpenText(model.Text(), {.output = OutputColumns::Document}), "x,sex\n2,m\n,m\n"),
        "fit,se,status,status_field\n15,2,0,\n7,,90029,x\n");
    EXPECT_EQ(report_.scored, 1);
    EXPECT_EQ(report_.NotScoredCount(), 1);
    EXPECT_EQ(report_.rowsWritten, 2);
}

// exp(-0.25) where x is 0.
TEST_F(SmallRun, CurvesKeepColumnsOfTheirCases)
{
    ScoringOptions options;
    options.curves = true;
    options.output.keep = {"id"};
    options.output.tableColumn = "table";
    options.rejects = true;
    const LoadedModel model = OpenText(CoxText());
    const std::string rows = Written(model, "id,x\na,0\nb,\ntorn\n", options);
    const std::string table = folder_.Path("cases.csv");
    EXPECT_TRUE(rows.starts_with("table,id,row,time,survival,cum_hazard\n" + table +
                                 ",a,1,2,0.7788007830714049,0.25\n" + table + ",a,1,5,"))
        << rows;
    EXPECT_TRUE(rows.ends_with("\n" + table + ",b,2,,,\n" + table + ",,3,,,\n")) << rows;
    EXPECT_EQ(report_.rejected, 2);
    EXPECT_EQ(report_.rowsWritten, 5);
}

TEST_F(SmallRun, ExplanationsHaveALineForATornRow)
{
    ScoringOptions options;
    options.explanations.emplace();
    options.rejects = true;
    EXPECT_EQ(Written(OpenText(TestModel().Text()), "x,sex\n3,m\ntorn\n", options),
              "row,equation,term,value,contribution\n1,,Intercept,1,1\n1,,x,3,6\n1,,[sex=m],1,10\n"
              "2,,,,\n");
}

TEST_F(SmallRun, ATornRowHasItsTableAndStatus)
{
    ScoringOptions options;
    options.output.keep = {"sex"};
    options.output.tableColumn = "table";
    options.output.columns = {"prediction", "status", "status_field"};
    options.rejects = true;
    const std::string rows = Written(OpenText(TestModel().Text()), "x,sex\n2,m\ntorn\n", options);
    const std::string table = folder_.Path("cases.csv");
    EXPECT_EQ(rows, fmt::format("table,sex,prediction,status,status_field\n{0},m,15,0,\n"
                                "{0},,,{1},\n",
                                table, kCaseNotReadable));
}

TEST_F(SmallRun, ATornRowHasNothingInTheColumnsOfTheDocument)
{
    TestModel model;
    model.afterSchema =
        "<Output><OutputField name='fit'/><OutputField name='se' feature='standardError'/>"
        "</Output>";
    ScoringOptions options;
    options.rejects = true;
    EXPECT_EQ(Written(OpenText(model.Text(), {.output = OutputColumns::Document}),
                      "x,sex\n2,m\ntorn\n", options),
              fmt::format("fit,se,status,status_field\n15,2,0,\n,,{},\n", kCaseNotReadable));
}

// An output field may be called as the status is: columns of one name are two, keys one.
TEST_F(SmallRun, KeysThatWouldStandTwiceAreRefused)
{
    TestModel model;
    model.afterSchema = "<Output><OutputField name='status'/></Output>";
    const LoadedModel opened = OpenText(model.Text(), {.output = OutputColumns::Document});
    EXPECT_EQ(Written(opened, "x,sex\n2,m\n"), "status,status,status_field\n15,0,\n");
    ScoringOptions options;
    options.form.table = TableForm::JsonLines;
    try {
        Written(opened, "x,sex\n2,m\n", options);
        ADD_FAILURE() << "taken";
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.Kind(), FailureKind::Usage);
        EXPECT_EQ(failure.Code(), kOutputKeyTwice);
        EXPECT_EQ(failure.Arguments(), Texts{"status"});
    }
}

TEST_F(SmallRun, AnUnknownColumnIsRefusedWithThoseThatThereAre)
{
    ScoringOptions options;
    options.output.columns = {"predicton"};
    try {
        Written(OpenText(ClassifyingText()), "x\n1\n", options);
        ADD_FAILURE() << "taken";
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.Kind(), FailureKind::Usage);
        EXPECT_EQ(failure.Code(), kUnknownResultColumn);
        EXPECT_EQ(failure.Arguments(),
                  (Texts{"predicton",
                         "prediction, probability(no), probability(yes), status, "
                         "status_field"}));
        EXPECT_NE(failure.Remedy().find("'prediction'"), std::string::npos) << failure.Remedy();
    }
}

// In JSON a number has a point, whatever mark texts have; a text is a text.
TEST_F(SmallRun, JsonNumbersAndTextsWithADecimalComma)
{
    ScoringOptions options;
    options.dialect.decimal = ',';
    options.output.columns = {"prediction"};
    TestModel model;
    model.sexField =
        "<DataField name='sex' optype='categorical' dataType='string'>"
        "<Value value='f'/><Value value='1.5'/></DataField>";
    const LoadedModel opened = OpenText(Replaced(model.Text(), "value=\"m\"", "value=\"1.5\""));
    EXPECT_EQ(Written(opened, "{\"x\":2.5,\"sex\":\"f\"}\n{\"x\":\"2,5\",\"sex\":1.5}\n", options,
                      "cases.jsonl"),
              "prediction\n6\n16\n");
}

// Of JSON what isn't read isn't cut off; what is kept is read.
TEST_F(SmallRun, JsonKeepsItsValues)
{
    ScoringOptions options;
    options.output.keep = {"id"};
    options.output.columns = {"prediction"};
    EXPECT_EQ(Written(OpenText(TestModel().Text()), "{\"id\":\"a\",\"x\":1,\"sex\":\"f\"}\n",
                      options, "cases.jsonl"),
              "id,prediction\na,3\n");
    options.curves = true;
    options.output.columns.clear();
    const std::string rows =
        Written(OpenText(CoxText()), "{\"id\":\"a\",\"x\":0}\n", options, "cases.jsonl");
    EXPECT_TRUE(rows.starts_with("id,row,time,survival,cum_hazard\na,1,2,")) << rows;
}

// A value that nobody reads may be anything; one that is kept has to be a value.
TEST_F(SmallRun, JsonKeepsNoNestedValues)
{
    for (const bool curves : {false, true}) {
        const LoadedModel model = OpenText(curves ? CoxText() : TestModel().Text());
        const std::string row = "{\"id\":[1],\"x\":1,\"sex\":\"f\",\"time\":3}\n";
        ScoringOptions options;
        options.curves = curves;
        Written(model, row, options, "cases.jsonl");
        EXPECT_EQ(report_.scored, 1);
        options.output.keep = {"id"};
        try {
            Written(model, row, options, "cases.jsonl");
            ADD_FAILURE() << "taken";
        } catch (const Failure& failure) {
            EXPECT_EQ(failure.Code(), kNestedValue);
        }
    }
}

// Escapes are undone in each row anew, and a text has its end.
TEST_F(SmallRun, JsonTextsWithEscapes)
{
    ScoringOptions options;
    options.output.columns = {"prediction"};
    options.rejects = true;
    const LoadedModel model = OpenText(TestModel().Text());
    std::string table;
    for (int row = 0; row < 4; ++row) table += "{\"x\":1,\"sex\":\"\\u006d\"}\n";
    table += "{\"x\":\"1\"2,\"sex\":\"m\"}\n{\"x\":1,\"sex\":\"m}\n";
    EXPECT_EQ(Written(model, table, options, "cases.jsonl"), "prediction\n13\n13\n13\n13\n\n\n");
    EXPECT_EQ(report_.rejected, 2);
}

// What is wrong with its shape goes before what is wrong with its bytes.
TEST_F(SmallRun, ARowIsRejectedForOneReason)
{
    ScoringOptions options;
    options.rejects = true;
    Written(OpenText(TestModel().Text()), "x,sex\n1,\"m\"b\xC3(\n1,\xC3(\n1\xC3(\n", options);
    const std::string rejects = ReadWhole(folder_.Path("rejects"));
    EXPECT_EQ(report_.rejected, 3);
    EXPECT_EQ(rejects.find(std::to_string(kRowEncoding)),
              rejects.rfind(std::to_string(kRowEncoding)))
        << rejects;
    EXPECT_NE(rejects.find("quote"), std::string::npos) << rejects;
    EXPECT_NE(rejects.find("too few"), std::string::npos) << rejects;
}

// A later table of objects has to have each of the first one's keys, the first of them too.
TEST_F(SmallRun, OfTablesThatLackAKeyIsRefused)
{
    const LoadedModel model = OpenText(TestModel().Text());
    const std::string first = folder_.Write("a.jsonl", "{\"x\":1,\"sex\":\"m\"}\n");
    for (const auto& [text, place] :
         {std::pair("{\"sex\":\"m\",\"y\":1}\n", "1"), std::pair("{\"x\":1,\"y\":2}\n", "2")}) {
        ScoringSession session(model, {first, folder_.Write("b.jsonl", text)}, {});
        RowWriter writer(folder_.Path("rows"));
        try {
            session.Run(writer);
            ADD_FAILURE() << "taken: " << text;
        } catch (const Failure& failure) {
            EXPECT_EQ(failure.Code(), kOtherHeader);
            EXPECT_EQ(failure.Arguments().at(1), place);
        }
        writer.EndEarly(true);
    }
    // In another order, and with more of them, they are the same columns.
    ScoringSession session(
        model, {first, folder_.Write("c.jsonl", "{\"z\":0,\"sex\":\"f\",\"x\":2}\n")}, {});
    RowWriter writer(folder_.Path("rows"));
    session.Run(writer);
    writer.Close();
    EXPECT_EQ(session.Report().scored, 2);
}

std::string ManyRows(size_t rows)
{
    std::string table = "x,sex\n";
    for (size_t row = 0; row < rows; ++row) table += fmt::format("{},f\n", row);
    return table;
}
ScoringOptions InSmallBlocks(size_t threads = 1)
{
    ScoringOptions options;
    options.threads = threads;
    options.blockBytes = 4096;
    return options;
}
constexpr size_t kRows = 30000;  // more than a table's first bytes

TEST_F(SmallRun, AStopEndsItBehindAWholeBlock)
{
    const LoadedModel model = OpenText(TestModel().Text());
    StopFlag stop{false};
    ScoringSession session(model, {folder_.Write("cases.csv", ManyRows(kRows))}, InSmallBlocks(),
                           &stop);
    session.OnProgress([&](uint64_t, int64_t) { stop = true; });
    RowWriter writer(folder_.Path("rows"));
    session.Run(writer);
    writer.EndEarly(true);
    EXPECT_TRUE(session.Report().interrupted);
    EXPECT_GT(session.Report().rowsWritten, 0);
    EXPECT_LT(session.Report().rowsWritten, static_cast<int64_t>(kRows));
    EXPECT_EQ(session.Report().scored, session.Report().rowsWritten);
}

// A task that finds the flag set in the midst of a block leaves the rest of it.
TEST_F(SmallRun, AStopMeanwhileLeavesTheRestOfABlock)
{
    const LoadedModel model = OpenText(TestModel().Text());
    for (const size_t threads : {1U, 3U}) {
        StopFlag stop{false};
        ScoringSession session(model, {folder_.Write("cases.csv", ManyRows(kRows))},
                               InSmallBlocks(threads), &stop);
        int blocks = 0;
        session.OnProgress([&](uint64_t, int64_t) { stop = ++blocks > 4; });
        RowWriter writer(folder_.Path("rows"));
        session.Run(writer);
        writer.EndEarly(true);
        EXPECT_TRUE(session.Report().interrupted);
        EXPECT_LT(session.Report().rowsWritten, static_cast<int64_t>(kRows));
    }
}

// A task that was stopped says so: its block doesn't count as done.
TEST_F(SmallRun, ABlockThatIsStoppedIsNoWholeOne)
{
    const LoadedModel model = OpenText(TestModel().Text());
    TableReader reader({folder_.Write("cases.csv", "x,sex\n1,m\n")}, {}, {});
    const ResultSchema schema(model.Description());
    const OutputShaper shaper(schema, reader.Header(), reader.NameOf(0), {});
    const CurveShaper curves({}, {}, reader.Header(), reader.NameOf(0));
    StopFlag stop{true};
    const BlockPlan plan{.model = model,
                         .reader = reader,
                         .shaper = shaper,
                         .curves = curves,
                         .table = {},
                         .form = {},
                         .stop = &stop};
    BlockTask task(plan);
    ASSERT_TRUE(reader.Next(task.Records()));
    for (const bool isStopped : {true, false, true}) {
        stop = isStopped;
        task.Run(0);
        EXPECT_EQ(task.IsStopped(), isStopped);
        EXPECT_EQ(task.WhyEnded(), nullptr);
        EXPECT_EQ(task.Report().scored, isStopped ? 0 : 1);
    }
    EXPECT_FALSE(reader.Next(task.Records()));
}

// Whoever is told of the progress may throw: the report stands all the same.
TEST_F(SmallRun, IsReportedWhereSomethingElseEndsIt)
{
    const LoadedModel model = OpenText(TestModel().Text());
    ScoringSession session(model, {folder_.Write("cases.csv", ManyRows(kRows))}, InSmallBlocks());
    // More rows than the writer holds back.
    session.OnProgress([](uint64_t, int64_t rows) {
        if (rows > static_cast<int64_t>(kRows) / 2) throw std::runtime_error("enough");
    });
    RowWriter writer(folder_.Path("rows"));
    EXPECT_THROW(session.Run(writer), std::runtime_error);
    EXPECT_GT(session.Report().rowsWritten, 0);
    writer.EndEarly(true);
}

// Values that a factor doesn't list are counted, over both parts of a run that is gone on with.
TEST_F(SmallRun, CountsUnlistedValuesOfTheRunBefore)
{
    TestModel parts;
    parts.sexField =
        "<DataField name='sex' optype='categorical' dataType='string'><Extension "
        "extender='velscore' name='unlistedCategories' value='accept'/><Value value='f'/>"
        "<Value value='m'/></DataField>";
    const LoadedModel model = OpenText(parts.Text());
    std::string table = "x,sex\n";
    for (size_t row = 0; row < kRows; ++row) {
        table += fmt::format("{},{}\n", row, row % 100 == 7 ? "q" : "m");
    }
    const std::string path = folder_.Write("cases.csv", table);
    const std::string rows = folder_.Path("rows");
    StopFlag stop{false};
    RunPosition position;
    {
        ScoringSession session(model, {path}, InSmallBlocks(), &stop);
        session.OnCheckpoint([&](const RunPosition& reached) { position = reached; });
        session.OnProgress([&](uint64_t, int64_t) { stop = true; });
        RowWriter writer(rows);
        session.Run(writer);
        writer.EndEarly(false);
        ASSERT_EQ(session.Report().unlisted.size(), 1U);
        EXPECT_GT(session.Report().unlisted[0].count, 0);
        EXPECT_LT(session.Report().unlisted[0].count, static_cast<int64_t>(kRows / 100));
    }
    ScoringSession session(model, {path}, {});
    RowWriter writer(rows, Compression::None, position.output);
    session.StartAt(position);
    session.Run(writer);
    writer.Close();
    ASSERT_EQ(session.Report().unlisted.size(), 1U);
    EXPECT_EQ(session.Report().unlisted[0].column, "sex");
    EXPECT_EQ(session.Report().unlisted[0].count, static_cast<int64_t>(kRows / 100));
    EXPECT_EQ(session.Report().scored, static_cast<int64_t>(kRows));
}

// Without a replacement the treatment says nothing: the model answers, with its own status.
TEST_F(SmallRun, InvalidValuesByTheirTreatment)
{
    struct Row {
        const char* treatment;
        const char* row;
    };
    const Row rows[] = {
        {"invalidValueTreatment=\"asValue\"", ",90029,x"},
        {"invalidValueTreatment=\"asValue\" invalidValueReplacement=\"3\"", "7,0,"},
        {"invalidValueTreatment=\"asIs\"", "19,0,"},
        {"invalidValueTreatment=\"returnInvalid\"", ",269052,x"},
        {"invalidValueTreatment=\"asMissing\" missingValueReplacement=\"4\"", "9,0,"},
        {"", ",90029,x"},
    };
    ScoringOptions options;
    options.output.columns = {"prediction", "status", "status_field"};
    for (const Row& row : rows) {
        TestModel model;
        model.xMining = fmt::format("<MiningField name=\"x\" {}/>", row.treatment);
        const std::string text = Replaced(
            model.Text(), "<DataField name=\"x\" optype=\"continuous\" dataType=\"double\"/>",
            "<DataField name=\"x\" optype=\"continuous\" dataType=\"double\"><Interval "
            "closure=\"closedClosed\" leftMargin=\"0\" rightMargin=\"5\"/></DataField>");
        EXPECT_EQ(Written(OpenText(text, {.asIs = true}), "x,sex\n9,f\n5,f\n", options),
                  fmt::format("prediction,status,status_field\n{}\n11,0,\n", row.row))
            << row.treatment;
        // A missing value is no invalid one.
        EXPECT_EQ(
            Written(OpenText(text, {.asIs = true}), "x,sex\n,f\n", options),
            fmt::format("prediction,status,status_field\n{}\n",
                        model.xMining.find("missingV") == std::string::npos ? ",90029,x" : "9,0,"))
            << row.treatment;
    }
}

TEST(WhyNoLevel, TellsWhatTheModelLacks)
{
    const auto why = [](const std::string& text) {
        return WhyNoLevel(OpenText(text).Description());
    };
    EXPECT_EQ(why(ClassifyingText()),
              "has no limits: it predicts a category (multinomial logistic regression)");
    EXPECT_EQ(why(CoxText()), "has no limits: its family has none (Cox regression)");
    EXPECT_EQ(why(Without(TestModel().Text(), "<PCovMatrix", "</PCovMatrix>")),
              "has no limits: the document has no covariances (PCovMatrix)");
}

// By the delta method: p (1 - p) x s where the slope alone has a variance, of s^2.
TEST_F(SmallRun, ErrorsOfProbabilities)
{
    const std::string text =
        Replaced(ClassifyingText(), "<ParamMatrix>",
                 "<PCovMatrix><PCovCell pRow='p0' pCol='p0' tRow='yes' tCol='yes' value='0'/>"
                 "<PCovCell pRow='px' pCol='p0' tRow='yes' tCol='yes' value='0'/>"
                 "<PCovCell pRow='px' pCol='px' tRow='yes' tCol='yes' value='0.25'/></PCovMatrix>"
                 "<ParamMatrix>");
    ScoringOptions options;
    options.results.probabilityErrors = true;
    options.output.columns = {"std_err(probability(yes))"};
    const std::string rows = Written(OpenText(text), "x\n1\n2\n", options);
    double first = 0.0;
    double second = 0.0;
    ASSERT_EQ(std::sscanf(rows.c_str(), "std_err(probability(yes))\n%lf\n%lf", &first, &second), 2)
        << rows;
    EXPECT_NEAR(first, 0.75 * 0.25 * 1.0 * 0.5, 1e-15);
    EXPECT_NEAR(second, 0.9 * 0.1 * 2.0 * 0.5, 1e-15);
}

}  // namespace
}  // namespace MCVelscore_850
