#include <string>

#include <gtest/gtest.h>

#include "tests/engine/adapted.h"

namespace MCVelscore_850 {
namespace {

// Whether a linear regression of these parts is read as a general linear model.
bool BecomesGeneralLinear(const Parts& parts)
{
    const Adapted adapted(parts.Text());
    if (adapted.Untouched()) return false;
    EXPECT_EQ(adapted.Rules(), "regression-order");
    EXPECT_TRUE(adapted.Has("modelType='generalLinear'"));
    return true;
}

TEST(RegressionOrder, StaysWhereEachParameterStandsWithItsPredictor)
{
    Parts parts;
    for (const char* parameters :
         {"<Parameter name='(Constant)'/><Parameter name='pa'/><Parameter name='pb'/>",
          "<Parameter name='pa'/><Parameter name='(Constant)'/><Parameter name='pb'/>",
          "<Parameter name='pa'/><Parameter name='pb'/><Parameter name='(Constant)'/>",
          "<Parameter name='pa'/><Parameter name='pb'/>"}) {  // the reader appends the constant
        parts.parameters = parameters;
        EXPECT_FALSE(BecomesGeneralLinear(parts)) << parameters;
    }
    // the cells may stand in any order, and write 1 in any way
    parts.cells =
        "<PPCell parameterName='pb' predictorName='b' value='1.0'/>"
        "<PPCell parameterName='pa' predictorName='a' value='1e0'/>";
    EXPECT_FALSE(BecomesGeneralLinear(parts));
    // a predictor that is listed again counts once, in the reader too
    parts.covariates = "<Predictor name='a'/><Predictor name='a'/><Predictor name='b'/>";
    EXPECT_FALSE(BecomesGeneralLinear(parts));
}

TEST(RegressionOrder, StaysWhereNoCellTellsTheOrder)
{
    Parts parts;
    parts.cells.clear();
    EXPECT_FALSE(BecomesGeneralLinear(parts));
    parts.parameters = "<Parameter name='p0'/><Parameter name='pb'/><Parameter name='pa'/>";
    EXPECT_FALSE(BecomesGeneralLinear(parts));
}

TEST(RegressionOrder, ACellOfPowerZeroSaysNothing)
{
    Parts parts;
    parts.cells +=
        "<PPCell parameterName='(Constant)' predictorName='a' value='0'/>"
        "<PPCell parameterName='pa' predictorName='b' value='0.0'/>";
    EXPECT_FALSE(BecomesGeneralLinear(parts));
}

TEST(RegressionOrder, AConstantOfAnotherNameNeedsAGeneralLinearModel)
{
    for (const char* parameters :
         {"<Parameter name='p0'/><Parameter name='pa'/><Parameter name='pb'/>",
          "<Parameter name='pa'/><Parameter name='pb'/><Parameter name='(Intercept)'/>",
          "<Parameter name='(Constant)'/><Parameter name='pa'/><Parameter name='p0'/>"
          "<Parameter name='pb'/>"}) {
        Parts parts;
        parts.parameters = parameters;
        parts.betas = "<PCell parameterName='pa' beta='1'/>";
        EXPECT_TRUE(BecomesGeneralLinear(parts)) << parameters;
    }
}

TEST(RegressionOrder, ParametersInAnotherOrderNeedAGeneralLinearModel)
{
    Parts swapped;
    swapped.parameters =
        "<Parameter name='(Constant)'/><Parameter name='pb'/><Parameter name='pa'/>";
    EXPECT_TRUE(BecomesGeneralLinear(swapped));
    Parts covariates;
    covariates.covariates = "<Predictor name='b'/><Predictor name='a'/>";
    EXPECT_TRUE(BecomesGeneralLinear(covariates));
}

TEST(RegressionOrder, PowersAndProductsNeedAGeneralLinearModel)
{
    Parts power;
    power.cells =
        "<PPCell parameterName='pa' predictorName='a' value='2'/>"
        "<PPCell parameterName='pb' predictorName='b' value='1'/>";
    EXPECT_TRUE(BecomesGeneralLinear(power));
    Parts product;
    product.cells += "<PPCell parameterName='pb' predictorName='a' value='1'/>";
    EXPECT_TRUE(BecomesGeneralLinear(product));
    Parts constant;
    constant.cells += "<PPCell parameterName='(Constant)' predictorName='a' value='1'/>";
    EXPECT_TRUE(BecomesGeneralLinear(constant));
}

TEST(RegressionOrder, APredictorWithoutParameterNeedsAGeneralLinearModel)
{
    // the constant would be taken for its slope
    Parts parts;
    parts.fields += "<DataField name='c' optype='continuous' dataType='double'/>";
    parts.covariates += "<Predictor name='c'/>";
    EXPECT_TRUE(BecomesGeneralLinear(parts));
}

TEST(RegressionOrder, FactorsNeedAGeneralLinearModel)
{
    Parts parts;
    parts.fields +=
        "<DataField name='f' optype='categorical' dataType='string'>"
        "<Value value='x'/></DataField>";
    parts.factors = "<Predictor name='f'/>";
    parts.parameters += "<Parameter name='pf'/>";
    parts.cells += "<PPCell parameterName='pf' predictorName='f' value='x'/>";
    EXPECT_TRUE(BecomesGeneralLinear(parts));
}

TEST(RegressionOrder, KeepsCellsOfPowerZeroOutOfAGeneralLinearModel)
{
    // there they would drop their parameter wherever the covariate is 0; 0 as a factor's category
    // is something else
    Parts parts;
    parts.fields += "<DataField name='f' optype='categorical' dataType='integer'/>";
    parts.factors = "<Predictor name='f'/>";
    parts.parameters += "<Parameter name='pf'/>";
    parts.cells +=
        "<PPCell parameterName='pf' predictorName='f' value='0'/>"
        "<PPCell parameterName='pf' predictorName='a' value='0'/>";
    const Adapted adapted(parts.Text());
    EXPECT_TRUE(adapted.Has("<PPCell parameterName='pf' predictorName='f' value='0'></>"));
    EXPECT_FALSE(adapted.Has("<PPCell parameterName='pf' predictorName='a' value='0'></>"));
}

TEST(RegressionOrder, ListsAConstantThatOnlyItsBetaNames)
{
    // a linear regression has it unasked, a general linear model hasn't
    Parts parts;
    parts.parameters = "<Parameter name='pb'/><Parameter name='pa'/>";
    EXPECT_TRUE(Adapted(parts.Text())
                    .Has("<ParameterList><Parameter name='pb'></>"
                         "<Parameter name='pa'></><Parameter name='(Constant)'></></>"));
    parts.betas = "<PCell parameterName='pa' beta='1'/><PCell parameterName='pb' beta='2'/>";
    EXPECT_FALSE(Adapted(parts.Text()).Has("(Constant)"));
    parts.covariances = "<PCovCell pRow='(Constant)' pCol='pa' value='1'/>";
    EXPECT_TRUE(Adapted(parts.Text()).Has("<Parameter name='(Constant)'></>"));
}

TEST(RegressionOrder, StaysAGeneralLinearModelWhateverItsNames)
{
    Parts parts;
    parts.parameters = "<Parameter name='p0'/><Parameter name='pa'/><Parameter name='pb'/>";
    // under "regression" these names choose nothing; under "generalLinear" they would
    for (const char* names : {"algorithmName='GZLM'", "modelName='Cox'",
                              "algorithmName='' modelName='CSCox'", "algorithmName='GLMM'"}) {
        parts.model = "modelType='regression' " + std::string(names);
        EXPECT_TRUE(Adapted(parts.Text()).Has("algorithmName='generalLinearModel'")) << names;
    }
    parts.model = "modelType='regression' algorithmName='lm' modelName='Cox'";
    EXPECT_TRUE(Adapted(parts.Text()).Has("algorithmName='lm'"));
}

TEST(RegressionOrder, LooksAtLinearRegressionsAlone)
{
    Parts parts;
    parts.parameters = "<Parameter name='p0'/><Parameter name='pb'/><Parameter name='pa'/>";
    for (const char* type : {"generalLinear", "generalizedLinear", "multinomialLogistic"}) {
        parts.model = "modelType='" + std::string(type) + "' algorithmName='GZLM'";
        EXPECT_TRUE(Adapted(parts.Text()).Untouched()) << type;
    }
}

TEST(NoEstimates, AreSaidAndNothingIsChanged)
{
    Parts parts;
    parts.parameters = "<Parameter name='(Constant)'/>";
    parts.covariates.clear();
    parts.cells.clear();
    std::string text = parts.Text();
    const size_t from = text.find("<ParamMatrix>");
    const std::string end = "</ParamMatrix>";
    text.erase(from, text.find(end) + end.size() - from);
    const Adapted adapted(text);
    EXPECT_EQ(adapted.Rules(), "no-estimates");
    EXPECT_EQ(adapted.before, adapted.after);
}

// A Cox document; its points are on pa alone.
Parts Cox()
{
    Parts parts;
    parts.model = "modelType='CoxRegression' endTimeVariable='y'";
    parts.parameters =
        "<Parameter name='pa' referencePoint='2'/><Parameter name='pb'/>"
        "<Parameter name='pc' referencePoint=''/>";
    return parts;
}

TEST(ReferencePoints, AreCompletedByZero)
{
    const Adapted adapted(Cox().Text());
    EXPECT_EQ(adapted.Rules(), "reference-points");
    EXPECT_TRUE(
        adapted.Has("<ParameterList><Parameter name='pa' referencePoint='2'></>"
                    "<Parameter name='pb' referencePoint='0'></>"
                    "<Parameter name='pc' referencePoint='0'></></>"));
}

TEST(ReferencePoints, AreCompletedWhereASelectorMakesACoxModel)
{
    Parts parts = Cox();
    for (const char* selector : {"algorithmName='Cox'", "modelName='CSCox'"}) {
        parts.model = "modelType='generalLinear' " + std::string(selector);
        parts.root = "PMML version='3.1'";
        EXPECT_EQ(Adapted(parts.Text()).Rules(), "reference-points") << selector;
        parts.root = "PMML version='3.0'";  // no selectors yet
        EXPECT_TRUE(Adapted(parts.Text()).Untouched()) << selector;
    }
}

TEST(ReferencePoints, StayWhereAllOrNoneHaveOneOrTheModelIsAnother)
{
    Parts none = Cox();
    none.parameters = "<Parameter name='pa'/><Parameter name='pb' referencePoint=''/>";
    EXPECT_TRUE(Adapted(none.Text()).Untouched());
    Parts all = Cox();
    all.parameters =
        "<Parameter name='pa' referencePoint='1'/>"
        "<Parameter name='pb' referencePoint='0'/>";
    EXPECT_TRUE(Adapted(all.Text()).Untouched());
    Parts other = Cox();
    other.model = "modelType='generalLinear'";
    EXPECT_TRUE(Adapted(other.Text()).Untouched());
}

TEST(ReferencePoints, LeaveThoseThatAnExtensionGives)
{
    Parts parts = Cox();
    parts.before =
        "<Extension name='referencePoint'>"
        "<X-BasePoint parameterName='pb' value='7'/></Extension>";
    const Adapted adapted(parts.Text());
    EXPECT_TRUE(adapted.Has("<Parameter name='pb'></>"));
    EXPECT_TRUE(adapted.Has("<Parameter name='pc' referencePoint='0'></>"));
}

}  // namespace
}  // namespace MCVelscore_850
