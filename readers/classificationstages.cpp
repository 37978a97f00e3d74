// What single families that predict a category read from attributes of the model element.

#include "host/documents/pmmlmodeltags.h"
#include "models/blrmodel.h"
#include "models/ormodel.h"
#include "readers/codes.h"
#include "readers/generalregressiontranslator.h"
#include "readers/parse.h"

namespace MCVelscore_850 {

using Tags = PMMLModelTags;

namespace {

constexpr double kReferenceCategoryVersion = 4.0;  // from here on the attribute is looked at

struct CumulativeLinkWord {
    const std::string& word;
    CumulativeLinkModel::CumulLinkFunction link;
};

const CumulativeLinkWord kOrdinalLinks[] = {
    {Tags::XML_VAL_LINKFUNCTION_CAUCHIT, CumulativeLinkModel::CUM_CAUCHIT},
    {Tags::XML_VAL_LINKFUNCTION_PROBIT, CumulativeLinkModel::CUM_PROBIT},
    {Tags::XML_VAL_LINKFUNCTION_LOGLOG, CumulativeLinkModel::CUM_LOGLOG},
    {Tags::XML_VAL_LINKFUNCTION_LOGIT, CumulativeLinkModel::CUM_LOGIT},
    {Tags::XML_VAL_LINKFUNCTION_CLOGLOG, CumulativeLinkModel::CUM_CLOGLOG},
};

}  // namespace

void GeneralRegressionTranslator::ReadOrdinalLink(Parse& parse)
{
    if (!parse.Is(kOrdinal)) return;
    const std::string text = AttributeText(parse.modelElement, Tags::XML_ATT_LINKFUNCTION);
    for (const CumulativeLinkWord& row : kOrdinalLinks) {
        if (text == row.word) static_cast<ORModel&>(*parse.model).SetLinkFunction(row.link);
    }
}

void GeneralRegressionTranslator::ReadTargetReferenceCategory(Parse& parse)
{
    if (!parse.Is(kBinary) || pmmlVersion < kReferenceCategoryVersion) return;
    const std::string text = AttributeText(parse.modelElement, Tags::XML_ATT_TARGETREFCATEGORY);
    if (!text.empty()) static_cast<BLRModel&>(*parse.model).SetTargetReferenceCategory(text);
}

void GeneralRegressionTranslator::ReadOrdinalOffset(Parse& parse)
{
    if (!parse.Is(kOrdinal)) return;
    auto& model = static_cast<ORModel&>(*parse.model);
    const XMLCh* value = GetAttribute(parse.modelElement, Tags::XML_ATT_RM_EXT_NAME_OFFSET_VALUE);
    if (!IsBlank(value)) model.SetOffsetValue(VerifyDouble(value));
    const std::string name = AttributeText(parse.modelElement, Tags::XML_VAL_RM_EXT_NAME_OFFSETVAR);
    if (name.empty()) return;
    // The one look-up that doesn't note that the model needs derived variables.
    const ScoreDictVar* variable = parse.dictionary->GetVar(name);
    if (variable == nullptr && parse.transformations != nullptr) {
        variable = parse.transformations->GetVar(name);
    }
    if (variable == nullptr) {
        Refuse(kNotInDictionaries, name.c_str(), Tags::XML_ELE_DATADICTIONARY.c_str(),
               Tags::XML_ELE_TRANSFORMATION.c_str());
    }
    if (variable->GetMeasureLevel() != ScoreDictVar::CONTINUOUS) {
        Refuse(kOffsetNotContinuous, ToString(variable->GetMeasureLevel()).c_str(),
               Tags::XML_ATT_DATAFIELD_OPTYPE.c_str(), name.c_str(),
               Tags::XML_VAL_OT_CONTINUOUS.c_str());
    }
    model.SetOffsetVar(variable);
}

}  // namespace MCVelscore_850
