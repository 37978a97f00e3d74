#ifndef VELSCORE_TESTS_ENGINE_SMALLMODELS_H
#define VELSCORE_TESTS_ENGINE_SMALLMODELS_H

#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "engine/documents/loadedmodel.h"
#include "tests/system/testmodel.h"

// Documents whose scores are plain arithmetic. TestModel is the linear one:
// y = 1 + 2 x + 10 [sex = m], standard error 2, 8 degrees of freedom.

namespace MCVelscore_850 {

inline LoadedModel OpenText(const std::string& document, const LoadOptions& options = {})
{
    return LoadedModel(DocumentText{document, "model.pmml"},
                       std::make_shared<Plugin>(VELSCORE_PLUGIN), options);
}

/// The text with another in the place of the first that stands in it.
inline std::string Replaced(std::string text, const std::string& from, const std::string& to)
{
    const size_t at = text.find(from);
    EXPECT_NE(at, std::string::npos) << from;
    return at == std::string::npos ? text : text.replace(at, from.size(), to);
}

/// The text without what stands from `begin` to `end`, both of them gone.
inline std::string Without(std::string text, const std::string& begin, const std::string& end)
{
    const size_t from = text.find(begin);
    const size_t to = text.find(end, from);
    EXPECT_NE(to, std::string::npos) << begin << " " << end;
    return to == std::string::npos ? text : text.erase(from, to + end.size() - from);
}

/// P(yes) = 3^x / (1 + 3^x): a quarter at x = -1, three quarters at 1.
inline std::string ClassifyingText(const std::string& afterSchema = "")
{
    return "<PMML version='4.4' xmlns='http://www.dmg.org/PMML-4_4'><Header/><DataDictionary>"
           "<DataField name='t' optype='categorical' dataType='string'>"
           "<Value value='no' displayValue='refused'/>"
           "<Value value='yes' displayValue='granted'/></DataField>"
           "<DataField name='x' optype='continuous' dataType='double'/></DataDictionary>"
           "<GeneralRegressionModel modelType='multinomialLogistic' functionName='classification' "
           "targetReferenceCategory='no'><MiningSchema>"
           "<MiningField name='t' usageType='target'/><MiningField name='x'/></MiningSchema>" +
           afterSchema +
           "<ParameterList><Parameter name='p0'/><Parameter name='px'/></ParameterList>"
           "<FactorList/><CovariateList><Predictor name='x'/></CovariateList>"
           "<PPMatrix><PPCell value='1' predictorName='x' parameterName='px'/></PPMatrix>"
           "<ParamMatrix><PCell targetCategory='yes' parameterName='p0' beta='0'/>"
           "<PCell targetCategory='yes' parameterName='px' beta='1.0986122886681098'/>"
           "</ParamMatrix></GeneralRegressionModel></PMML>";
}

/// Cumulative hazard 0.25 from time 2 on, 1 from 5 on and 2 from 8 on, times 2^x; until time 10.
inline std::string CoxText()
{
    return "<PMML version='4.4' xmlns='http://www.dmg.org/PMML-4_4'><Header/><DataDictionary>"
           "<DataField name='status' optype='continuous' dataType='double'/>"
           "<DataField name='time' optype='continuous' dataType='double'/>"
           "<DataField name='x' optype='continuous' dataType='double'/></DataDictionary>"
           "<GeneralRegressionModel modelType='CoxRegression' functionName='regression' "
           "endTimeVariable='time' statusVariable='status'><MiningSchema>"
           "<MiningField name='status' usageType='target'/><MiningField name='time'/>"
           "<MiningField name='x'/></MiningSchema>"
           "<ParameterList><Parameter name='px' referencePoint='0'/></ParameterList>"
           "<FactorList/><CovariateList><Predictor name='x'/></CovariateList>"
           "<PPMatrix><PPCell value='1' predictorName='x' parameterName='px'/></PPMatrix>"
           "<ParamMatrix><PCell parameterName='px' beta='0.6931471805599453'/></ParamMatrix>"
           "<EventValues><Value value='1'/></EventValues>"
           "<BaseCumHazardTables maxTime='10'><BaselineCell time='2' cumHazard='0.25'/>"
           "<BaselineCell time='5' cumHazard='1'/><BaselineCell time='8' cumHazard='2'/>"
           "</BaseCumHazardTables></GeneralRegressionModel></PMML>";
}

}  // namespace MCVelscore_850

#endif
