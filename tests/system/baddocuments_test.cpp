// Documents that can't be used: each ends with 2, a message that says where and what, and nothing
// on standard output.

#include <ostream>

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "tests/system/runcommand.h"
#include "tests/system/testmodel.h"

namespace MCVelscore_850 {
namespace {

struct BadDocument {
    const char* name;
    std::string text;
    const char* message;
};

std::string Without(const std::string& part)
{
    std::string text = TestModel().Text();
    const size_t place = text.find(part);
    EXPECT_NE(place, std::string::npos) << part;
    return text.erase(place, part.size());
}

// The test model with two texts replaced.
std::string With(const std::string& from, const std::string& to, const std::string& from2,
                 const std::string& to2)
{
    std::string text = TestModel().Text();
    for (const auto& [old, replacement] : {std::pair(from, to), std::pair(from2, to2)}) {
        const size_t place = text.find(old);
        EXPECT_NE(place, std::string::npos) << old;
        text.replace(place, old.size(), replacement);
    }
    return text;
}

std::string Repeated(const std::string& part, int count)
{
    std::string text;
    for (int i = 0; i < count; ++i) text += part;
    return text;
}

std::string ManyAttributes(int count)
{
    std::string text = "<PMML";
    for (int i = 0; i < count; ++i) text += " a" + std::to_string(i) + "=\"\"";
    return text + "/>";
}

std::string WithHead(const std::string& head)
{
    TestModel model;
    model.modelHead = head;
    return model.Text();
}

std::string WithBeta(const std::string& beta)
{
    TestModel model;
    model.xBeta = beta;
    return model.Text();
}

// Names the case in a failure's report.
void PrintTo(const BadDocument& document, std::ostream* out) { *out << document.name; }

std::vector<BadDocument> BadDocuments()
{
    return {
        {"Empty", "", "empty"},
        {"NoXml", "x,sex\n1,f\n", "1"},
        {"Torn", TestModel().Text().substr(0, 600), ""},
        {"NoModelDocument", "<html><body/></html>", "html"},
        {"NoGeneralRegressionModel", "<PMML version=\"4.4\"><Header/><DataDictionary/></PMML>",
         "GeneralRegressionModel"},
        {"AnotherModel", "<PMML version=\"4.4\"><Header/><DataDictionary/><TreeModel/></PMML>",
         "holds a TreeModel"},
        {"UndeclaredPrefix",
         With("<ParameterList>", "<q:ParameterList>", "</ParameterList>", "</q:ParameterList>"),
         "the prefix 'q' of q:ParameterList is not declared"},
        {"EmptyName", With("predictorName=\"x\"", "predictorName=\"\"", "", ""),
         "PPCell predictorName empty is no predictor of the model"},
        {"UnknownParameterOfACell",
         With("parameterName=\"p1\" beta", "parameterName=\"q\" beta", "", ""),
         "PCell parameterName \"q\" is no parameter of the model, which has one of \"p0\""},
        {"Doctype", "<!DOCTYPE PMML [<!ENTITY a \"b\">]><PMML version=\"4.4\"/>", "DOCTYPE"},
        {"ExternalEntity", "<!DOCTYPE PMML [<!ENTITY a SYSTEM \"/etc/hostname\">]><PMML>&a;</PMML>",
         "DOCTYPE"},
        {"DeepNesting", Repeated("<a>", 1000000), "256"},
        {"ManyAttributes", ManyAttributes(400000), ""},
        {"LongAttribute", "<PMML a=\"" + std::string(8 << 20, 'x') + "\"/>", ""},
        {"UnknownModelType", WithHead("modelType=\"cubic\" functionName=\"regression\""), "cubic"},
        {"NoModelType", WithHead("functionName=\"regression\""), "modelType"},
        {"NoDictionary",
         "<PMML version=\"4.4\"><Header/><GeneralRegressionModel "
         "modelType=\"generalLinear\" functionName=\"regression\"/></PMML>",
         "DataDictionary"},
        {"NoParameterName", Without("name=\"p0\" "), "name"},
        {"NoBeta", Without(" beta=\"10\""), "beta"},
        {"NoPredictorName", Without("predictorName=\"x\" "), "predictorName"},
        {"BetaIsNoNumber", WithBeta("two"), "two"},
        {"BetaIsEmpty", WithBeta(""), "the beta (empty) is not a number"},
        {"BetaIsTooLarge", WithBeta("1e999"), "1e999"},
        {"BetaIsInfinite", WithBeta("INF"), "INF"},
        {"DfIsNoNumber",
         WithHead("modelType=\"generalLinear\" functionName=\"regression\" modelDF=\"eight\""),
         "eight"},
    };
}

class BadDocumentTest : public testing::TestWithParam<BadDocument> {};

TEST_P(BadDocumentTest, IsRefusedWithAWordAndLeavesTheOutputAlone)
{
    const ScratchFolder folder;
    const std::string model = folder.Write("model.pmml", GetParam().text);
    const std::string cases = folder.Write("cases.csv", "x,sex\n1,f\n");
    const std::string out = folder.Write("scores.csv", "precious\n");
    const Finished run = RunVelscore({"score", model, cases, "-o", out});
    EXPECT_EQ(run.exitCode, 2) << run.err;
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(ReadFile(out), "precious\n");
    EXPECT_NE(run.err.find("model.pmml"), std::string::npos) << run.err;
    EXPECT_NE(run.err.find(GetParam().message), std::string::npos) << run.err;
    EXPECT_NE(run.err.find("what to do: "), std::string::npos) << run.err;
}

INSTANTIATE_TEST_SUITE_P(Documents, BadDocumentTest, testing::ValuesIn(BadDocuments()),
                         [](const auto& each) { return each.param.name; });

TEST(BadDocument, OfAnotherModelIsToldByItsName)
{
    // the models of the standard, but the two that are read
    const ScratchFolder folder;
    for (const std::string model :
         {"AnomalyDetectionModel", "AssociationModel", "BaselineModel", "BayesianNetworkModel",
          "ClusteringModel", "GaussianProcessModel", "MiningModel", "NaiveBayesModel",
          "NearestNeighborModel", "NeuralNetwork", "RuleSetModel", "Scorecard", "SequenceModel",
          "SupportVectorMachineModel", "TextModel", "TimeSeriesModel", "TreeModel"}) {
        const Finished run =
            RunVelscore({"check", "-"}, "<PMML version='4.4'><Header/>\n<" + model + "/></PMML>");
        EXPECT_EQ(run.exitCode, 2);
        EXPECT_NE(run.out.find("standard input:2:1: fault: the document holds a " + model + ";"),
                  std::string::npos)
            << run.out;
    }
}

TEST(BadDocument, ARegressionModelIsNotReadAsItIs)
{
    const Finished run = RunVelscore({"check", "--as-is", "-"},
                                     "<PMML version='4.4'><Header/>\n<RegressionModel/></PMML>");
    EXPECT_EQ(run.exitCode, 2);
    EXPECT_NE(run.out.find("standard input:2:1: fault: the document holds a RegressionModel;"),
              std::string::npos)
        << run.out;
}

TEST(BadDocumentFile, MissingFolderAndUnreadableFilesAreRefused)
{
    const ScratchFolder folder;
    const std::string secret = folder.Write("secret.pmml", TestModel().Text());
    ::chmod(secret.c_str(), 0);
    std::vector<std::string> files{"/nowhere/at/all.pmml", "/"};
    if (::access(secret.c_str(), R_OK) != 0) files.push_back(secret);  // root reads everything
    for (const std::string& file : files) {
        const Finished run = RunVelscore({"check", file});
        EXPECT_EQ(run.exitCode, 2) << file;
        EXPECT_NE(run.out.find(file), std::string::npos) << run.out;
    }
}

}  // namespace
}  // namespace MCVelscore_850
