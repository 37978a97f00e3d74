// Generalized linear models through the command: what their rows and their descriptions show.

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "tests/system/csvtext.h"
#include "tests/system/runcommand.h"
#include "tests/system/testmodel.h"

namespace MCVelscore_850 {
namespace {

using Json = nlohmann::json;

class Generalized : public testing::Test {
protected:
    // y with eta = 1 + 2 x + 10 [sex = m], the standard error of eta being 2; the attributes name
    // link, distribution and the rest.
    std::string Model(const std::string& attributes)
    {
        TestModel model;
        model.modelHead =
            "modelType=\"generalizedLinear\" modelName=\"GZLM\" functionName=\"regression\" " +
            attributes;
        return folder_.Write("model.pmml", model.Text());
    }
    // The case of two categories, its link another one.
    std::string Classes(const std::string& link)
    {
        std::string text = ReadFile(DataFile("cases/glz-cloglog-pima/model.pmml"));
        text.replace(text.find("cloglog"), 7, link);
        return folder_.Write("classes.pmml", text);
    }
    CsvText Scores(const std::string& model, const std::string& cases)
    {
        const Finished run =
            RunVelscore({"score", "--quiet", model, folder_.Write("cases.csv", cases)});
        EXPECT_EQ(run.exitCode, 0) << run.err;
        return ParseCsv(run.out);
    }
    static bool Has(const std::string& text, const std::string& part)
    {
        return text.find(part) != std::string::npos;
    }

    ScratchFolder folder_;
};

using Texts = std::vector<std::string>;

// eta = 708: the upper limit lies beyond the link's guard, and is told as none with trials too.
TEST_F(Generalized, LimitWithoutAMeanIsAnEmptyField)
{
    for (const char* trials : {"", " distribution=\"binomial\" trialsValue=\"2\"",
                               " distribution=\"binomial\" trialsValue=\"1\""}) {
        const CsvText scores =
            Scores(Model(std::string("linkFunction=\"log\"") + trials), "x,sex\n353.5,f\n");
        EXPECT_EQ(scores.Texts("status"), Texts{"0"}) << trials;
        EXPECT_NE(scores.Texts("prediction"), Texts{""}) << trials;
        EXPECT_NE(scores.Texts("ci_lower"), Texts{""}) << trials;
        EXPECT_EQ(scores.Texts("ci_upper"), Texts{""}) << trials;
    }
}

TEST_F(Generalized, LimitWithoutAMeanIsAnEmptyFieldOfTheDocumentsOutputToo)
{
    TestModel model;
    model.modelHead =
        "modelType=\"generalizedLinear\" modelName=\"GZLM\" functionName=\"regression\" "
        "linkFunction=\"log\" distribution=\"binomial\" trialsValue=\"2\"";
    std::string text = model.Text();
    text.insert(text.find("<ParameterList>"),
                "<Output><OutputField name=\"low\" dataType=\"double\" optype=\"continuous\" "
                "feature=\"confidenceIntervalLower\"/><OutputField name=\"high\" "
                "dataType=\"double\" optype=\"continuous\" "
                "feature=\"confidenceIntervalUpper\"/></Output>");
    const Finished run =
        RunVelscore({"score", "--quiet", "--output", "document", folder_.Write("model.pmml", text),
                     folder_.Write("cases.csv", "x,sex\n353.5,f\n")});
    ASSERT_EQ(run.exitCode, 0) << run.err;
    const CsvText scores = ParseCsv(run.out);
    EXPECT_NE(scores.Texts("low"), Texts{""});
    EXPECT_EQ(scores.Texts("high"), Texts{""});
}

TEST_F(Generalized, NumericTargetWithoutAMeanIsScoredAsNone)
{
    const CsvText scores = Scores(Model("linkFunction=\"log\""), "x,sex\n400,f\n");
    EXPECT_EQ(scores.Texts("status"), Texts{"0"});
    EXPECT_EQ(scores.Texts("prediction"), Texts{""});
    EXPECT_EQ(scores.Texts("std_dev"), Texts{"2"});
}

TEST_F(Generalized, CategoriesWithoutAMeanAreNotScored)
{
    const CsvText scores =
        Scores(Classes("log"), "glu,bmi,age\n86,30.2,24\n1e6,30.2,24\n86,30.2,24\n");
    EXPECT_EQ(scores.Texts("status"), (Texts{"0", "90028", "0"}));
    for (const char* column :
         {"prediction", "probability(No)", "probability(Yes)", "status_field"}) {
        EXPECT_EQ(scores.Texts(column)[1], "") << column;
    }
    EXPECT_EQ(scores.Texts("prediction")[2], scores.Texts("prediction")[0]);
    EXPECT_NE(scores.Texts("probability(Yes)")[2], "");
}

TEST_F(Generalized, TrialsBeyondAnIntFailTheRow)
{
    TestModel model;
    model.modelHead =
        "modelType=\"generalizedLinear\" modelName=\"GZLM\" functionName=\"regression\" "
        "linkFunction=\"logit\" distribution=\"binomial\" trialsVariable=\"n\"";
    model.xMining += "<MiningField name=\"n\"/>";
    model.sexField += "<DataField name=\"n\" optype=\"continuous\" dataType=\"double\"/>";
    const CsvText scores = Scores(folder_.Write("model.pmml", model.Text()),
                                  "x,sex,n\n-0.5,f,10\n-0.5,f,1e10\n-0.5,f,\n");
    EXPECT_EQ(scores.Texts("status"), (Texts{"0", "90029", "90029"}));
    EXPECT_EQ(scores.Texts("prediction"), (Texts{"5", "", ""}));  // eta is 0: half of 10
}

TEST_F(Generalized, InspectTellsLinkDistributionOffsetTrialsAndTheMean)
{
    const std::string model = Model(
        "linkFunction=\"power\" linkParameter=\"-0.5\" distribution=\"binomial\" "
        "trialsValue=\"20\" offsetValue=\"1.5\"");
    const std::string text = RunVelscore({"inspect", model}).out;
    for (const char* line :
         {"family        generalized linear model (GZLRModel)\n", "offset        1.5\n",
          "trials        20\n", "distribution  Binomial\n",
          "link          Power with parameter -0.5\n",
          "mean          20 * eta^(1/k), eta = linear predictor + 1.5, k = -0.5\n",
          "standard error of the linear predictor\n"}) {
        EXPECT_TRUE(Has(text, line)) << line << text;
    }
    const Json json = Json::parse(RunVelscore({"inspect", "--json", model}).out);
    EXPECT_EQ(json.at("link"), "Power");
    EXPECT_EQ(json.at("linkParameter"), -0.5);
    EXPECT_EQ(json.at("distribution"), "Binomial");
    EXPECT_EQ(json.at("offset"), "1.5");
    EXPECT_EQ(json.at("trials"), "20");
    EXPECT_EQ(json.at("mean"), "20 * eta^(1/k), eta = linear predictor + 1.5, k = -0.5");
    const std::string dump = RunVelscore({"inspect", "--dump", model}).out;
    EXPECT_TRUE(Has(dump,
                    "Link parameter: -0.5\nDistribution: Binomial, events and trials: 20\n"
                    "Offset value: 1.5\n"))
        << dump;
}

TEST_F(Generalized, InspectTellsWhichCategoryTheMeanIsFor)
{
    const std::string text = RunVelscore({"inspect", Classes("cloglog")}).out;
    for (const char* line : {"categories    No, Yes\n", "reference     No\n", "equation for Yes\n",
                             "mean          1 - exp(-exp(eta)), eta = linear predictor\n",
                             "Yes where the mean is 0.5 or more, else No\n"}) {
        EXPECT_TRUE(Has(text, line)) << line << text;
    }
}

// Not a generalized model, but one that learns from extensions what it is: its error and the
// half-width of its limits are the document's.
TEST_F(Generalized, LinearSVMScoresWithSigmaAndPercentileOfTheDocument)
{
    TestModel model;
    model.modelHead =
        "modelType=\"generalLinear\" algorithmName=\"linearSVM\" functionName=\"regression\"";
    std::string text = model.Text();
    text.insert(text.find("<MiningSchema>"),
                "<Extension extender=\"velscore\" name=\"sigma\" value=\"1.5\"/>"
                "<Extension extender=\"velscore\" name=\"percentile\" value=\"0.75\"/>");
    const std::string document = folder_.Write("model.pmml", text);
    const CsvText scores = Scores(document, "x,sex\n3,m\n");
    EXPECT_EQ(scores.Texts("prediction"), Texts{"17"});
    EXPECT_EQ(scores.Texts("std_dev"), Texts{"1.5"});
    EXPECT_EQ(scores.Texts("ci_lower"), Texts{"16.25"});
    EXPECT_EQ(scores.Texts("ci_upper"), Texts{"17.75"});
    EXPECT_TRUE(Has(RunVelscore({"inspect", document}).out, "sigma of the document"));
}

// R's own documents are taken as they stand; check says what was done to them.
TEST_F(Generalized, DocumentOfRIsAdapted)
{
    const std::string model = DataFile("cases/glz-logit-birthwt-public/model.pmml");
    const Finished run = RunVelscore({"check", model});
    EXPECT_EQ(run.exitCode, 0) << run.err;
    EXPECT_TRUE(Has(run.out, "OK, generalized linear model, target weight_class")) << run.out;
    EXPECT_TRUE(Has(run.out, "[short-version]")) << run.out;
    EXPECT_TRUE(Has(run.out, "[generalized-linear]")) << run.out;
    EXPECT_EQ(RunVelscore({"check", "--as-is", model}).exitCode, 2);
}

}  // namespace
}  // namespace MCVelscore_850
