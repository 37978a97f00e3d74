#ifndef VELSCORE_READERS_PARSE_H
#define VELSCORE_READERS_PARSE_H

#include <map>
#include <memory>
#include <string>
#include <vector>

#include <xercesc/dom/DOM.hpp>

#include "host/model/basemodel.h"
#include "models/regressionmodel.h"
#include "readers/modelchoice.h"

namespace MCVelscore_850 {

/// The state of one parse: what an earlier stage leaves for a later one.
struct Parse {
    // Head.
    xercesc::DOMElement* root = nullptr;
    xercesc::DOMElement* modelElement = nullptr;
    std::string versionText;
    const XMLCh* targetAttribute = nullptr;  ///< null when absent or empty
    std::string modelType;
    ModelChoice choice{kMultinomial, true};
    std::unique_ptr<RegressionModel> model;
    BaseModel::FUNCNAME_TYPE function = BaseModel::FUNC_UNKNOWN;

    // Dictionaries; the model owns them.
    ScoreDictionary* dictionary = nullptr;
    TransformationDictionary* transformations = nullptr;

    // Target.
    std::string targetName;
    bool targetHasCategoryList = false;

    // Parameters in document order, the constant last.
    std::vector<std::string> paramNames;
    std::vector<std::string> paramLabelsList;
    std::string constantParamName;  ///< "(Constant)" when the list holds it
    std::map<std::string, double> basePoints;
    bool hasIntercept = false;

    // Options of the generalized families.
    bool linkParamRequired = false;  ///< a link with a parameter was named
    bool linkParamSeen = false;
    // Baselines of a Cox model, from every section that the document has.
    std::vector<std::map<double, double>> hazardTables;
    std::map<std::string, double> stratumMaxTimes;

    bool Is(FamilyCode code) const { return choice.code == code; }
    bool IsAmong(FamilySet families) const { return Has(families, choice.code); }
};

/// What one baseline section tells of its strata; the tables themselves are in Parse.
struct Baseline {
    std::string stratumName;  ///< empty when the model isn't stratified
    std::vector<std::string> stratumCategories;
    std::vector<double> minTimes;
    std::vector<double> maxTimes;
};

}  // namespace MCVelscore_850

#endif
