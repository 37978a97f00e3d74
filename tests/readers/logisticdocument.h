#ifndef VELSCORE_TESTS_READERS_LOGISTICDOCUMENT_H
#define VELSCORE_TESTS_READERS_LOGISTICDOCUMENT_H

#include <string>

#include "tests/readers/readdocument.h"

namespace MCVelscore_850::testing {

/// Pieces of a binary logistic document, so that a test can change the ones it is about: target y
/// (no, yes), factor f (u, v, w) with contrasts, covariate x, logit p(yes) = 0.5 + 2 c1(f) - c2(f)
/// + 3 x.
struct LogisticDocument {
    std::string version = "4.2";
    std::string selector = "contrastLogistic";
    std::string modelType = "multinomialLogistic";
    std::string attributes;  // of the model element
    std::string target =
        "<DataField name='y' optype='categorical' dataType='string'>"
        "<Value value='no'/><Value value='yes'/></DataField>";
    std::string fields =
        "<DataField name='f' optype='categorical' dataType='string'><Value value='u'/>"
        "<Value value='v'/><Value value='w'/></DataField>"
        "<DataField name='x' optype='continuous' dataType='double'/>";
    std::string transformations;
    std::string leading;  // children of the model element ahead of the others
    std::string schema =
        "<MiningField name='y' usageType='target'/><MiningField name='f'/>"
        "<MiningField name='x'/>";
    std::string parameters =
        "<Parameter name='p0'/><Parameter name='pu'/><Parameter name='pv'/>"
        "<Parameter name='px'/>";
    std::string factors =
        "<Predictor name='f' contrastMatrixType='sum'><Matrix nbRows='3' nbCols='2'>"
        "<Array>1 0</Array><Array>0 1</Array><Array>-1 -1</Array></Matrix></Predictor>";
    std::string covariates = "<Predictor name='x'/>";
    std::string cells =
        "<PPCell value='u' predictorName='f' parameterName='pu'/>"
        "<PPCell value='v' predictorName='f' parameterName='pv'/>"
        "<PPCell value='1' predictorName='x' parameterName='px'/>";
    std::string covariances;
    std::string betas =
        "<PCell targetCategory='yes' parameterName='p0' beta='0.5'/>"
        "<PCell targetCategory='yes' parameterName='pu' beta='2'/>"
        "<PCell targetCategory='yes' parameterName='pv' beta='-1'/>"
        "<PCell targetCategory='yes' parameterName='px' beta='3'/>";

    std::string Text() const
    {
        std::string text = "<PMML version='" + version + "'><DataDictionary>" + target + fields +
                           "</DataDictionary>" + transformations +
                           "<GeneralRegressionModel functionName='classification' modelType='" +
                           modelType + "' algorithmName='" + selector + "' " + attributes + ">" +
                           leading + "<MiningSchema>" + schema + "</MiningSchema><ParameterList>" +
                           parameters + "</ParameterList><FactorList>" + factors +
                           "</FactorList><CovariateList>" + covariates + "</CovariateList>";
        if (!cells.empty()) text += "<PPMatrix>" + cells + "</PPMatrix>";
        if (!covariances.empty()) text += "<PCovMatrix>" + covariances + "</PCovMatrix>";
        return text + "<ParamMatrix>" + betas + "</ParamMatrix></GeneralRegressionModel></PMML>";
    }
};

}  // namespace MCVelscore_850::testing

#endif
