// diff through the command: what two models, and their scores, differ in.

#include <filesystem>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "tests/system/csvtext.h"
#include "tests/system/runcommand.h"
#include "tests/system/testmodel.h"

namespace MCVelscore_850 {
namespace {

using Texts = std::vector<std::string>;

std::string Case(const std::string& name) { return DataFile("cases/" + name + "/model.pmml"); }

std::string Replaced(std::string text, const std::string& from, const std::string& to)
{
    const size_t at = text.find(from);
    EXPECT_NE(at, std::string::npos) << from;
    return at == std::string::npos ? text : text.replace(at, from.size(), to);
}

TEST(Diff, ADocumentIsTheSameAsItself)
{
    for (const auto& folder : std::filesystem::directory_iterator(DataFile("cases"))) {
        const std::string model = folder.path() / "model.pmml";
        if (!std::filesystem::exists(model)) continue;
        const Finished run = RunVelscore({"diff", model, model, folder.path() / "input.csv"});
        EXPECT_EQ(run.exitCode, 0) << model << "\n" << run.out << run.err;
        EXPECT_EQ(run.out, "");
    }
}

TEST(Diff, AConvertedDocumentIsTheSame)
{
    const ScratchFolder folder;
    int converted = 0;
    Texts documents;
    for (const auto& each : std::filesystem::directory_iterator(DataFile("regression"))) {
        if (each.is_directory()) documents.push_back(each.path() / "model.pmml");
    }
    for (const char* name : {"legacy-lm-stackloss", "legacy-mlr-birthwt"}) {
        for (const auto& each : std::filesystem::directory_iterator(DataFile("cases/") + name)) {
            const std::string path = each.path();
            if (path.ends_with(".xml") || path.ends_with(".pmml")) documents.push_back(path);
        }
    }
    for (const std::string& document : documents) {
        const Finished made = RunVelscore({"convert", document, "-o", folder.Path("new.pmml")});
        if (made.exitCode != 0) continue;  // not of a form that is converted
        ++converted;
        const Finished run = RunVelscore({"diff", document, folder.Path("new.pmml")});
        EXPECT_EQ(run.exitCode, 0) << document << "\n" << run.out << run.err;
        EXPECT_EQ(run.err, "velscore: the models are the same\n");
    }
    EXPECT_GE(converted, 10);
}

struct Changed {
    const char* name;
    std::string from;
    std::string to;
    std::string says;
};
void PrintTo(const Changed& changed, std::ostream* out) { *out << changed.name; }

class DiffOfModels : public testing::TestWithParam<Changed> {};
INSTANTIATE_TEST_SUITE_P(
    Each, DiffOfModels,
    testing::Values(Changed{"Beta", "beta=\"2\"", "beta=\"2.5\"", "beta x: 2 -> 2.5 (by 0.5)\n"},
                    Changed{"Df", "modelDF=\"8\"", "modelDF=\"9\"", "model df: 8 -> 9 (by 1)\n"},
                    Changed{"Covariance", "pCol=\"p0\" value=\"4\"", "pCol=\"p0\" value=\"6\"",
                            "covariances 1 of 9 cells, the most row 1, column 1: 4 -> 6 (by 2)\n"},
                    Changed{"Exponent", "value=\"1\" predictorName=\"x\"",
                            "value=\"2\" predictorName=\"x\"",
                            "beta x: 2 -> none\nbeta x^2: none -> 2\n"},
                    Changed{"Category", "<Value value=\"m\"/>",
                            "<Value value=\"m\"/><Value value=\"z\"/>",
                            "field sex: text, categorical: f, m -> text, categorical: f, m, z\n"},
                    Changed{"Replacement", "name=\"x\" usageType=\"active\"",
                            "name=\"x\" usageType=\"active\" missingValueReplacement=\"3\"",
                            "missing value of x: none -> 3\n"}),
    [](const auto& each) { return std::string(each.param.name); });

TEST_P(DiffOfModels, IsToldAndEndsWithSix)
{
    const ScratchFolder folder;
    const std::string text = TestModel().Text();
    const std::string first = folder.Write("a.pmml", text);
    const std::string second =
        folder.Write("b.pmml", Replaced(text, GetParam().from, GetParam().to));
    const Finished run = RunVelscore({"diff", first, second});
    EXPECT_EQ(run.exitCode, 6) << run.err;
    EXPECT_EQ(run.out, GetParam().says);
}

TEST(Diff, NamesOfParametersAreNoDifference)
{
    const ScratchFolder folder;
    std::string text = TestModel().Text();
    const std::string first = folder.Write("a.pmml", text);
    for (size_t at = 0; (at = text.find("\"p2\"", at)) != std::string::npos;) {
        text.replace(at, 4, "\"other\"");
    }
    EXPECT_EQ(RunVelscore({"diff", first, folder.Write("b.pmml", text)}).exitCode, 0);
}

TEST(Diff, BaselinesAreComparedByStratum)
{
    const ScratchFolder folder;
    const std::string text = ReadFile(DataFile("survival/veteran-strata-efron/model.pmml"));
    const size_t cell = text.find("<BaselineCell", text.find("value=\"adeno\" maxTime"));
    const size_t begin = text.find("cumHazard=\"", cell) + 11;
    std::string changed = text;
    changed.replace(begin, text.find('"', begin) - begin, "0");
    const Finished run =
        RunVelscore({"diff", folder.Write("a.pmml", text), folder.Write("b.pmml", changed)});
    EXPECT_EQ(run.exitCode, 6) << run.err;
    EXPECT_EQ(run.out.substr(0, 27), "baseline adeno: 1 of 26 haz") << run.out;
    const Finished ties = RunVelscore({"diff", DataFile("survival/lung-efron/model.pmml"),
                                       DataFile("survival/lung-breslow/model.pmml")});
    EXPECT_NE(ties.out.find("beta age: "), std::string::npos) << ties.out;
    EXPECT_NE(ties.out.find(" hazards, the most at "), std::string::npos) << ties.out;
}

TEST(Diff, ScoresAreComparedRowByRow)
{
    const ScratchFolder folder;
    const std::string text = TestModel().Text();
    const std::string first = folder.Write("a.pmml", text);
    // 1 + 2 x + 10 [sex = m] and 1 + 2.5 x + 10 [sex = m], x = 3 where it is missing
    const std::string second = folder.Write(
        "b.pmml",
        Replaced(Replaced(text, "beta=\"2\"", "beta=\"2.5\""), "name=\"x\" usageType=\"active\"",
                 "name=\"x\" usageType=\"active\" missingValueReplacement=\"3\""));
    const std::string cases = "x,sex\n0,f\n2,m\n-6,f\n,m\ny,f\n";
    const Finished run = RunVelscore({"diff", "--json", first, second, "-"}, cases);
    EXPECT_EQ(run.exitCode, 6);
    const auto report = nlohmann::json::parse(run.out);
    EXPECT_EQ(report.at("same"), false);
    EXPECT_EQ(report.at("differences").size(), 2U);
    EXPECT_EQ(report.at("differences")[0].at("size"), 0.5);
    EXPECT_EQ(report.at("differences")[1].at("second"), "3");
    // 0, 1 and 3 apart over three rows
    const auto& scores = report.at("scores");
    EXPECT_EQ(scores.at("secondAlone"), 1);
    EXPECT_EQ(scores.at("columns")[0].at("row"), 3);
    EXPECT_EQ(scores.at("columns")[0].at("largest"), 3.0);
}

TEST(Diff, ChangedCategoriesAreCounted)
{
    const ScratchFolder folder;
    const std::string text = ReadFile(Case("mlr-birthwt-race"));
    const size_t begin = text.find("beta=\"") + 6;
    std::string changed = text;
    changed.replace(begin, text.find('"', begin) - begin, "40");
    const Finished run =
        RunVelscore({"diff", Case("mlr-birthwt-race"), folder.Write("b.pmml", changed),
                     DataFile("cases/mlr-birthwt-race/input.csv")});
    EXPECT_EQ(run.exitCode, 6);
    EXPECT_NE(run.out.find(" rows differ, first row "), std::string::npos) << run.out;
}

// How a table of x = 0, 2 and -6 is written, missing values and the decimal mark among it.
struct Written {
    const char* name;
    std::string cases;
    Texts options;
};
void PrintTo(const Written& written, std::ostream* out) { *out << written.name; }

class DiffOfScores : public testing::TestWithParam<Written> {};
INSTANTIATE_TEST_SUITE_P(
    Each, DiffOfScores,
    testing::Values(
        Written{"Plain", "x,sex\n0,f\n2,m\n-6.5,f\n,m\n", {}},
        Written{"Delimiter", "x;sex\n0;f\n2;m\n-6.5;f\n;m\n", {"--delimiter", ";"}},
        Written{"Tab", "x\tsex\n0\tf\n2\tm\n-6.5\tf\n\tm\n", {"--delimiter", "tab"}},
        Written{"Decimal", "x;sex\n0;f\n2;m\n-6,5;f\n;m\n", {"--delimiter", ";", "--decimal", ","}},
        Written{"Missing", "x,sex\n0,f\n2,m\n-6.5,f\n-99,m\n", {"--na", "-99"}},
        Written{"Map",
                "size,x,kind\n0,9,f\n2,9,m\n-6.5,9,f\n,9,m\n",
                {"--map", "x=size", "--map", "sex=kind"}},
        Written{"NoHeader", "f,0\nm,2\nf,-6.5\nm,\n", {"--no-header"}},
        Written{"NoHeaderMap",
                "9,0,f\n9,2,m\n9,-6.5,f\n9,,m\n",
                {"--no-header", "--map", "x=2", "--map", "sex=3"}}),
    [](const auto& each) { return std::string(each.param.name); });

// 1 + 2 x + 10 [sex = m] and 1 + 2.5 x + 10 [sex = m]
TEST_P(DiffOfScores, ReadsTheTableAsScoreDoes)
{
    const ScratchFolder folder;
    const std::string text = TestModel().Text();
    const std::string first = folder.Write("a.pmml", text);
    const std::string second = folder.Write("b.pmml", Replaced(text, "beta=\"2\"", "beta=\"2.5\""));
    Texts arguments{"diff", first, second, folder.Write("cases.csv", GetParam().cases)};
    arguments.insert(arguments.end(), GetParam().options.begin(), GetParam().options.end());
    const Finished run = RunVelscore(arguments);
    EXPECT_EQ(run.exitCode, 6) << run.err;
    EXPECT_NE(
        run.out.find("prediction: 2 of 3 rows differ, by 3.25 at most (row 3: -12 -> -15.25)"),
        std::string::npos)
        << run.out << run.err;
    EXPECT_NE(run.err.find("3 of 4 cases scored by both"), std::string::npos) << run.err;
}

// The second model reads a field that the first doesn't; each takes what is told of its own.
TEST(Diff, ColumnsAreToldOfFieldsOfEitherModel)
{
    const ScratchFolder folder;
    const std::string text = TestModel().Text();
    std::string other = text;
    for (size_t at = 0; (at = other.find("\"x\"", at)) != std::string::npos;) {
        other.replace(at, 3, "\"z\"");
    }
    const std::string first = folder.Write("a.pmml", text);
    const std::string second = folder.Write("b.pmml", other);
    const std::string cases = folder.Write("cases.csv", "one,sex,two\n1,f,1\n2,m,3\n");
    const Finished run =
        RunVelscore({"diff", first, second, cases, "--map", "x=one", "--map", "z=two"});
    EXPECT_NE(run.out.find("prediction: 1 of 2 rows differ, by 2 at most (row 2: 15 -> 17)"),
              std::string::npos)
        << run.out << run.err;
    const Finished wrong = RunVelscore({"diff", first, second, cases, "--map", "w=one"});
    EXPECT_EQ(wrong.exitCode, 1);
    EXPECT_NE(wrong.err.find("'w'"), std::string::npos) << wrong.err;
}

struct Trouble {
    const char* name;
    Texts arguments;
    int exitCode;
};
void PrintTo(const Trouble& trouble, std::ostream* out) { *out << trouble.name; }

class DiffInTrouble : public testing::TestWithParam<Trouble> {};
INSTANTIATE_TEST_SUITE_P(
    Each, DiffInTrouble,
    testing::Values(
        Trouble{"OneDocument", {Case("lm-swiss")}, 1}, Trouble{"StandardInputTwice", {"-", "-"}, 1},
        Trouble{"NoDocument", {Case("lm-swiss"), "/nowhere/b.pmml"}, 2},
        Trouble{"NoTable", {Case("lm-swiss"), Case("lm-swiss"), "/nowhere/c.csv"}, 3},
        Trouble{"TableOptionsWithoutATable",
                {Case("lm-swiss"), Case("lm-swiss"), "--map", "Agriculture=x"},
                1},
        Trouble{
            "DelimiterWithoutATable", {Case("lm-swiss"), Case("lm-swiss"), "--delimiter", ";"}, 1},
        Trouble{"DelimiterOfTwoBytes",
                {Case("lm-swiss"), Case("lm-swiss"), DataFile("cases/lm-swiss/input.csv"),
                 "--delimiter", ";;"},
                1},
        Trouble{"MappedTwice",
                {Case("lm-swiss"), Case("lm-swiss"), DataFile("cases/lm-swiss/input.csv"), "--map",
                 "Agriculture=x", "--map", "Agriculture=y"},
                1},
        Trouble{"TableOfAnother",
                {Case("lm-swiss"), Case("lm-swiss"), DataFile("cases/clr-infert/input.csv")},
                3}),
    [](const auto& each) { return std::string(each.param.name); });

TEST_P(DiffInTrouble, EndsAsOtherCommandsDo)
{
    Texts arguments{"diff"};
    arguments.insert(arguments.end(), GetParam().arguments.begin(), GetParam().arguments.end());
    const Finished run = RunVelscore(arguments, "");
    EXPECT_EQ(run.exitCode, GetParam().exitCode) << run.err;
    EXPECT_EQ(run.out, "");
}

}  // namespace
}  // namespace MCVelscore_850
