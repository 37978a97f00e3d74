#include "engine/scoring/verification.h"

#include <gtest/gtest.h>

#include "engine/documents/loadedmodel.h"
#include "tests/engine/textsource.h"
#include "tests/scratchfolder.h"

namespace MCVelscore_850 {
namespace {

// y = 1 for b and 3 for a or a missing value, which the document replaces by a. Its output fields
// have a copy of the note, which the model doesn't read.
constexpr char kDocument[] =
    "<PMML version='4.4' xmlns='http://www.dmg.org/PMML-4_4'><Header/><DataDictionary>"
    "<DataField name='y' optype='continuous' dataType='double'/>"
    "<DataField name='f' optype='categorical' dataType='string'><Value value='a'/>"
    "<Value value='b'/></DataField>"
    "<DataField name='note' optype='continuous' dataType='double'/></DataDictionary>"
    "<GeneralRegressionModel modelType='generalLinear' functionName='regression'><MiningSchema>"
    "<MiningField name='y' usageType='target'/>"
    "<MiningField name='f' missingValueReplacement='a'/><MiningField name='note'/></MiningSchema>"
    "<Output><OutputField name='copy' feature='transformedValue' dataType='double' "
    "optype='continuous'><FieldRef field='note'/></OutputField>"
    "<OutputField name='r' feature='residual'/></Output>"
    "<ParameterList><Parameter name='p0'/><Parameter name='pf'/></ParameterList>"
    "<FactorList><Predictor name='f'/></FactorList><CovariateList/>"
    "<PPMatrix><PPCell value='a' predictorName='f' parameterName='pf'/></PPMatrix>"
    "<ParamMatrix><PCell parameterName='p0' beta='1'/><PCell parameterName='pf' beta='2'/>"
    "</ParamMatrix></GeneralRegressionModel></PMML>";

class Verification : public testing::Test {
protected:
    Verification()
        : model_(folder_.Write("model.pmml", kDocument), std::make_shared<Plugin>(VELSCORE_PLUGIN),
                 LoadOptions{.output = OutputColumns::Document})
    {}
    ScratchFolder folder_;
    LoadedModel model_;
};

TEST_F(Verification, FollowsThePolicyOfTheModelAsScoringDoes)
{
    VerificationTable table;
    table.fields = {{"f"}, {"y"}};
    table.records = {{"", "3"}, {"b", "1"}};
    EXPECT_TRUE(Verify(model_, table).differences.empty());
    model_.SetPolicy(MissingPolicy::SysmisResult);
    const VerificationReport report = Verify(model_, table);
    ASSERT_EQ(report.differences.size(), 1u);
    EXPECT_EQ(report.differences[0].record, 1);
    EXPECT_EQ(report.differences[0].status, 90029);
    EXPECT_EQ(report.differences[0].faultyField, "f");
    EXPECT_EQ(report.differences[0].faultyText, "");
    TextSource cases("f\n\nb\n");
    EXPECT_EQ(MakeVerification(model_, cases, {}).leftOut, 1);
}

// The records hold what a run of the same table shows, and the target's name is the prediction's.
TEST_F(Verification, RecordsHaveWhatTheOutputFieldsReadAndTheTargetOnce)
{
    TextSource cases("note,y,f\n2.5,17,b\n");
    const MadeVerification made = MakeVerification(model_, cases, {});
    std::vector<std::string> names;
    for (const auto& field : made.table.fields) names.push_back(field.name);
    EXPECT_EQ(names, (std::vector<std::string>{"f", "note", "y", "copy"}));
    EXPECT_EQ(made.table.records,
              (std::vector<std::vector<std::string>>{{"b", "2.5", "1", "2.5"}}));
    EXPECT_TRUE(Verify(model_, made.table).differences.empty());
}

}  // namespace
}  // namespace MCVelscore_850
