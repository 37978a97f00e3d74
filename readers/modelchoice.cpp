#include "readers/modelchoice.h"

#include "host/documents/pmmlmodeltags.h"
#include "host/messages/messages.h"
#include "host/messages/vsexception.h"
#include "models/blrmodel.h"
#include "models/clrmodel.h"
#include "models/coxregrmodel.h"
#include "models/glrmodel.h"
#include "models/gzlrmodel.h"
#include "models/lrmodel.h"
#include "models/mlrmodel.h"
#include "models/normalizedmodel.h"
#include "models/ogzlrmodel.h"
#include "models/ormodel.h"
#include "readers/codes.h"

namespace MCVelscore_850 {

namespace {

using Tags = PMMLModelTags;

// The algorithm name, else the model name, as written.
std::string SelectorName(const ModelHead& head)
{
    const std::string algorithm = head.attribute(Tags::XML_ATT_MODELALGO);
    return algorithm.empty() ? head.attribute(Tags::XML_ATT_RM_MODEL_NAME) : algorithm;
}

ModelChoice GeneralizedMultinomial(const ModelHead& head)
{
    const FamilyCode code = FamilyUnderLink(kMultinomialGeneralized,
                                            head.attribute(Tags::XML_VAL_RM_EXT_NAME_DISTRIBUTION),
                                            head.attribute(Tags::XML_ATT_LINKFUNCTION));
    return {code, code != kGeneralizedLinear};
}

ModelChoice GeneralizedLinear(const ModelHead& head)
{
    const bool classifies =
        head.attribute(Tags::XML_ATT_RM_FUNC_NAME) == Tags::XML_VAL_RM_FUNC_NAME_C;
    return {kGeneralizedLinear, !classifies};
}

template <class Model>
std::unique_ptr<RegressionModel> Make()
{
    return std::make_unique<Model>();
}

template <ScoreModel::ModelType type>
std::unique_ptr<RegressionModel> MakeCox()
{
    return std::make_unique<CoxRegModel>(type);
}

// The class of each family.
struct ClassRow {
    FamilyCode code;
    std::unique_ptr<RegressionModel> (*make)();
};

constexpr ClassRow kClasses[] = {
    {kMultinomial, Make<MLRModel>},
    {kMultinomialGeneralized, Make<MLRModel>},
    {kNormalized, Make<NormalizedModel>},
    {kGeneralLinear, Make<GLRModel>},
    {kLinear, Make<LRModel>},
    {kConditional, Make<CLRModel>},
    {kBinary, Make<BLRModel>},
    {kOrdinal, Make<ORModel>},
    {kGeneralizedLinear, Make<GZLRModel>},
    {kOrdinalGeneralized, Make<OGZLRModel>},
    {kCox, MakeCox<ScoreModel::TYPE_COXREG>},
    {kCoxComplexSamples, MakeCox<ScoreModel::TYPE_CSCOXREG>},
};

[[noreturn]] void RefuseModelType(const std::string& modelType)
{
    Refuse(kUnexpectedWord, modelType.c_str(), Tags::XML_ATT_RM_MODEL_TYPE.c_str(),
           Tags::XML_ELE_REGRESSMODEL.c_str());
}

}  // namespace

ModelChoice ChooseFamily(const ModelHead& head)
{
    const auto code = FindFamily(head.modelType, head.version, SelectorName(head));
    if (!code) RefuseModelType(head.modelType);
    switch (*code) {
        case kMultinomialGeneralized: return GeneralizedMultinomial(head);
        case kGeneralizedLinear: return GeneralizedLinear(head);
        default: return {*code, true};
    }
}

std::unique_ptr<RegressionModel> MakeModel(FamilyCode code, const std::string& modelType)
{
    for (const ClassRow& row : kClasses) {
        if (row.code == code) return row.make();
    }
    RefuseModelType(modelType);
}

}  // namespace MCVelscore_850
