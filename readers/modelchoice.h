#ifndef VELSCORE_READERS_MODELCHOICE_H
#define VELSCORE_READERS_MODELCHOICE_H

#include <functional>
#include <memory>
#include <string>

#include "host/model/modelfamilies.h"

namespace MCVelscore_850 {

class RegressionModel;

/// The family that a document asks for. `targetIsScale` is read with kGeneralizedLinear only.
struct ModelChoice {
    FamilyCode code;
    bool targetIsScale;
};

/// What the choice looks at: the model type, the version, and any attribute of the model element
/// by name (empty when absent).
struct ModelHead {
    std::string modelType;
    double version;
    std::function<std::string(const std::string& attribute)> attribute;
};

/// Chooses the family: by model type, version, selector (the algorithm name, else the model name)
/// and, for generalized selectors, function name, distribution and link. An unknown model type
/// refuses with 260153.
ModelChoice ChooseFamily(const ModelHead& head);

/// A new model of the family. Refuses with 260153 a code without one.
std::unique_ptr<RegressionModel> MakeModel(FamilyCode code, const std::string& modelType);

}  // namespace MCVelscore_850

#endif
