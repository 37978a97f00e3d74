// The options of single families that stand beside the published tables: leading Extension
// children of the model element, each a name and a value.

#include "host/documents/pmmlmodeltags.h"
#include "host/variables/scoredictvar.h"
#include "models/blrmodel.h"
#include "models/glrmodel.h"
#include "models/normalizedmodel.h"
#include "readers/cellreading.h"
#include "readers/codes.h"
#include "readers/generalregressiontranslator.h"
#include "readers/modeloptions.h"
#include "readers/parse.h"

namespace MCVelscore_850 {

using xercesc::DOMElement;
using Tags = PMMLModelTags;

namespace {

GLRModel& GeneralLinear(const Parse& parse) { return static_cast<GLRModel&>(*parse.model); }

NormalizedModel& Normalized(const Parse& parse)
{
    return static_cast<NormalizedModel&>(*parse.model);
}

// What all families have. An extension of these ends its turn here.
const ModelOptionRow kCommonExtensions[] = {
    {kAllFamilies, Tags::XML_VAL_NAME_MODELDF,
     [](const ModelOption& option) {
         if (option.value.empty()) return;
         option.parse.model->SetDF(option.reader.VerifyDouble(option.value));
     }},
    {kAllFamilies, Tags::XML_ATT_RM_EXT_NAME_ALLMISSINGFACTORS,
     [](const ModelOption& option) {
         // This spelling alone.
         if (option.value == "true") option.parse.model->SetAllowMissingFactors(true);
     }},
};

// What single families have, compared in this order.
const ModelOptionRow kFamilyExtensions[] = {
    {kGeneralizedFamilies, Tags::XML_VAL_RM_EXT_NAME_TRIALVAR, TakeTrialsVariable},
    {kGeneralizedFamilies, Tags::XML_VAL_RM_EXT_NAME_OFFSETVAR, TakeOffsetVariable},
    {kGeneralizedFamilies, Tags::XML_ATT_RM_EXT_NAME_TRIALS_VALUE, TakeTrialsValue},
    {kGeneralizedFamilies, Tags::XML_ATT_RM_EXT_NAME_OFFSET_VALUE, TakeOffsetValue},
    {kGeneralizedFamilies, Tags::XML_VAL_RM_EXT_NAME_LINK, TakeLinkOfExtension},
    {kGeneralizedFamilies, Tags::XML_ATT_RM_EXT_NAME_LINK_PARAM, TakeLinkParameter},
    {kGeneralizedFamilies, Tags::XML_VAL_RM_EXT_NAME_DISTRIBUTION, TakeDistribution},
    {kCoxFamilies, Tags::XML_EXT_NAME_COXREG_ENDTIMEVARIABLE, TakeEndTimeVariable},
    {kCoxFamilies, Tags::XML_EXT_NAME_COXREG_STARTTIMEVARIABLE, TakeStartTimeVariable},
    {kCoxFamilies, Tags::XML_EXT_NAME_COXREG_SUBJECT_VARIABLE, TakeSubjectVariable},
    {kCoxFamilies, Tags::XML_EXT_NAME_COXREG_REFERENCEPOINT, TakeReferencePoints},
    {kCoxFamilies, Tags::XML_EXT_NAME_COXREG_XBASE_CUMHAZARD_TABLES, TakeHazardTables},
    {Family(kBinary), Tags::XML_ATT_RM_EXT_NAME_CUTOFF,
     [](const ModelOption& option) {
         static_cast<BLRModel&>(*option.parse.model)
             .SetCutoff(option.reader.VerifyDouble(option.value));
     }},
    {Family(kNormalized), Tags::XML_ATT_RM_EXT_NAME_NORMALIZATION,
     [](const ModelOption& option) {
         if (Normalized(option.parse).SetNormalization(option.value)) return;
         Refuse(kUnexpectedWord, option.value.c_str(), Tags::XML_ATT_VALUE.c_str(),
                option.name.c_str());
     }},
    {Family(kNormalized), Tags::XML_ATT_RM_EXT_NAME_REMAINDER,
     [](const ModelOption& option) {
         const ScoreDictVar* target = option.parse.model->GetTargetVar();
         std::string category = option.value;
         if (target == nullptr || !target->IsValid(MakeTargetValue(*target, category).get())) {
             Refuse(kInvalidValue, option.value.c_str(), option.parse.targetName.c_str());
         }
         Normalized(option.parse).SetRemainder(category);
     }},
    {Family(kNormalized), Tags::XML_ATT_RM_EXT_NAME_ORDERED,
     [](const ModelOption& option) {
         if (option.value == "true") Normalized(option.parse).SetOrdered();
     }},
    {Family(kGeneralLinear), Tags::XML_ATT_RM_EXT_NAME_SIGMA,
     [](const ModelOption& option) {
         GeneralLinear(option.parse).SetSigmaValue(option.reader.VerifyDouble(option.value));
     }},
    {Family(kGeneralLinear), Tags::XML_ATT_RM_EXT_NAME_PERCENTILE,
     [](const ModelOption& option) {
         GeneralLinear(option.parse).SetPercentileValue(option.reader.VerifyDouble(option.value));
     }},
};

// The first row that fits takes the option; false when none does, and it is passed over.
template <size_t n>
bool TakeByTable(const ModelOption& option, const ModelOptionRow (&rows)[n])
{
    for (const ModelOptionRow& row : rows) {
        if (!option.parse.IsAmong(row.families) || option.name != row.name) continue;
        row.take(option);
        return true;
    }
    return false;
}

}  // namespace

void GeneralRegressionTranslator::ReadExtensions(Parse& parse)
{
    // Leading children only: an extension behind a child of another kind is never seen.
    for (DOMElement* child = GetFirstChildElt(parse.modelElement);
         child != nullptr && IsEqual(child->getTagName(), Tags::XML_ELE_EXTENSION);
         child = GetNextSiblingElt(child)) {
        const std::string name = AttributeText(child, Tags::XML_ATT_EXT_NAME);
        const std::string value = AttributeText(child, Tags::XML_ATT_VALUE);
        NoteElement(child);
        const ModelOption option{*this, parse, child, name, value};
        if (TakeByTable(option, kCommonExtensions)) continue;
        TakeByTable(option, kFamilyExtensions);
        // On purpose: a general linear model learns its algorithm from any other extension, of
        // whatever name, and without one never.
        const std::string algorithm = AttributeText(parse.modelElement, Tags::XML_ATT_MODELALGO);
        if (parse.Is(kGeneralLinear) && !algorithm.empty()) {
            GeneralLinear(parse).SetAlgorithmName(algorithm);
        }
    }
}

}  // namespace MCVelscore_850
