// RegressionModel documents through every command but score, which cases_test.cpp looks at.

#include <string>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "tests/scratchfolder.h"
#include "tests/system/runcommand.h"

namespace MCVelscore_850 {
namespace {

using Json = nlohmann::json;

std::string Model(const std::string& name)
{
    return DataFile("regression/" + name + "/model.pmml");
}

bool Has(const std::string& text, const std::string& part)
{
    return text.find(part) != std::string::npos;
}

// What inspect calls the family of a document.
struct FamilyRow {
    std::string document;
    std::string family;
};

class RegressionModelFamily : public testing::TestWithParam<FamilyRow> {};

TEST_P(RegressionModelFamily, IsToldAsWhatTheDocumentHolds)
{
    const Finished run = RunVelscore({"inspect", Model(GetParam().document)});
    EXPECT_EQ(run.exitCode, 0) << run.err;
    EXPECT_TRUE(Has(run.out, "family        " + GetParam().family + " (RegressionModel)\n"))
        << run.out;
    EXPECT_FALSE(Has(run.out, "distribution")) << run.out;
    EXPECT_TRUE(Has(run.out, "[regression-model]")) << run.out;
}

INSTANTIATE_TEST_SUITE_P(
    All, RegressionModelFamily,
    testing::Values(FamilyRow{"r-lm-mtcars", "linear regression"},
                    FamilyRow{"sk-poisson-warpbreaks", "generalized linear model"},
                    FamilyRow{"sk-logistic-infert", "binary logistic regression"},
                    FamilyRow{"r-glm-probit-birthwt", "binary regression"},
                    FamilyRow{"sk-multinomial-iris", "multinomial logistic regression"},
                    FamilyRow{"r-polr-logit-housing", "ordinal regression"},
                    FamilyRow{"hand-three-simplemax", "multinomial regression"}));

// Two categories have one equation, whatever becomes of its value: 2 + x / 4 + z / 8 of cauchit, 1
// / 4 + x / 2 - 5 z / 4 of the others. The first row goes through the model alone, the others
// together.
TEST(RegressionModel, OneEquationOfTwoCategoriesIsTheLinearPredictor)
{
    const std::string others = "linear_predictor\n-8\n-8\n-1.75\n11.25\n";
    const std::pair<const char*, std::string> rows[] = {
        {"hand-two-cauchit", "linear_predictor\n3.125\n3.125\n1\n1.5\n"},
        {"hand-two-cloglog", others},
        {"hand-two-loglog", others},
        {"hand-two-probit", others}};
    const ScratchFolder folder;
    const std::string cases = folder.Write("cases.csv", "x,z\n1,7\n1,7\n-4,0\n2,-8\n");
    for (const auto& [document, expected] : rows) {
        const Finished run =
            RunVelscore({"score", Model(document), cases, "--columns", "linear_predictor"});
        EXPECT_EQ(run.out, expected) << document;
    }
}

TEST(RegressionModel, ItsOwnRecordsAgree)
{
    const Finished run = RunVelscore({"verify", Model("sk-verified-toothgrowth")});
    EXPECT_EQ(run.exitCode, 0) << run.err;
    EXPECT_TRUE(Has(run.err, "5 records, 5 values compared, 0 differ")) << run.err;
}

TEST(RegressionModel, ATranslationLeavesNoDoubtAndIsNoReasonForStrictnessToEnd)
{
    const std::string folder = DataFile("regression/r-lm-mtcars/");
    const Finished run =
        RunVelscore({"score", "--strict", folder + "model.pmml", folder + "input.csv"});
    EXPECT_EQ(run.exitCode, 0) << run.err;
}

TEST(RegressionModel, ItsOutputSectionIsFilled)
{
    const std::string folder = DataFile("regression/sk-booleans-birthwt/");
    const Finished run =
        RunVelscore({"score", "--output", "document", folder + "model.pmml", folder + "input.csv"});
    EXPECT_EQ(run.exitCode, 0) << run.err;
    // The first row of expected.csv.
    EXPECT_TRUE(
        run.out.starts_with("probability(low),probability(normal),status,status_field\n"
                            "0.13653047876086"))
        << run.out.substr(0, 120);
}

TEST(RegressionModel, WithinAMiningModelIsRefusedByTheMiningModelsName)
{
    const Finished run = RunVelscore(
        {"check", "-"},
        "<PMML version='4.4'><Header/>\n<MiningModel><Segmentation><Segment><RegressionModel/>"
        "</Segment></Segmentation></MiningModel></PMML>");
    EXPECT_EQ(run.exitCode, 2);
    EXPECT_TRUE(Has(run.out,
                    "standard input:2:1: fault: the document holds a MiningModel of 1 "
                    "RegressionModel segment;"))
        << run.out;
}

}  // namespace
}  // namespace MCVelscore_850
