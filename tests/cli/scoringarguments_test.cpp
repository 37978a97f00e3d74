// What was asked of score, curve, explain and diff, understood: by table, each with what is
// refused.

#include "cli/scoringarguments.h"

#include <cmath>
#include <functional>

#include <fmt/format.h>
#include <gtest/gtest.h>

#include "cli/commands.h"
#include "engine/documents/loadedmodel.h"
#include "host/model/scoremodel.h"
#include "tests/cli/inprocess.h"
#include "tests/scratchfolder.h"
#include "tests/system/testmodel.h"

namespace MCVelscore_850 {
namespace {

using Texts = std::vector<std::string>;
using Columns = std::map<std::string, std::string>;

// What is refused, with the code where there is one; empty where nothing is.
std::string RefusalOf(const std::function<void()>& work)
{
    try {
        work();
    } catch (const UsageError& refusal) {
        return refusal.what();
    } catch (const Failure& refusal) {
        return fmt::format("{} [{}]", refusal.what(), refusal.Code());
    }
    return {};
}

std::string OptionsRefusal(const ScoreArguments& arguments)
{
    return RefusalOf([&] { OptionsOf(arguments); });
}

// Of arguments that hold one thing alone.
ScoreArguments With(const std::function<void(ScoreArguments&)>& set)
{
    ScoreArguments arguments;
    set(arguments);
    return arguments;
}

TEST(ScoringArguments, WithoutAnyAreThoseOfAPlainTable)
{
    const ScoringOptions options = OptionsOf(ScoreArguments());
    EXPECT_EQ(options.dialect.delimiter, ',');
    EXPECT_FALSE(options.dialect.tellsDelimiter);
    EXPECT_EQ(options.dialect.decimal, '.');
    EXPECT_TRUE(options.dialect.hasHeader);
    EXPECT_EQ(options.form.table, TableForm::Csv);
    EXPECT_EQ(options.form.delimiter, ',');
    EXPECT_EQ(options.form.digits, 0);
    EXPECT_EQ(options.compression, Compression::None);
    EXPECT_TRUE(options.output.keep.empty());
    EXPECT_FALSE(options.output.keepAll);
    EXPECT_FALSE(options.rejects);
    EXPECT_EQ(options.threads, ProcessorCount());
    EXPECT_FALSE(options.results.predictionOnly);
}

struct Delimiter {
    const char* text;
    char expected;
};

TEST(ScoringArguments, DelimitersAreOneByteOrTab)
{
    for (const Delimiter& row :
         {Delimiter{";", ';'}, Delimiter{"tab", '\t'}, Delimiter{"\\t", '\t'},
          Delimiter{"\t", '\t'}, Delimiter{"|", '|'}, Delimiter{" ", ' '}}) {
        const ScoringOptions options = OptionsOf(With([&](auto& of) { of.delimiter = row.text; }));
        EXPECT_EQ(options.dialect.delimiter, row.expected);
        EXPECT_TRUE(options.dialect.tellsDelimiter);
        EXPECT_EQ(options.form.delimiter, row.expected);
        const ScoringOptions out = OptionsOf(With([&](auto& of) { of.outDelimiter = row.text; }));
        EXPECT_EQ(out.dialect.delimiter, ',');
        EXPECT_EQ(out.form.delimiter, row.expected);
    }
}

struct Refused {
    std::function<void(ScoreArguments&)> set;
    std::string told;
};

TEST(ScoringArguments, ThatMakeNoSenseAreRefused)
{
    const Refused kRefused[] = {
        {[](auto& of) { of.delimiter = ";;"; },
         "--delimiter is ';;'; expected is one character of one byte, or tab"},
        {[](auto& of) { of.delimiter = ""; },
         "--delimiter is ''; expected is one character of one byte, or tab"},
        {[](auto& of) { of.delimiter = "\xC2\xA7"; },
         "--delimiter is '\xC2\xA7'; expected is one character of one byte, or tab"},
        {[](auto& of) { of.delimiter = "\""; }, "--delimiter can't be a quote or a line end"},
        {[](auto& of) { of.delimiter = "\n"; }, "--delimiter can't be a quote or a line end"},
        {[](auto& of) { of.delimiter = "\r"; }, "--delimiter can't be a quote or a line end"},
        {[](auto& of) { of.delimiter = std::string(1, '\0'); },
         "--delimiter can't be a quote or a line end"},
        {[](auto& of) { of.outDelimiter = "ab"; },
         "--out-delimiter is 'ab'; expected is one character of one byte, or tab"},
        {[](auto& of) { of.outDelimiter = "\""; },
         "--out-delimiter can't be a quote or a line end"},
        {[](auto& of) { of.decimal = ""; },
         "--decimal is ''; expected is one character of one byte"},
        {[](auto& of) { of.decimal = ".,"; },
         "--decimal is '.,'; expected is one character of one byte"},
        {[](auto& of) { of.decimal = "5"; }, "--decimal can't be '5'"},
        {[](auto& of) { of.decimal = "e"; }, "--decimal can't be 'e'"},
        {[](auto& of) { of.decimal = "-"; }, "--decimal can't be '-'"},
        {[](auto& of) {
             of.delimiter = ",";
             of.decimal = ",";
         },
         "--delimiter and --decimal are both ','; give the fields another delimiter: --delimiter "
         "';'"},
        {[](auto& of) { of.delimiter = "."; },
         "--delimiter and --decimal are both '.'; give the fields another delimiter: --delimiter "
         ","},
        {[](auto& of) { of.outDelimiter = "."; },
         "--out-delimiter and --decimal are both '.'; give the fields another delimiter: "
         "--out-delimiter ,"},
        {[](auto& of) {
             of.outDelimiter = ";";
             of.format = "jsonl";
         },
         "--out-delimiter has no meaning for an output of JSON Lines, which has no delimiter; "
         "leave it out, or give --format csv"},
        {[](auto& of) {
             of.outDelimiter = ";";
             of.output = "o.ndjson";
         },
         "--out-delimiter has no meaning for an output of JSON Lines, which has no delimiter; "
         "leave it out, or give --format csv"},
        {[](auto& of) { of.mostRejects = 5; }, "--max-rejects has a meaning with --rejects alone"},
        {[](auto& of) { of.keep = {"a,\"b"}; }, "--keep a,\"b has a quote that is never closed"},
        {[](auto& of) { of.columns = {"\"status"}; },
         "--columns \"status has a quote that is never closed"},
        {[](auto& of) {
             of.outputColumns = "document";
             of.predictionOnly = true;
         },
         "--prediction-only has no meaning with --output document"},
        {[](auto& of) {
             of.outputColumns = "document";
             of.columns = {"status"};
         },
         "--columns has no meaning with --output document"},
        {[](auto& of) {
             of.predictionOnly = true;
             of.columns = {"status"};
         },
         "--columns has no meaning with --prediction-only"},
        {[](auto& of) { of.mappings = {"x"}; }, "--map has 'x'; expected is NAME=COLUMN"},
        {[](auto& of) { of.mappings = {"=X"}; }, "--map has '=X'; expected is NAME=COLUMN"},
        {[](auto& of) { of.mappings = {"x="}; }, "--map has 'x='; expected is NAME=COLUMN"},
        {[](auto& of) {
             of.mappings = {"x=X", "x=Y"};
         },
         "--map tells the column of 'x' twice"},
        {[](auto& of) { of.mappings = {"@/nowhere/map.txt"}; },
         "--map @/nowhere/map.txt: the file can't be read"},
        {[](auto& of) { of.mappings = {"@/"}; }, "--map @/: the file can't be read"},
        {[](auto& of) { of.mappings = {"@"}; }, "--map @: the file can't be read"},
    };
    for (const Refused& refused : kRefused) {
        EXPECT_EQ(OptionsRefusal(With(refused.set)), refused.told);
    }
}

TEST(ScoringArguments, MarksMayGoTogetherThatLookAlikeOnlyAtFirst)
{
    // Without --delimiter a table may be JSON Lines, which have no delimiter.
    EXPECT_EQ(OptionsRefusal(With([](auto& of) { of.decimal = ","; })), "");
    EXPECT_EQ(OptionsRefusal(With([](auto& of) {
                  of.rejects = "r.csv";
                  of.mostRejects = 5;
              })),
              "");
}

struct Form {
    const char* output;
    const char* format;
    const char* compress;
    TableForm table;
    Compression compression;
};

TEST(ScoringArguments, FormAndCompressionAreAsAskedOrAsTheSuffixSays)
{
    for (const Form& row : {Form{"-", "", "", TableForm::Csv, Compression::None},
                            Form{"o.csv", "", "", TableForm::Csv, Compression::None},
                            Form{"o.jsonl", "", "", TableForm::JsonLines, Compression::None},
                            Form{"o.ndjson", "", "", TableForm::JsonLines, Compression::None},
                            Form{"o.jsonl.gz", "", "", TableForm::JsonLines, Compression::Gzip},
                            Form{"o.ndjson.zst", "", "", TableForm::JsonLines, Compression::Zstd},
                            Form{"o.csv.gz", "", "", TableForm::Csv, Compression::Gzip},
                            Form{"o.json", "", "", TableForm::Csv, Compression::None},
                            Form{"o.csv", "jsonl", "", TableForm::JsonLines, Compression::None},
                            Form{"o.jsonl", "csv", "", TableForm::Csv, Compression::None},
                            Form{"o.csv.gz", "", "none", TableForm::Csv, Compression::None},
                            Form{"o.csv.gz", "", "zstd", TableForm::Csv, Compression::Zstd},
                            Form{"-", "jsonl", "gzip", TableForm::JsonLines, Compression::Gzip}}) {
        SCOPED_TRACE(fmt::format("{} {} {}", row.output, row.format, row.compress));
        const ScoringOptions options = OptionsOf(With([&](auto& of) {
            of.output = row.output;
            of.format = row.format;
            of.compress = row.compress;
        }));
        EXPECT_EQ(options.form.table, row.table);
        EXPECT_EQ(options.compression, row.compression);
    }
}

struct Names {
    Texts lists;
    Texts expected;
};

TEST(ScoringArguments, ListsOfNamesAreSplitAsARowOfATableIs)
{
    for (const Names& row :
         {Names{{"a"}, {"a"}}, Names{{"a,b", "c"}, {"a", "b", "c"}},
          Names{{"\"a,b\",c"}, {"a,b", "c"}}, Names{{"\"a \"\"b\"\"\""}, {"a \"b\""}},
          Names{{"a\"b"}, {"a\"b"}}, Names{{" a, b"}, {" a", " b"}}, Names{{""}, {""}},
          Names{{"a,"}, {"a", ""}}}) {
        SCOPED_TRACE(row.lists.front());
        EXPECT_EQ(OptionsOf(With([&](auto& of) { of.keep = row.lists; })).output.keep,
                  row.expected);
        EXPECT_EQ(OptionsOf(With([&](auto& of) { of.columns = row.lists; })).output.columns,
                  row.expected);
    }
    const OutputOptions all = OptionsOf(With([](auto& of) { of.keep = {"a", "all"}; })).output;
    EXPECT_TRUE(all.keepAll);
    EXPECT_EQ(all.keep, Texts{"a"});
}

TEST(ScoringArguments, OthersAreTakenAsTheyAre)
{
    const ScoringOptions options = OptionsOf(With([](auto& of) {
        of.missingTexts = {"-9", "?"};
        of.noHeader = true;
        of.nameColumn = "file";
        of.digits = 5;
        of.threads = 3;
        of.predictionOnly = true;
        of.rejects = "r.csv";
        of.mostRejects = 7;
        of.decimal = ",";
    }));
    EXPECT_EQ(options.missingTexts, (Texts{"-9", "?"}));
    EXPECT_FALSE(options.dialect.hasHeader);
    EXPECT_EQ(options.dialect.decimal, ',');
    EXPECT_EQ(options.form.decimal, ',');
    EXPECT_EQ(options.output.tableColumn, "file");
    EXPECT_EQ(options.form.digits, 5);
    EXPECT_EQ(options.threads, 3u);
    EXPECT_TRUE(options.results.predictionOnly);
    EXPECT_TRUE(options.rejects);
    EXPECT_EQ(options.mostRejects, 7);
}

class MapFiles : public testing::Test {
protected:
    ScoreArguments Mapped(const std::string& bytes, Texts more = {}) const
    {
        more.push_back("@" + folder_.Write("map.txt", bytes));
        return With([&](auto& of) { of.mappings = more; });
    }
    const ScratchFolder folder_;
};

struct MapFile {
    const char* about;
    std::string bytes;
    Columns columns;
};

TEST_F(MapFiles, HaveAPairALine)
{
    const MapFile kFiles[] = {
        {"nothing", "", {}},
        {"two pairs", "x=X\nsex=Sex of the case\n", {{"x", "X"}, {"sex", "Sex of the case"}}},
        {"no line end behind the last", "x=X\nsex=S", {{"x", "X"}, {"sex", "S"}}},
        {"empty lines and those of Windows", "x=X\r\n\r\nsex=S\r\n\n", {{"x", "X"}, {"sex", "S"}}},
        {"a byte-order mark", "\xEF\xBB\xBFx=X\n", {{"x", "X"}}},
        {"a column may have an equals sign", "x=a=b\n", {{"x", "a=b"}}},
        {"blanks are part of names", " x = X\n", {{" x ", " X"}}},
    };
    for (const MapFile& file : kFiles) {
        EXPECT_EQ(OptionsOf(Mapped(file.bytes)).columnOf, file.columns) << file.about;
    }
    EXPECT_EQ(OptionsOf(Mapped("x=X\n", {"sex=S"})).columnOf, (Columns{{"sex", "S"}, {"x", "X"}}));
}

TEST_F(MapFiles, ThatMakeNoSenseAreRefusedByLine)
{
    const std::string path = folder_.Path("map.txt");
    EXPECT_EQ(OptionsRefusal(Mapped("x=X\n\nsex\n")),
              "line 3 of " + path + " has 'sex'; expected is NAME=COLUMN");
    EXPECT_EQ(OptionsRefusal(Mapped("x=X\nx=Y\n")),
              "line 2 of " + path + " tells the column of 'x' twice");
    EXPECT_EQ(OptionsRefusal(Mapped("x=X\n", {"x=Y"})),
              "line 1 of " + path + " tells the column of 'x' twice");
}

struct Level {
    const char* text;
    double expected;
};

TEST(LevelOf, ReadsANumberAboveZeroAndBelowOne)
{
    for (const Level& row : {Level{"0.5", 0.5}, Level{"0.999", 0.999}, Level{"9e-1", 0.9}}) {
        EXPECT_EQ(LevelOf(row.text), row.expected);
    }
    for (const char* text : {"", "0", "1", "-0.5", "nan", "inf", "1e999", "abc", "0,95", "250"}) {
        EXPECT_EQ(RefusalOf([&] { LevelOf(text); }),
                  fmt::format("--level is '{}'; expected is a number above 0 and below 1", text));
    }
    for (const Level& row :
         {Level{"95", 0.95}, Level{"99.9%", 0.999}, Level{"2%", 0.02}, Level{"50", 0.5}}) {
        EXPECT_EQ(RefusalOf([&] { LevelOf(row.text); }),
                  fmt::format("--level is '{}'; expected is a number above 0 and below 1. Did you "
                              "mean {}?",
                              row.text, row.expected));
    }
}

TEST(TablesOf, AreStandardInputWhereNoneIsNamed)
{
    EXPECT_EQ(TablesOf(ScoreArguments()), Texts{"-"});
    const auto of = [](const Texts& cases) {
        return With([&](auto& arguments) { arguments.cases = cases; });
    };
    EXPECT_EQ(TablesOf(of({"a.csv", "-"})), (Texts{"a.csv", "-"}));
    EXPECT_EQ(RefusalOf([&] {
                  TablesOf(of({"-", "a.csv", "-"}));
              }),
              "standard input can be one of the tables once only");
}

TEST(RefuseModelBeside, LetsOneOfThemBeStandardInput)
{
    const auto refusal = [](const char* model, const Texts& tables) {
        return RefusalOf(
            [&] { RefuseModelBeside(With([&](auto& of) { of.model = model; }), tables); });
    };
    EXPECT_EQ(refusal("m.pmml", {"-"}), "");
    EXPECT_EQ(refusal("-", {"a.csv"}), "");
    EXPECT_EQ(refusal("-", {"a.csv", "-"}),
              "the model and the cases can't both come from standard input; name a file for one of "
              "them");
}

TEST(FilesOf, AreWhatARunReadsAndWrites)
{
    const NeededFiles files = FilesOf(With([](auto& of) {
        of.model = "m.pmml";
        of.cases = {"a.csv", "-"};
        of.baselineTable = "b.csv";
        of.output = "o.csv";
        of.rejects = "r.csv";
        of.summary = "s.json";
    }));
    EXPECT_EQ(files.read, (Texts{"m.pmml", "b.csv", "a.csv", "-"}));
    EXPECT_EQ(files.written, (Texts{"o.csv", "r.csv", "s.json"}));
    EXPECT_EQ(FilesOf(ScoreArguments()).written, Texts{"-"});
}

// What depends on the model.
class PreparedModel : public testing::Test {
protected:
    static constexpr const char* kCox = "tests/data/cases/cox-veteran-strata/model.pmml";

    PreparedModel() : linear_(folder_.Write("model.pmml", TestModel().Text())) {}

    // Of a run, what PrepareModel() completes.
    ScoringOptions Prepared(const std::string& document, const ScoreArguments& arguments,
                            bool curves = false)
    {
        model_.emplace(document, std::make_shared<const Plugin>(VELSCORE_TEST_PLUGIN));
        ScoringOptions options = OptionsOf(arguments);
        options.curves = curves;
        PrepareModel(arguments, *model_, options);
        return options;
    }
    std::string Refusal(const std::string& document, const ScoreArguments& arguments,
                        bool curves = false)
    {
        return RefusalOf([&] { Prepared(document, arguments, curves); });
    }
    std::vector<double> Times(const std::string& text)
    {
        return Prepared(kCox, TimesArguments(text), true).results.survival.times;
    }
    static ScoreArguments TimesArguments(const std::string& text)
    {
        return With([&](auto& of) { of.times = text; });
    }

    const ScratchFolder folder_;
    const std::string linear_;
    std::optional<LoadedModel> model_;
};

TEST_F(PreparedModel, HasTheLevelAndTheColumnsThatWereAskedFor)
{
    Prepared(linear_, With([](auto& of) { of.level = "0.9"; }));
    EXPECT_EQ(model_->Model().GetConfidenceLevel(), 0.9);
    EXPECT_TRUE(Prepared(linear_, With([](auto& of) { of.columns = {"linear_predictor"}; }))
                    .results.linearPredictor);
    EXPECT_FALSE(Prepared(linear_, ScoreArguments()).results.linearPredictor);
}

TEST_F(PreparedModel, ReplacesMissingValuesAsThePolicySays)
{
    for (const auto& [policy, substitutes] : std::map<std::string, bool>{
             {"", true}, {"substitute", true}, {"sysmis", false}, {"status", false}}) {
        Prepared(linear_, With([&, word = policy](auto& of) { of.policy = word; }));
        EXPECT_EQ(model_->Substitutes(), substitutes) << policy;
    }
}

TEST_F(PreparedModel, RefusesWhatItsFamilyHasNot)
{
    EXPECT_EQ(Refusal(linear_, ScoreArguments(), true),
              linear_ +
                  " has no survival curves: its family is general linear model, and Cox "
                  "models alone have them");
    EXPECT_EQ(Refusal(kCox, With([](auto& of) { of.wide = true; }), true),
              "--wide needs --times: the baselines of a model's strata have times of their own");
    EXPECT_EQ(Refusal(kCox, With([](auto& of) { of.level = "0.9"; })),
              std::string("--level has no meaning: ") + kCox +
                  " has no limits: its family has none (Cox regression)");
    EXPECT_EQ(Refusal(linear_, With([](auto& of) {
                          of.level = "0.9";
                          of.predictionOnly = true;
                      })),
              "--level has no meaning with --prediction-only, which leaves out limits");
    EXPECT_EQ(Refusal("tests/data/cases/clr-infert/model.pmml",
                      With([](auto& of) { of.policy = "status"; })),
              "--policy status has no meaning for conditional logistic regression: that model "
              "ignores it; use sysmis");
}

struct Every {
    const char* text;
    double second;
    double last;
    size_t count;
};

// The last time of the model's baselines is 999.
TEST_F(PreparedModel, HasTimesEverySoOftenUpToTheLastOfItsBaselines)
{
    for (const Every& row :
         {Every{"every 100", 100.0, 900.0, 10}, Every{"every 999", 999.0, 999.0, 2},
          Every{"every 1000", 0.0, 0.0, 1}, Every{"every 0.1", 0.1, 999.0, 9991},
          Every{"every 333", 333.0, 999.0, 4}, Every{"every100", 100.0, 900.0, 10}}) {
        SCOPED_TRACE(row.text);
        const std::vector<double> times = Times(row.text);
        ASSERT_EQ(times.size(), row.count);
        EXPECT_EQ(times.front(), 0.0);
        EXPECT_EQ(times[times.size() == 1 ? 0 : 1], row.second);
        EXPECT_EQ(times.back(), row.last);
    }
    // Times of a step with few decimals have as few: 0.3 is no 0.30000000000000004.
    EXPECT_EQ(Times("every 0.1")[3], 0.3);
    // One third has no such decimals: the times are its multiples.
    const double third = 1.0 / 3.0;
    EXPECT_EQ(Times("every 0.3333333333333333")[4], 4 * third);
}

TEST_F(PreparedModel, HasTheTimesThatAreListed)
{
    EXPECT_EQ(Times("30,90,365"), (std::vector<double>{30, 90, 365}));
    EXPECT_EQ(Times("0"), std::vector<double>{0});
    EXPECT_EQ(Times("\"1\",1e3"), (std::vector<double>{1, 1000}));
}

TEST_F(PreparedModel, RefusesTimesThatAreNone)
{
    std::string many = "0";
    for (int i = 1; i <= 100'000; ++i) many += "," + std::to_string(i);
    const auto noTime = [](const char* text) {
        return fmt::format("--times has the time '{}'; expected is a number of 0 or more [269331]",
                           text);
    };
    const std::map<std::string, std::string> kRefused{
        {"", "--times has the time (empty); expected is a number of 0 or more [269331]"},
        {"1,x", noTime("x")},
        {"-1", noTime("-1")},
        {"2,1", "--times has 1 behind 2; give the times in ascending order, each once"},
        {"1,1", "--times has 1 behind 1; give the times in ascending order, each once"},
        {"every 0",
         "--times is 'every 0'; expected is 'every N' in quotes, N being a number above 0"},
        {"every -1",
         "--times is 'every -1'; expected is 'every N' in quotes, N being a number above 0"},
        {"everyday",
         "--times is 'everyday'; expected is 'every N' in quotes, N being a number above 0"},
        {"1,\"2", "--times 1,\"2 has a quote that is never closed"},
    };
    for (const auto& [text, told] : kRefused) {
        EXPECT_EQ(Refusal(kCox, TimesArguments(text), true), told);
    }
    EXPECT_NE(Refusal(kCox, TimesArguments(many), true).find("[269332]"), std::string::npos);
    EXPECT_NE(Refusal(kCox, TimesArguments(many), true).find("100001"), std::string::npos);
    const std::string tooFine = Refusal(kCox, TimesArguments("every 0.001"), true);
    EXPECT_NE(tooFine.find("[269332]"), std::string::npos) << tooFine;
    EXPECT_NE(tooFine.find("999001"), std::string::npos) << tooFine;
}

}  // namespace
}  // namespace MCVelscore_850
