// The library as a file, what it tells of models, curves, files, plain arrays, and threads.

#include <array>
#include <atomic>
#include <cmath>
#include <cstdio>
#include <set>
#include <thread>

#include <gtest/gtest.h>

#include "tests/capi/scored.h"
#include "tests/scratchfolder.h"
#include "tests/system/csvtext.h"
#include "tests/system/runcommand.h"

extern "C" int ScoreInPlainC(const char* document);

namespace velscore_tests {
namespace {

using MCVelscore_850::DataFile;
using MCVelscore_850::ParseCsv;
using MCVelscore_850::ReadFile;
using MCVelscore_850::RunVelscore;
using MCVelscore_850::ScratchFolder;

std::string OutputOf(const std::string& command)
{
    FILE* pipe = popen(command.c_str(), "r");
    std::string text;
    std::array<char, 512> part;
    while (pipe != nullptr && fgets(part.data(), part.size(), pipe) != nullptr) text += part.data();
    EXPECT_EQ(pclose(pipe), 0);
    return text;
}

TEST(Library, ShowsTheFunctionsOfItsHeaderAndNothingElse)
{
    // A line of a symbol: its address, its kind, its name.
    std::set<std::string> shown;
    const std::string symbols = OutputOf("nm -D --defined-only " VELSCORE_LIBRARY);
    for (size_t at = 0; at < symbols.size();) {
        const size_t end = symbols.find('\n', at);
        const std::string line = symbols.substr(at, end - at);
        shown.insert(line.substr(line.rfind(' ') + 1));
        at = end + 1;
    }
    std::set<std::string> declared;
    const std::string header = ReadFile("capi/include/velscore.h");
    for (size_t at = header.find("\nVELSCORE_API "); at != std::string::npos;
         at = header.find("\nVELSCORE_API ", at + 1)) {
        const size_t bracket = header.find('(', at);
        const size_t begin = header.find_last_of(" *", bracket) + 1;
        declared.insert(header.substr(begin, bracket - begin));
    }
    EXPECT_GT(declared.size(), 20U);
    EXPECT_EQ(shown, declared);
}

TEST(Library, IsNamedByItsMajorVersion)
{
    const std::string version = velscore_version();
    const std::string major = version.substr(0, version.find('.'));
    EXPECT_NE(OutputOf("readelf -d " VELSCORE_LIBRARY).find("[libvelscore.so." + major + "]"),
              std::string::npos);
    EXPECT_EQ("velscore " + version + "\n", RunVelscore({"--version"}).out);
}

TEST(Library, NeedsNeitherThePluginNorTheHostAsFiles)
{
    const std::string needs = OutputOf("readelf -d " VELSCORE_LIBRARY);
    EXPECT_NE(needs.find("[libxerces"), std::string::npos);
    EXPECT_EQ(needs.find("[libvelregression"), std::string::npos);
    EXPECT_EQ(needs.find("[libvelscore850"), std::string::npos);
}

TEST(PlainC, OpensBindsAndScores) { EXPECT_EQ(ScoreInPlainC(TestModel().Text().c_str()), 0); }

TEST(Reports, AreThoseOfTheCommand)
{
    for (const char* folder : {"lm-swiss", "cox-veteran-strata", "mlr-birthwt-race"}) {
        const std::string path = DataFile(std::string("cases/") + folder + "/model.pmml");
        EXPECT_EQ(velscore::Model::Open(path).Describe(),
                  RunVelscore({"inspect", "--json", path}).out);
    }
    const std::string records = DataFile("cases/glz-verification-birthwt/model.pmml");
    EXPECT_EQ(velscore::Model::Open(records).Verify(),
              RunVelscore({"verify", "--json", records}).out);
    const std::string text = ReadFile(records);
    EXPECT_NE(velscore::Model::FromText(text).Verify().find("\"differences\": []"),
              std::string::npos);
    try {
        (void)velscore::Model::FromText(TestModel().Text()).Verify();
        FAIL() << "a document without records was verified";
    } catch (const velscore::Error& error) {
        EXPECT_EQ(error.Code(), 269193);
    }
}

// The command's list of one, without the list.
std::string CheckedByTheCommand(const std::string& path, std::vector<std::string> options = {})
{
    options.insert(options.begin(), {"check", "--json", path});
    const std::string list = RunVelscore(options).out;
    std::string entry;
    for (size_t at = list.find("  {"); at < list.size() && list[at] == ' ';) {
        const size_t end = list.find('\n', at);
        entry += list.substr(at + 2, end - at - 1);
        at = end + 1;
    }
    return entry;
}

std::string Checked(const std::string& path, const velscore_options* options)
{
    char* json = nullptr;
    EXPECT_EQ(velscore_check(path.c_str(), options, &json, nullptr), 0);
    std::string text = json == nullptr ? "" : json;
    velscore_free(json);
    return text;
}

TEST(Reports, ACheckOfATextSaysTheSame)
{
    const ScratchFolder folder;
    for (const std::string& document : {TestModel().Text(), std::string("<x/>")}) {
        const std::string path = folder.Write("model.pmml", document);
        velscore_options options = VELSCORE_OPTIONS_INIT;
        options.name = path.c_str();
        char* json = nullptr;
        EXPECT_EQ(velscore_check_text(document.data(), document.size(), &options, &json, nullptr),
                  0);
        EXPECT_EQ(json, Checked(path, nullptr));
        velscore_free(json);
    }
}

TEST(Reports, ACheckSaysWhatTheCommandSaysOfOneDocument)
{
    const ScratchFolder folder;
    const std::string sound = TestModel().Text();
    std::string extras = "<Header/>";
    for (int i = 0; i < 150; ++i) extras += "<Extra/>";
    struct Sample {
        std::string path;
        std::string part;  // of what it says
    };
    for (const Sample& sample :
         {Sample{DataFile("cases/lm-swiss/model.pmml"), "\"findings\": []"},
          Sample{folder.Write("refused.pmml", Replaced(sound, "beta=\"2\"", "beta=\"two\"")),
                 "\"code\": 269001"},
          Sample{folder.Write("faulty.pmml", FaultyText()), "\"near\": \"usageType\""},
          Sample{folder.Write("adapted.pmml", Replaced(sound, "\"4.4\"", "\"4.4.1\"")),
                 "\"rule\": \"short-version\""},
          Sample{folder.Write("many.pmml", Replaced(sound, "<Header/>", extras)),
                 "\"unknown-element\": 50"},
          Sample{folder.Path("none.pmml"), "\"code\": 269101"}}) {
        const std::string report = Checked(sample.path, nullptr);
        EXPECT_EQ(report, CheckedByTheCommand(sample.path));
        EXPECT_NE(report.find(sample.part), std::string::npos) << report;
    }
}

TEST(Reports, FaultsThatAreAllowedAreNotices)
{
    const ScratchFolder folder;
    const std::string path = folder.Write("faulty.pmml", FaultyText());
    const char* const allowed[] = {"unknown-word", "misspelt-attribute"};
    velscore_options options = VELSCORE_OPTIONS_INIT;
    options.allow = allowed;
    options.allow_count = 2;
    const std::string report = Checked(path, &options);
    EXPECT_EQ(report, CheckedByTheCommand(path, {"--allow", "misspelt-attribute"}));
    EXPECT_NE(report.find("\"severity\": \"notice\""), std::string::npos) << report;

    const velscore::DocumentOptions both{.allow = {allowed[0], allowed[1]}};
    for (const auto& model : {velscore::Model::Open(path, both),
                              velscore::Model::FromText(FaultyText(), "faulty.pmml", both)}) {
        const std::string about = model.Describe();
        const size_t notices = about.find("\"notices\": [\n");
        ASSERT_NE(notices, std::string::npos) << about;
        EXPECT_NE(about.find("[misspelt-attribute]", notices), std::string::npos) << about;
    }
    EXPECT_EQ(velscore::Model::Open(path, both).Describe(),
              RunVelscore({"inspect", "--json", path, "--allow", "misspelt-attribute"}).out);
}

// The curves of a case's table, without the column of end times, are those of the command.
void ExpectCurvesOfTheCommand(const std::string& folder, const std::string& endTime,
                              const std::string& policy = {})
{
    SCOPED_TRACE(folder + policy);
    const std::string document = folder + "model.pmml";
    std::vector<std::string> command{"curve", document, folder + "input.csv"};
    if (!policy.empty()) command.insert(command.end(), {"--policy", policy});
    const auto input = ParseCsv(ReadFile(folder + "input.csv"));
    const auto expected = ParseCsv(RunVelscore(command).out);
    const auto model = velscore::Model::Open(document);
    std::vector<MadeArray> columns;
    for (const std::string& name : input.header) {
        if (name == endTime) continue;
        const auto texts = input.Texts(name);
        columns.push_back(Texts(name, {texts.begin(), texts.end()}));
    }
    ArrowArrayStream in = StreamOf(Table(columns));
    ArrowArrayStream out = model.Curve(in, {.policy = policy});
    const ReadTables curves = ReadAll(out);
    ASSERT_EQ(curves.names, expected.header);
    ASSERT_EQ(curves.rows, expected.rows.size());
    for (const std::string& name : curves.names) {
        const auto texts = expected.Texts(name);
        for (size_t row = 0; row < curves.rows; ++row) {
            const Value& value = curves.Named(name)[row];
            ASSERT_EQ(value.number.has_value(), !texts[row].empty()) << name << row;
            if (value.number) {
                ASSERT_EQ(*value.number, std::strtod(texts[row].c_str(), nullptr)) << name << row;
            }
        }
    }
    EXPECT_EQ(alive, 0);
}

TEST(Curves, AreThoseOfTheCommandWithoutAnEndTime)
{
    ExpectCurvesOfTheCommand(DataFile("cases/cox-veteran-strata/"), "time");
}

// A missing value has a replacement, which one policy takes and the others don't.
TEST(Curves, HeedThePolicyAsTheCommandDoes)
{
    const std::string folder = DataFile("cases/missing-cox-replacement/");
    for (const char* policy : {"substitute", "sysmis", "status"}) {
        ExpectCurvesOfTheCommand(folder, "time", policy);
    }
    EXPECT_NE(
        RunVelscore({"curve", folder + "model.pmml", folder + "input.csv"}).out,
        RunVelscore({"curve", folder + "model.pmml", folder + "input.csv", "--policy", "sysmis"})
            .out);
}

TEST(Curves, RefuseAPolicyThatIsNone)
{
    const auto model = velscore::Model::Open(DataFile("cases/cox-veteran-strata/model.pmml"));
    ArrowArrayStream in = StreamOf(Table({Numbers("age", {1.0})}));
    try {
        ArrowArrayStream out = model.Curve(in, {.policy = "guess"});
        out.release(&out);
        FAIL() << "there is no such policy";
    } catch (const velscore::Error& error) {
        EXPECT_EQ(error.Code(), 269403);
    }
    EXPECT_EQ(alive, 0);
}

// A table of the texts of a file, as a stream.
ArrowArrayStream TextsOf(const MCVelscore_850::CsvText& table)
{
    std::vector<MadeArray> columns;
    for (const std::string& column : table.header) {
        const auto texts = table.Texts(column);
        columns.push_back(Texts(column, {texts.begin(), texts.end()}));
    }
    return StreamOf(Table(columns));
}

// The lines are the command's: numbers by their bits.
void ExpectLines(const ReadTables& lines, const MCVelscore_850::CsvText& expected)
{
    ASSERT_EQ(lines.names, expected.header);
    ASSERT_EQ(lines.rows, expected.rows.size());
    for (const std::string& column : lines.names) {
        const auto texts = expected.Texts(column);
        const bool isText = column == "equation" || column == "term";
        for (size_t row = 0; row < lines.rows; ++row) {
            const Value& value = lines.Named(column)[row];
            if (isText) {
                ASSERT_EQ(value.text.value_or(""), texts[row]) << column << row;
                continue;
            }
            ASSERT_EQ(value.number.has_value(), !texts[row].empty()) << column << row;
            if (value.number) {
                ASSERT_EQ(*value.number, std::strtod(texts[row].c_str(), nullptr)) << column << row;
            }
        }
    }
}

// Every family's, with rows that have no score among them.
constexpr const char* kExplained[] = {"lm-swiss",
                                      "mlr-housing-factors",
                                      "cox-lung-centred",
                                      "clr-infert",
                                      "ordinal-logit-housing",
                                      "glz-poisson-offset-insurance",
                                      "missing-lm-no-replacement"};

// What the command is asked, and the library for the same.
struct Asked {
    std::vector<std::string> words;
    std::optional<size_t> top{};
    std::optional<int64_t> baselineRow{};
};

TEST(Explanations, AreThoseOfTheCommand)
{
    const Asked kAsked[] = {{{}},
                            {{"--top", "2"}, 2},
                            {{"--top", "0"}, 0},
                            {{"--baseline", "mean"}, std::nullopt, 0},
                            {{"--baseline", "2"}, std::nullopt, 2},
                            {{"--top", "1", "--baseline", "mean"}, 1, 0}};
    for (const char* name : kExplained) {
        const std::string folder = DataFile(std::string("cases/") + name + "/");
        const auto input = ParseCsv(ReadFile(folder + "input.csv"));
        const auto model = velscore::Model::Open(folder + "model.pmml");
        for (const Asked& asked : kAsked) {
            SCOPED_TRACE(testing::Message() << name << testing::PrintToString(asked.words));
            std::vector<std::string> words{"explain", folder + "model.pmml", folder + "input.csv",
                                           "--long"};
            words.insert(words.end(), asked.words.begin(), asked.words.end());
            const auto expected = ParseCsv(RunVelscore(words).out);
            ASSERT_GE(expected.rows.size(), input.rows.size());
            ArrowArrayStream in = TextsOf(input);
            ArrowArrayStream baseline = TextsOf(input);
            velscore::ScoreOptions options{.top = asked.top};
            if (asked.baselineRow) {
                options.baseline = &baseline;
                options.baselineRow = *asked.baselineRow;
            }
            ArrowArrayStream out = model.Explain(in, options);
            if (!asked.baselineRow) baseline.release(&baseline);
            ExpectLines(ReadAll(out), expected);
            EXPECT_EQ(alive, 0);
        }
    }
}

// y = 1 + 2 x + 10 [sex = m]
TEST(Explanations, ABaselineMayBeARowOfALaterTable)
{
    const auto model = velscore::Model::FromText(TestModel().Text());
    const auto table = [](std::vector<std::optional<double>> x) {
        const size_t rows = x.size();
        return Table({Numbers("x", x), Same("sex", "f", rows)});
    };
    ArrowArrayStream in = StreamOf(table({3.0}));
    ArrowArrayStream baseline =
        StreamOf(std::vector{table({1.0, std::nullopt}), table({5.0, 9.0})});
    ArrowArrayStream out = model.Explain(in, {.baseline = &baseline, .baselineRow = 4});
    EXPECT_EQ(baseline.release, nullptr);
    // 2 * (3 - 9)
    EXPECT_EQ(NumbersOf(ReadAll(out), "contribution"), (std::vector{0.0, -12.0, 0.0}));
    in = StreamOf(table({3.0}));
    baseline = StreamOf(std::vector{table({1.0, std::nullopt}), table({5.0, 9.0})});
    out = model.Explain(in, {.baseline = &baseline});
    // 2 * (3 - 5): the mean of 1, 5 and 9
    EXPECT_EQ(NumbersOf(ReadAll(out), "contribution"), (std::vector{0.0, -4.0, 0.0}));
    EXPECT_EQ(alive, 0);
}

struct BaselineRefusal {
    const char* name;
    int64_t row;
    std::vector<std::optional<double>> x;
    const char* text;
};
void PrintTo(const BaselineRefusal& each, std::ostream* out) { *out << each.name; }

class BaselineRefusals : public testing::TestWithParam<BaselineRefusal> {};
INSTANTIATE_TEST_SUITE_P(
    Each, BaselineRefusals,
    testing::Values(
        BaselineRefusal{"NoScore",
                        2,
                        {1.0, std::nullopt},
                        "'2'; expected is a row that has a "
                        "score; this one has the status 90029"},
        BaselineRefusal{"NoRow", 3, {1.0, 2.0}, "'3'; expected is a row of the baseline's table"},
        BaselineRefusal{"NoCase", 0, {std::nullopt}, "'0'; expected is a table with a case"},
        BaselineRefusal{"Negative", -1, {1.0}, "'-1'; expected is the number of a row"}),
    [](const auto& each) { return std::string(each.param.name); });

TEST_P(BaselineRefusals, AreToldAtOnceAndReleaseBothStreams)
{
    const auto model = velscore::Model::FromText(TestModel().Text());
    const auto& x = GetParam().x;
    ArrowArrayStream in = StreamOf(Table({Numbers("x", {1.0}), Texts("sex", {"m"})}));
    ArrowArrayStream baseline = StreamOf(Table({Numbers("x", x), Same("sex", "m", x.size())}));
    try {
        ArrowArrayStream out =
            model.Explain(in, {.baseline = &baseline, .baselineRow = GetParam().row});
        out.release(&out);
        FAIL() << "a baseline that there isn't";
    } catch (const velscore::Error& error) {
        EXPECT_EQ(error.Code(), 269403);
        EXPECT_EQ(error.Fault(), VELSCORE_FAULT_CALL);
        EXPECT_NE(std::string(error.what()).find(GetParam().text), std::string::npos)
            << error.what();
    }
    EXPECT_EQ(alive, 0);
}

TEST(Explanations, AFaultOfTheBaselineIsTold)
{
    const auto model = velscore::Model::FromText(TestModel().Text());
    ArrowArrayStream in = StreamOf(Table({Numbers("x", {1.0}), Texts("sex", {"m"})}));
    ArrowArrayStream baseline = StreamOf(Table({Numbers("x", {1.0})}));
    try {
        ArrowArrayStream out = model.Explain(in, {.baseline = &baseline});
        out.release(&out);
        FAIL() << "a baseline without a column";
    } catch (const velscore::Error& error) {
        EXPECT_EQ(error.Code(), 269303) << error.what();
    }
    EXPECT_EQ(alive, 0);
}

TEST(Explanations, OfRowsWithoutScoresAreNullsOrWithStrictAnEnd)
{
    const auto model = velscore::Model::FromText(TestModel().Text());
    const auto table = [] {
        return StreamOf(Table({Numbers("x", {1.0, std::nullopt}), Texts("sex", {"m", "f"})}));
    };
    ArrowArrayStream in = table();
    ArrowArrayStream out = model.Explain(in);
    const ReadTables lines = ReadAll(out);
    ASSERT_GT(lines.rows, 2U);
    EXPECT_EQ(lines.Named("row").back().number, 2.0);
    for (const char* name : {"equation", "term", "value", "contribution"}) {
        EXPECT_FALSE(lines.Named(name).back().number.has_value()) << name;
        EXPECT_FALSE(lines.Named(name).back().text.has_value()) << name;
    }
    in = table();
    out = model.Explain(in, {.strict = true});
    std::string error;
    ReadAll(out, &error);
    EXPECT_NE(error.find("row 2 has no score"), std::string::npos) << error;
    EXPECT_EQ(alive, 0);
}

TEST(Curves, OfAnotherFamilyAreRefused)
{
    const auto model = velscore::Model::FromText(TestModel().Text());
    ArrowArrayStream in = StreamOf(Table({Numbers("x", {1.0})}));
    try {
        ArrowArrayStream out = model.Curve(in);
        out.release(&out);
        FAIL() << "a linear model has curves";
    } catch (const velscore::Error& error) {
        EXPECT_EQ(error.Code(), 269404);
    }
    EXPECT_EQ(alive, 0);
}

// Results get bits of what is null with the first of these alone.
TEST(Arrow, RowsBeforeTheFirstNullHaveValues)
{
    for (const size_t null : {0U, 700U, 701U, 999U}) {
        std::vector<std::optional<double>> x(1000, 3.0);
        x[null].reset();
        const ReadTables scores =
            ScoresOf(TestModel().Text(), Table({Numbers("x", x), Same("sex", "m", 1000)}));
        const std::vector<double> predictions = NumbersOf(scores, "prediction");
        ASSERT_EQ(predictions.size(), 1000U);
        for (size_t row = 0; row < 1000; ++row) {
            ASSERT_EQ(predictions[row], row == null ? kNull : 17.0) << row;  // 1 + 2 * 3 + 10
        }
    }
}

// Others' programs may read there, and nothing of this one's memory is theirs.
TEST(Arrow, BehindANullStandsZero)
{
    std::vector<std::optional<double>> x(1000, 3.0);
    for (const size_t null : {0U, 511U, 700U, 999U}) x[null].reset();
    const auto model = velscore::Model::FromText(TestModel().Text());
    ArrowArrayStream in = StreamOf(Table({Numbers("x", x), Same("sex", "m", 1000)}));
    ArrowArrayStream out = model.Score(in);
    ArrowArray scored{};
    ASSERT_EQ(out.get_next(&out, &scored), 0);
    const auto* prediction = static_cast<const double*>(scored.children[0]->buffers[1]);
    for (size_t row = 0; row < 1000; ++row) {
        ASSERT_EQ(prediction[row], x[row] ? 17.0 : 0.0) << row;  // 1 + 2 * 3 + 10
    }
    scored.release(&scored);
    out.release(&out);
    EXPECT_EQ(alive, 0);
}

std::string ManyRows(size_t rows)
{
    std::string table = "id,x,sex\n";
    for (size_t i = 0; i < rows; ++i) {
        table += "r" + std::to_string(i) + "," + (i % 7 == 3 ? "" : std::to_string(i)) +
                 (i % 2 == 0 ? ",m\n" : ",\"f\"\n");
    }
    return table;
}

TEST(Scan, GivesTheSameRowsInTheirOrderForAnyThreads)
{
    constexpr size_t kRows = 100000;  // several blocks of 256 KiB
    const ScratchFolder folder;
    const std::string path = folder.Write("cases.csv", ManyRows(kRows));
    const auto model = velscore::Model::FromText(TestModel().Text());
    for (const size_t threads : {1u, 2u, 5u}) {
        ArrowArrayStream out = model.ScanCsv(path, {.keep = {"id"}}, threads);
        std::string error;
        const ReadTables scores = ReadAll(out, &error);
        EXPECT_EQ(error, "");
        EXPECT_GT(scores.tables, 3U);
        ASSERT_EQ(scores.rows, kRows);
        for (size_t i = 0; i < kRows; ++i) {
            ASSERT_EQ(scores.Named("id")[i].text, "r" + std::to_string(i));
            const double expected = 1 + 2 * static_cast<double>(i) + (i % 2 == 0 ? 10 : 0);
            ASSERT_EQ(scores.Named("prediction")[i].number.value_or(kNull),
                      i % 7 == 3 ? kNull : expected);
            ASSERT_EQ(scores.Named("status_field")[i].text.value_or(""), i % 7 == 3 ? "x" : "");
        }
    }
}

TEST(Scan, AFaultOfTheFileComesAfterTheRowsBeforeIt)
{
    const ScratchFolder folder;
    const std::string path = folder.Write("cases.csv", ManyRows(40000) + "a,b\n" + "r,1,m\n");
    const auto model = velscore::Model::FromText(TestModel().Text());
    ArrowArrayStream out = model.ScanCsv(path, {}, 2);
    std::string error;
    EXPECT_EQ(ReadAll(out, &error).rows, 40000U);
    EXPECT_NE(error.find("[269304]"), std::string::npos) << error;
    EXPECT_NE(error.find("40001"), std::string::npos) << error;
    for (const char* missing : {"nowhere.csv", "-"}) {
        try {
            ArrowArrayStream none = model.ScanCsv(missing);
            none.release(&none);
            FAIL() << "a file that isn't there was opened";
        } catch (const velscore::Error& refusal) {
            EXPECT_EQ(refusal.Code(), 269301);
            EXPECT_EQ(refusal.File(), missing);
        }
    }
}

TEST(Scan, ReadsTablesWithoutAHeaderAndOfOtherMarks)
{
    const ScratchFolder folder;
    const std::string path = folder.Write("cases.csv", "1,5;m\n2;f\n");
    const auto model = velscore::Model::FromText(TestModel().Text());
    velscore_csv_options options = VELSCORE_CSV_OPTIONS_INIT;
    options.delimiter = ";";
    options.decimal = ",";
    options.no_header = 1;
    ArrowArrayStream out{};
    ASSERT_EQ(velscore_scan_csv(model.Get(), path.c_str(), &options, &out, nullptr), 0);
    const ReadTables scores = ReadAll(out);
    // The model reads its factor first.
    EXPECT_EQ(scores.rows, 2U);
    EXPECT_EQ(NumbersOf(scores, "status"), (std::vector<double>{269050, 269050}));
    options.delimiter = ";;";
    velscore_error error = VELSCORE_ERROR_INIT;
    EXPECT_EQ(velscore_scan_csv(model.Get(), path.c_str(), &options, &out, &error), 269403);
    EXPECT_NE(std::string(error.text).find("the option 'delimiter' is ';;'"), std::string::npos);
    velscore_error_clear(&error);
}

TEST(PlainColumns, AreScoredByNameWithBitsTextsAndCodes)
{
    const auto model = velscore::Model::FromText(TestModel().Text());
    velscore::Binding binding = model.Bind({"sex", "unread", "x"});
    constexpr size_t kRows = 1030;
    std::vector<double> x(kRows);
    std::vector<int32_t> sex(kRows);
    std::vector<uint8_t> present((kRows + 7) / 8, 0xFF);
    for (size_t i = 0; i < kRows; ++i) {
        x[i] = static_cast<double>(i);
        sex[i] = static_cast<int32_t>(i % 2);
    }
    x[7] = std::nan("");
    sex[1] = -1;
    sex[3] = 77;
    present[1025 / 8] = static_cast<uint8_t>(~(1U << (1025 % 8)));
    const char* const categories[] = {"f", "m"};
    const velscore::Column columns[] = {
        {sex, categories}, {std::span(x)}, {std::span<const double>(x), present.data()}};
    const velscore::Scores scores = binding.Score(columns);
    const velscore::Scores::Result& prediction = scores.Named("prediction");
    ASSERT_EQ(prediction.numbers.size(), kRows);
    for (size_t i = 0; i < kRows; ++i) {
        const bool isMissing = i == 7 || i == 1 || i == 3 || i == 1025;
        if (isMissing) {
            EXPECT_TRUE(std::isnan(prediction.numbers[i])) << i;
            EXPECT_EQ(scores.status[i], 90029) << i;
            EXPECT_STREQ(scores.statusField[i], i == 1 || i == 3 ? "sex" : "x");
        } else {
            EXPECT_EQ(prediction.numbers[i], 1 + 2 * x[i] + (i % 2 == 1 ? 10 : 0)) << i;
            EXPECT_EQ(scores.status[i], 0) << i;
            EXPECT_EQ(scores.statusField[i], nullptr) << i;
        }
        EXPECT_EQ(prediction.codes[i], -1);
    }
    EXPECT_EQ(scores.Named("std_dev").numbers[0], 2);
    const char* const texts[] = {"m", nullptr};
    const char* const numbers[] = {"1.5", "2"};
    const velscore::Column ofTexts[] = {velscore::Column(std::span<const char* const>(texts)),
                                        velscore::Column(std::span<const char* const>(texts)),
                                        velscore::Column(std::span<const char* const>(numbers))};
    const velscore::Scores two = binding.Score(ofTexts);
    EXPECT_EQ(two.Named("prediction").numbers[0], 14);
    EXPECT_STREQ(two.statusField[1], "sex");
}

TEST(PlainColumns, CategoriesAreCodesWithTheirTexts)
{
    const std::string folder = DataFile("cases/mlr-birthwt-race/");
    const auto model = velscore::Model::Open(folder + "model.pmml");
    const auto input = ParseCsv(ReadFile(folder + "input.csv"));
    const auto expected =
        ParseCsv(RunVelscore({"score", folder + "model.pmml", folder + "input.csv"}).out);
    velscore::Binding binding = model.Bind(input.header);
    std::vector<std::vector<std::string>> texts;
    std::vector<std::vector<const char*>> pointers;
    for (const std::string& name : input.header) texts.push_back(input.Texts(name));
    for (const auto& column : texts) {
        pointers.emplace_back();
        for (const std::string& text : column) pointers.back().push_back(text.c_str());
    }
    std::vector<velscore::Column> columns;
    for (const auto& column : pointers) {
        columns.emplace_back(std::span<const char* const>(column));
    }
    const velscore::Scores scores = binding.Score(columns);
    const auto categories = expected.Texts("prediction");
    for (size_t row = 0; row < categories.size(); ++row) {
        const char* category = binding.Category(scores.Named("prediction").codes[row]);
        ASSERT_NE(category, nullptr) << row;
        EXPECT_EQ(category, categories[row]);
    }
    EXPECT_EQ(binding.Category(-1), nullptr);
    EXPECT_EQ(binding.Category(99), nullptr);
}

// A case of R's, whose numbers stand beside it in tests/data/survival/lung-efron.
TEST(PlainColumns, OfACoxModelAreThoseThatAreNamed)
{
    const auto model = velscore::Model::Open("tests/data/survival/lung-efron/model.pmml");
    velscore::Binding binding =
        model.Bind({"age", "ph.karno", "sex"},
                   {.columns = {"survival@365", "median_survival", "risk", "survival@1500"}});
    const std::vector<double> age{74.0};
    const std::vector<double> karno{90.0};
    const char* const sexes[] = {"male", "female"};
    const std::vector<int32_t> sex{0};
    const velscore::Column columns[] = {{age}, {karno}, {sex, sexes}};
    const velscore::Scores scores = binding.Score(columns);
    EXPECT_NEAR(scores.Named("survival@365").numbers[0], 0.32713094379560925, 1e-12);
    EXPECT_EQ(scores.Named("median_survival").numbers[0], 283.0);
    EXPECT_NEAR(scores.Named("risk").numbers[0], 1.0361871642727902, 1e-12);
    EXPECT_TRUE(std::isnan(scores.Named("survival@1500").numbers[0]));
    EXPECT_THROW(model.Bind({"age", "ph.karno", "sex"}, {.columns = {"survival@-1"}}),
                 velscore::Error);
}

TEST(PlainColumns, AreRefusedWhereTheyDontFit)
{
    const auto model = velscore::Model::FromText(TestModel().Text());
    const auto refusal = [&](auto call) {
        try {
            call();
        } catch (const velscore::Error& error) {
            return std::to_string(error.Code()) + " " + error.what();
        }
        return std::string("none");
    };
    velscore::Binding binding = model.Bind({"x", "sex"});
    const std::vector<double> one{1.0};
    const velscore::Column column{std::span(one)};
    EXPECT_EQ(refusal([&] { binding.Score(std::vector{column}); }),
              "269408 columns: 1 columns were given, expected are 2");
    const velscore::Column none{std::span<const double>(static_cast<const double*>(nullptr), 1)};
    EXPECT_EQ(refusal([&] {
                  binding.Score(std::vector{column, none});
              }),
              "269409 column 'sex' needs either numbers, or texts, or codes with their texts");
    EXPECT_NE(refusal([&] { model.Bind({"x", "gender"}); }).find("269303"), std::string::npos);
    EXPECT_NE(refusal([&] {
                  model.Bind({"x", "sex"}, {.keep = {"x"}});
              }).find("269403"),
              std::string::npos);
    velscore_results results = VELSCORE_RESULTS_INIT;
    const velscore_result_column place{};
    results.columns = &place;
    results.columns_count = 1;
    const velscore_column columns[2] = {column.Get(), column.Get()};
    EXPECT_EQ(velscore_score_columns(binding.Get(), columns, 2, 1, &results, nullptr), 269408);
    ArrowArray array{};
    ArrowArray given = ExportArray(Table({Numbers("x", {1.0})}));
    EXPECT_EQ(velscore_score_batch(binding.Get(), &given, &array, nullptr), 269403);
    EXPECT_EQ(given.release, nullptr);
    EXPECT_EQ(alive, 0);
}

TEST(Bindings, TellTheSchemaOfTheirTablesAndScoreOneAfterTheOther)
{
    const auto model = velscore::Model::FromText(TestModel().Text());
    const MadeArray table = Table({Numbers("x", {1.0}), Same("sex", "m", 1)});
    ArrowSchema given = ExportSchema(table);
    velscore_binding* binding = nullptr;
    velscore_score_options options = VELSCORE_SCORE_OPTIONS_INIT;
    options.keep_all = 1;
    ASSERT_EQ(velscore_bind(model.Get(), &options, &given, &binding, nullptr), 0);
    given.release(&given);
    ArrowSchema schema{};
    ASSERT_EQ(velscore_binding_schema(binding, &schema, nullptr), 0);
    ReadTables all;
    all.Begin(schema);
    for (int i = 0; i < 3; ++i) {
        ArrowArray in =
            ExportArray(i == 1 ? Table({Numbers("x", {}), Same("sex", "m", 0)}) : table);
        ArrowArray out{};
        ASSERT_EQ(velscore_score_batch(binding, &in, &out, nullptr), 0);
        all.Add(schema, out);
        out.release(&out);
    }
    velscore_unbind(binding);
    schema.release(&schema);
    EXPECT_EQ(all.rows, 2U);
    EXPECT_EQ(NumbersOf(all, "x"), (std::vector<double>{1, 1}));
    EXPECT_EQ(NumbersOf(all, "prediction"), (std::vector<double>{13, 13}));
    EXPECT_EQ(alive, 0);
}

// As it stands, this document has its betas in the row of the first case alone: the cases after it
// get two equal probabilities.
TEST(Bindings, BeginAnotherTableAsIfTheyWereNew)
{
    std::string text = ReadFile("examples/birth-weight/model.pmml");
    text = Replaced(text, "targetReferenceCategory=\"low\"",
                    "targetReferenceCategory=\"normal\" algorithmName=\"contrastLogistic\"");
    const std::string from = " targetCategory=\"low\"";
    while (text.find(from) != std::string::npos) {
        text = Replaced(text, from, " targetCategory=\"normal\"");
    }
    const auto model = velscore::Model::FromText(text, "document", {.asIs = true});
    velscore::Binding binding = model.Bind({"race", "ht", "age"});
    const std::vector<double> age{40.0};
    const char* const races[] = {"white"};
    const char* const hts[] = {"yes"};
    const std::vector<int32_t> first{0};
    const velscore::Column columns[] = {{first, races}, {first, hts}, {age}};
    const auto score = [&] { return binding.Score(columns).Named("probability(low)").numbers[0]; };
    const double alone = score();
    EXPECT_NE(alone, 0.5);
    EXPECT_EQ(score(), 0.5);
    binding.BeginTable();
    EXPECT_EQ(score(), alone);
    EXPECT_EQ(score(), 0.5);
    velscore_begin_table(nullptr);
}

TEST(Bindings, CountTheRowsOfEachTableFromOne)
{
    const auto model = velscore::Model::FromText(TestModel().Text());
    const MadeArray good = Table({Numbers("x", {1.0, 1.0}), Same("sex", "m", 2)});
    const MadeArray bad = Table({Numbers("x", {1.0}), Same("sex", "nobody", 1)});
    ArrowSchema given = ExportSchema(good);
    velscore_binding* binding = nullptr;
    velscore_score_options options = VELSCORE_SCORE_OPTIONS_INIT;
    options.strict = 1;
    ASSERT_EQ(velscore_bind(model.Get(), &options, &given, &binding, nullptr), 0);
    given.release(&given);
    const auto rowOfBad = [&] {
        ArrowArray in = ExportArray(good);
        ArrowArray out{};
        EXPECT_EQ(velscore_score_batch(binding, &in, &out, nullptr), 0);
        out.release(&out);
        velscore_error error = VELSCORE_ERROR_INIT;
        in = ExportArray(bad);
        EXPECT_NE(velscore_score_batch(binding, &in, &out, &error), 0);
        const unsigned long row = error.row;
        velscore_error_clear(&error);
        return row;
    };
    EXPECT_EQ(rowOfBad(), 3U);
    velscore_begin_table(binding);
    EXPECT_EQ(rowOfBad(), 3U);
    velscore_unbind(binding);
    EXPECT_EQ(alive, 0);
}

// Each thread with a policy and a level of its own, while others describe, bind and score.
TEST(Threads, EightShareOneModelWithOptionsOfTheirOwn)
{
    const std::string folder = DataFile("cases/missing-lm-replacement/");
    const auto model = velscore::Model::Open(folder + "model.pmml");
    const auto score = [&](size_t variant) {
        const char* const policies[] = {"", "substitute", "sysmis", "status"};
        velscore::ScoreOptions options{.policy = policies[variant % 4]};
        options.level = variant < 4 ? 0.0 : 0.8;
        ArrowArrayStream out = model.ScanCsv(folder + "input.csv", options, 1 + variant % 2);
        const ReadTables scores = ReadAll(out);
        std::vector<double> all = NumbersOf(scores, "prediction");
        for (const char* name : {"ci_lower", "status"}) {
            const std::vector<double> more = NumbersOf(scores, name);
            all.insert(all.end(), more.begin(), more.end());
        }
        return all;
    };
    std::vector<std::vector<double>> expected;
    for (size_t variant = 0; variant < 8; ++variant) expected.push_back(score(variant));
    EXPECT_NE(expected[0], expected[4]);
    EXPECT_NE(expected[1], expected[3]);
    const std::string about = model.Describe();
    std::atomic<int> wrong{0};
    std::vector<std::thread> threads;
    for (size_t variant = 0; variant < 8; ++variant) {
        threads.emplace_back([&, variant] {
            for (int round = 0; round < 5; ++round) {
                if (score(variant) != expected[variant]) ++wrong;
                if (model.Describe() != about) ++wrong;
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(wrong, 0);
}

}  // namespace
}  // namespace velscore_tests
