#include "readers/modelchoice.h"

#include <gtest/gtest.h>

#include "host/messages/messages.h"
#include "host/messages/vsexception.h"
#include "models/regressionmodel.h"
#include "tests/readers/readdocument.h"

namespace MCVelscore_850 {
namespace {

using namespace testing;

struct Row {
    const char* modelType;
    double version;
    std::map<std::string, std::string> attributes;
    int code;
    bool targetIsScale = true;
};

// Algorithm names are the selectors; where one is empty or absent, the model name is.
const Row kRows[] = {
    {"multinomialLogistic", 3.0, {{"algorithmName", "contrastLogistic"}}, 0},
    {"multinomialLogistic", 3.1, {}, 0},
    {"multinomialLogistic", 3.1, {{"algorithmName", "contrastLogistic"}}, 6},
    {"multinomialLogistic", 4.2, {{"algorithmName", "conditionalLogistic"}}, 5},
    {"multinomialLogistic", 4.2, {{"modelName", "conditionalLogistic"}}, 5},
    {"multinomialLogistic", 4.2, {{"algorithmName", ""}, {"modelName", "conditionalLogistic"}}, 5},
    {"multinomialLogistic",
     4.2,
     {{"algorithmName", "other"}, {"modelName", "conditionalLogistic"}},
     0},
    {"multinomialLogistic", 4.2, {{"algorithmName", "normalizedRegression"}}, 12},
    {"multinomialLogistic", 3.0, {{"algorithmName", "normalizedRegression"}}, 0},
    {"multinomialLogistic", 4.2, {{"algorithmName", "GZLM"}}, 1},
    {"multinomialLogistic", 4.2, {{"algorithmName", "GEE"}, {"distribution", ""}}, 1},
    {"multinomialLogistic",
     4.2,
     {{"algorithmName", "GLMM"}, {"distribution", "binomial"}, {"linkFunction", "logit"}},
     1},
    {"multinomialLogistic",
     4.2,
     {{"algorithmName", "GZLM"}, {"distribution", "binomial"}, {"linkFunction", "probit"}},
     8,
     false},
    {"multinomialLogistic",
     4.2,
     {{"algorithmName", "GZLM"}, {"distribution", "binomial"}},
     8,
     false},
    {"multinomialLogistic",
     4.2,
     {{"algorithmName", "GZLM"}, {"distribution", "multinomial"}, {"linkFunction", "probit"}},
     1},
    {"regression", 3.0, {}, 3},
    {"regression", 4.2, {{"algorithmName", "GZLM"}}, 3},
    {"generalLinear", 3.0, {{"algorithmName", "GZLM"}}, 2},
    {"generalizedLinear", 3.0, {{"algorithmName", "GZLM"}}, 2},
    {"generalLinear", 3.1, {}, 2},
    {"generalizedLinear", 4.2, {{"algorithmName", "GZLM"}}, 8},
    {"generalizedLinear", 4.2, {{"algorithmName", "GEE"}, {"functionName", "regression"}}, 8},
    {"generalLinear",
     4.2,
     {{"algorithmName", "GLMM"}, {"functionName", "classification"}},
     8,
     false},
    {"generalLinear", 4.2, {{"modelName", "GZLM"}}, 8},
    {"generalLinear", 4.2, {{"algorithmName", "generalLinearModel"}}, 2},
    {"generalLinear", 4.2, {{"algorithmName", "mixedLinearModel"}}, 2},
    {"generalizedLinear", 4.2, {{"algorithmName", "automaticLinearModel"}}, 2},
    {"generalLinear", 4.2, {{"algorithmName", "Cox"}}, 10},
    {"generalLinear", 4.2, {{"algorithmName", "CSCox"}}, 11},
    {"generalizedLinear", 4.2, {{"algorithmName", "glm"}}, 2},
    {"generalLinear", 4.2, {{"algorithmName", "gzlm"}}, 2},
    {"CoxRegression", 3.0, {}, 10},
    {"CoxRegression", 4.2, {{"algorithmName", "CSCox"}}, 10},
    {"ordinalMultinomial", 3.0, {{"algorithmName", "ordinalRegression"}}, 7},
    {"ordinalMultinomial", 3.0, {{"algorithmName", "GZLM"}}, 9},
    {"ordinalMultinomial", 4.2, {{"algorithmName", "other"}}, 7},
};

TEST(ChooseFamily, FollowsModelTypeVersionAndSelector)
{
    for (const Row& row : kRows) {
        std::string said = row.modelType;
        for (const auto& [name, value] : row.attributes) said += " " + name + "=" + value;
        const ModelChoice choice =
            ChooseFamily({row.modelType, row.version, [&](const std::string& name) {
                              const auto found = row.attributes.find(name);
                              return found == row.attributes.end() ? "" : found->second;
                          }});
        EXPECT_EQ(choice.code, row.code) << said << " at " << row.version;
        EXPECT_EQ(choice.targetIsScale, row.targetIsScale) << said << " at " << row.version;
    }
}

TEST(ChooseFamily, UnknownModelTypeIsRefusedBeforeAnyModel)
{
    const VSException refusal =
        RefusalOf(With(kGeneralLinearDocument, "\"generalLinear\"", "\"GeneralLinear\""));
    EXPECT_EQ(refusal.GetErrorCode(), 260153);
    EXPECT_EQ(refusal.GetArguments(),
              (std::vector<std::string>{"GeneralLinear", "modelType", "GeneralRegressionModel"}));
}

TEST(MakeModel, EveryFamilyHasItsClass)
{
    const std::pair<FamilyCode, int> families[] = {{kMultinomial, ScoreModel::TYPE_MLR},
                                                   {kMultinomialGeneralized, ScoreModel::TYPE_MLR},
                                                   {kGeneralLinear, ScoreModel::TYPE_GLR},
                                                   {kLinear, ScoreModel::TYPE_LR},
                                                   {kConditional, ScoreModel::TYPE_CLR},
                                                   {kBinary, ScoreModel::TYPE_BLR},
                                                   {kOrdinal, ScoreModel::TYPE_ORDINAL},
                                                   {kGeneralizedLinear, ScoreModel::TYPE_GZLR},
                                                   {kOrdinalGeneralized, ScoreModel::TYPE_ORDINAL},
                                                   {kCox, ScoreModel::TYPE_COXREG},
                                                   {kCoxComplexSamples, ScoreModel::TYPE_CSCOXREG},
                                                   {kNormalized, ScoreModel::TYPE_MLR}};
    for (const auto& [code, type] : families) {
        EXPECT_EQ(MakeModel(code, "")->GetModelType(), type) << code;
    }
    EXPECT_THROW(MakeModel(static_cast<FamilyCode>(4), ""), VSException);
    EXPECT_THROW(MakeModel(static_cast<FamilyCode>(13), ""), VSException);
}

TEST(Trace, SaysTheFamilyAndTheWayInAndOut)
{
    EXPECT_EQ(TraceOf(kGeneralLinearDocument, 2),
              (std::vector<std::string>{"Entry:ParseFromTree", "PMML version is :4.2",
                                        "The Model Type is 2.", "Exit:ParseFromTree"}));
    EXPECT_EQ(TraceOf(kGeneralLinearDocument, 1),
              (std::vector<std::string>{"Entry:ParseFromTree", "Exit:ParseFromTree"}));
    EXPECT_TRUE(TraceOf(kGeneralLinearDocument, 0).empty());
}

TEST(Trace, VersionIsSaidBeforeADocumentBelow31IsRefusedForItsTarget)
{
    EXPECT_EQ(TraceOf(With(kGeneralLinearDocument, "version=\"4.2\"", "version=\"3.0\""), 2),
              (std::vector<std::string>{"Entry:ParseFromTree", "PMML version is :3.0"}));
    EXPECT_EQ(RefusalOf(With(kGeneralLinearDocument, "version=\"4.2\"", "version=\"3.0\""))
                  .GetArguments(),
              (std::vector<std::string>{"targetVariableName", "GeneralRegressionModel"}));
}

TEST(Trace, VersionIsSaidOnlyWithoutATargetAttribute)
{
    const std::string named =
        With(kGeneralLinearDocument, "modelDF=\"5\"", "targetVariableName=\"y\" modelDF=\"5\"");
    EXPECT_EQ(TraceOf(named, 2),
              (std::vector<std::string>{"Entry:ParseFromTree", "The Model Type is 2.",
                                        "Exit:ParseFromTree"}));
}

}  // namespace
}  // namespace MCVelscore_850
