// The options of the generalized families as attributes of the model element. They come after the
// extensions and overwrite what those said, offset and trials apart, which keep the first.

#include "host/documents/pmmlmodeltags.h"
#include "models/gzlrmodel.h"
#include "readers/codes.h"
#include "readers/generalregressiontranslator.h"
#include "readers/modeloptions.h"
#include "readers/parse.h"

namespace MCVelscore_850 {

using Tags = PMMLModelTags;

namespace {

// Taken in this order, each unless it is empty.
const ModelOptionRow kAttributes[] = {
    {kGeneralizedFamilies, Tags::XML_VAL_RM_EXT_NAME_TRIALVAR, TakeTrialsVariable},
    {kGeneralizedFamilies, Tags::XML_VAL_RM_EXT_NAME_OFFSETVAR, TakeOffsetVariableWithRole},
    {kGeneralizedFamilies, Tags::XML_ATT_RM_EXT_NAME_TRIALS_VALUE, TakeTrialsValue},
    {kGeneralizedFamilies, Tags::XML_ATT_RM_EXT_NAME_OFFSET_VALUE, TakeOffsetValue},
    {Family(kGeneralizedLinear), Tags::XML_ATT_RM_NAME_LINKFUNCTION, TakeLinkOfAttribute},
    {Family(kOrdinalGeneralized), Tags::XML_ATT_RM_NAME_CUMULATIVELINK, TakeLinkOfAttribute},
    {kGeneralizedFamilies, Tags::XML_ATT_RM_EXT_NAME_LINK_PARAM, TakeLinkParameter},
    {kGeneralizedFamilies, Tags::XML_VAL_RM_EXT_NAME_DISTRIBUTION, TakeDistribution},
};

}  // namespace

void GeneralRegressionTranslator::ReadModelAttributes(Parse& parse)
{
    NoteElement(parse.modelElement);
    for (const ModelOptionRow& row : kAttributes) {
        if (!parse.IsAmong(row.families)) continue;
        const std::string value = AttributeText(parse.modelElement, row.name);
        if (!value.empty()) row.take({*this, parse, parse.modelElement, row.name, value});
    }
}

// The ancillary parameter of the negative binomial distribution may come under a name of its own;
// under the link of that name it is the link's parameter.
void GeneralRegressionTranslator::ReadDistributionParameter(Parse& parse)
{
    if (!parse.Is(kGeneralizedLinear)) return;
    auto& model = static_cast<GZLRModel&>(*parse.model);
    if (model.GetDistType() != GZLRModel::DIST_NEGBIN ||
        model.GetLinkFunction() != GZLRModel::LINK_NEGBIN) {
        return;
    }
    NoteElement(parse.modelElement);
    const std::string& name = Tags::XML_ATT_RM_EXT_NAME_DIST_PARAM;
    const std::string value = AttributeText(parse.modelElement, name);
    if (!value.empty()) {
        TakeLinkParameter({*this, parse, parse.modelElement, name, value});
    } else if (!parse.linkParamSeen) {
        Refuse(kAbsent, name.c_str(), Tags::XML_ELE_REGRESSMODEL.c_str());
    }
}

void GeneralRegressionTranslator::ExpectLinkParameter(Parse& parse)
{
    if (!parse.Is(kGeneralizedLinear) || !parse.linkParamRequired || parse.linkParamSeen) return;
    NoteElement(parse.modelElement);
    Refuse(kAbsent, Tags::XML_ATT_RM_EXT_NAME_LINK_PARAM.c_str(),
           Tags::XML_ELE_REGRESSMODEL.c_str());
}

}  // namespace MCVelscore_850
