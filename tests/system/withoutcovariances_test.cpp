// Documents without covariances: what can't be computed without them is empty.

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "tests/system/csvtext.h"
#include "tests/system/runcommand.h"
#include "tests/system/testmodel.h"

namespace MCVelscore_850 {
namespace {

using Texts = std::vector<std::string>;

constexpr const char* kHeads[] = {
    "modelType=\"generalLinear\" functionName=\"regression\" modelDF=\"8\"",
    "modelType=\"generalizedLinear\" modelName=\"GZLM\" functionName=\"regression\" "
    "linkFunction=\"identity\" distribution=\"normal\"",
};

class WithoutCovariances : public testing::Test {
protected:
    // A document with `section` in place of its covariances.
    static std::string With(const std::string& section, TestModel model = {})
    {
        return Replaced(model.Text(), section);
    }
    static std::string Replaced(std::string text, const std::string& section)
    {
        const size_t begin = text.find("<PCovMatrix");
        const std::string end = "</PCovMatrix>";
        text.replace(begin, text.find(end) + end.size() - begin, section);
        return text;
    }
    static TestModel Head(const char* head)
    {
        TestModel model;
        model.modelHead = head;
        return model;
    }
    // The error and limits of a case, whose prediction is 15.
    Texts Numbers(const std::string& document)
    {
        const Finished run =
            RunVelscore({"score", folder_.Write("m.pmml", document)}, "x,sex\n2,m\n");
        EXPECT_EQ(run.exitCode, 0) << run.err;
        const CsvText scores = ParseCsv(run.out);
        EXPECT_EQ(scores.Texts("prediction"), Texts{"15"});
        EXPECT_EQ(scores.Texts("status"), Texts{"0"});
        return {scores.Texts("std_dev")[0], scores.Texts("ci_lower")[0],
                scores.Texts("ci_upper")[0]};
    }

    ScratchFolder folder_;
};

TEST_F(WithoutCovariances, ErrorAndLimitsAreEmpty)
{
    for (const char* head : kHeads) {
        SCOPED_TRACE(head);
        for (const char* none :
             {"", "<PCovMatrix type=\"model\"/>",
              "<PCovMatrix><Extension name=\"covariances\" value=\"left out\"/></PCovMatrix>"}) {
            EXPECT_EQ(Numbers(With(none, Head(head))), (Texts{"", "", ""})) << none;
        }
        EXPECT_EQ(Numbers(Head(head).Text())[0], "2");
    }
}

TEST_F(WithoutCovariances, ZerosThatADocumentWritesAreCovariances)
{
    const std::string zero =
        "<PCovMatrix><PCovCell pRow=\"p0\" pCol=\"p0\" value=\"0\"/></PCovMatrix>";
    for (const char* head : kHeads) {
        EXPECT_EQ(Numbers(With(zero, Head(head))), (Texts{"0", "15", "15"})) << head;
    }
}

TEST_F(WithoutCovariances, LinearRegressionHasNoneEither)
{
    const std::string folder = DataFile("cases/lm-swiss/");
    const std::string model =
        folder_.Write("m.pmml", Replaced(ReadFile(folder + "model.pmml"), ""));
    const std::string cases = folder + "input.csv";
    const CsvText scores = ParseCsv(RunVelscore({"score", model, cases}).out);
    const CsvText whole = ParseCsv(RunVelscore({"score", folder + "model.pmml", cases}).out);
    EXPECT_EQ(scores.Texts("prediction"), whole.Texts("prediction"));
    for (const char* column : {"std_dev", "ci_lower", "ci_upper"}) {
        EXPECT_EQ(scores.Texts(column), Texts(scores.rows.size(), "")) << column;
        EXPECT_NE(whole.Texts(column)[0], "");
    }
}

// Its sigma and its percentile stand in the document.
TEST_F(WithoutCovariances, ASupportVectorMachineHasWhatItsDocumentGives)
{
    const std::string sigma = "<Extension extender=\"velscore\" name=\"sigma\" value=\"1.5\"/>";
    const std::string percentile =
        "<Extension extender=\"velscore\" name=\"percentile\" value=\"0.75\"/>";
    const TestModel model =
        Head("modelType=\"generalLinear\" algorithmName=\"linearSVM\" functionName=\"regression\"");
    const auto numbers = [&](const std::string& extensions) {
        std::string text = With("", model);
        text.insert(text.find("<MiningSchema>"), extensions);
        return Numbers(text);
    };
    EXPECT_EQ(numbers(sigma + percentile), (Texts{"1.5", "14.25", "15.75"}));
    EXPECT_EQ(numbers(percentile), (Texts{"", "14.25", "15.75"}));
}

TEST_F(WithoutCovariances, TheDocumentsOwnColumnsAreEmptyToo)
{
    TestModel model;
    model.afterSchema =
        "<Output><OutputField name='fit'/><OutputField name='se' feature='standardError'/>"
        "<OutputField name='low' feature='confidenceIntervalLower'/>"
        "<OutputField name='high' feature='confidenceIntervalUpper'/>"
        "<OutputField name='known' feature='transformedValue' dataType='double'>"
        "<Apply function='isMissing'><FieldRef field='se'/></Apply></OutputField></Output>";
    for (const char* head : kHeads) {
        model.modelHead = head;
        const Finished run =
            RunVelscore({"score", "--output", "document", folder_.Write("m.pmml", With("", model))},
                        "x,sex\n2,m\n");
        EXPECT_EQ(run.out, "fit,se,low,high,known,status,status_field\n15,,,,1,0,\n") << run.err;
    }
}

TEST_F(WithoutCovariances, InspectSaysSo)
{
    for (const char* head : kHeads) {
        const std::string model = folder_.Write("m.pmml", With("", Head(head)));
        const std::string text = RunVelscore({"inspect", model}).out;
        for (const char* line : {"covariances   none: no standard errors, no confidence limits\n",
                                 "  std_dev     empty: the document has no covariances\n",
                                 "  ci_lower    empty: the document has no covariances\n",
                                 "  ci_upper    empty: the document has no covariances\n"}) {
            EXPECT_NE(text.find(line), std::string::npos) << line << text;
        }
        const auto about = nlohmann::json::parse(RunVelscore({"inspect", "--json", model}).out);
        EXPECT_FALSE(about.at("hasCovariances"));
        EXPECT_FALSE(about.at("columns")[0].at("empty"));
        EXPECT_TRUE(about.at("columns")[1].at("empty"));
    }
    const std::string whole = folder_.Write("m.pmml", TestModel().Text());
    EXPECT_NE(RunVelscore({"inspect", whole}).out.find("covariances   yes\n"), std::string::npos);
}

}  // namespace
}  // namespace MCVelscore_850
