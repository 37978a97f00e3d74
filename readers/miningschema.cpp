// The mining schema: roles, replacements, limits, outliers; then the target and its check.

#include "host/documents/pmmlmodeltags.h"
#include "host/messages/messages.h"
#include "host/variables/valueset.h"
#include "host/variables/varstats.h"
#include "models/coxregrmodel.h"
#include "readers/codes.h"
#include "readers/generalregressiontranslator.h"
#include "readers/parse.h"

namespace MCVelscore_850 {

using xercesc::DOMElement;
using Tags = PMMLModelTags;

namespace {

constexpr double kSchemaVersion = 3.1;         // from here on the schema is required
constexpr double kExtremeLimitsVersion = 4.3;  // from here on extreme values need both limits

// The one mining function for which a model may go without a target.
constexpr BaseModel::FUNCNAME_TYPE kFunctionWithoutTarget = BaseModel::FUNC_CLUSTERING;

}  // namespace

void GeneralRegressionTranslator::ReadMiningSchema(Parse& parse)
{
    DOMElement* schema = GetChildByTag(parse.modelElement, Tags::XML_ELE_MININGSCHEMA);
    NoteElement(parse.modelElement);
    if (schema != nullptr) {
        ParseMiningSchema(schema, parse.dictionary, parse.transformations, parse.model.get(),
                          parse.transformations != nullptr);
    } else if (pmmlVersion >= kSchemaVersion) {
        Refuse(kAbsent, Tags::XML_ELE_MININGSCHEMA.c_str(), Tags::XML_ELE_PMML.c_str());
    }
    ResolveTarget(parse, schema != nullptr);
}

void GeneralRegressionTranslator::ParseMiningSchema(DOMElement* schema,
                                                    const ScoreDictionary* dictionary,
                                                    const ScoreDictionary* transformations,
                                                    ScoreModel* model, bool hasTransformations)
{
    for (DOMElement* child = GetFirstChildElt(schema); child != nullptr;
         child = GetNextSiblingElt(child)) {
        if (!IsEqual(child->getTagName(), Tags::XML_ELE_EXTENSION)) {
            HandleMiningField(child, dictionary, transformations, false, model);
            continue;
        }
        if (!hasTransformations ||
            !IsEqual(GetAttribute(child, Tags::XML_ATT_EXTENSION_EXTENDER),
                     Tags::XML_VAL_EXTENSION_EXTENDER) ||
            !IsEqual(GetAttribute(child, Tags::XML_ATT_NAME),
                     Tags::XML_ATT_TRAN_EXT_NAME_DERIVEDFIELD)) {
            continue;
        }
        const xercesc::DOMNodeList* fields = GetElementsByTagName(child, Tags::XML_ELE_MININGFIELD);
        if (fields->item(0) == nullptr) {
            Refuse(kAbsent, Tags::XML_ELE_MININGFIELD.c_str(),
                   Tags::XML_ATT_TRAN_EXT_NAME_DERIVEDFIELD.c_str());
        }
        // Not by getLength(): it walks to the end, and the next item() then begins at the first.
        for (XMLSize_t i = 0; xercesc::DOMNode* field = fields->item(i); ++i) {
            HandleMiningField(static_cast<DOMElement*>(field), dictionary, transformations, true,
                              model);
        }
    }
}

void GeneralRegressionTranslator::HandleMiningField(DOMElement* field,
                                                    const ScoreDictionary* dictionary,
                                                    const ScoreDictionary* transformations,
                                                    bool useTransformations, ScoreModel* model)
{
    const std::string name = ForcedText(field, Tags::XML_ATT_MININGFIELD_NAME);
    const XMLCh* usage = GetAttribute(field, Tags::XML_ATT_MININGFIELD_USAGETYPE);
    ScoreDictVar* variable = dictionary->GetVar(name);
    if (variable == nullptr && transformations != nullptr && useTransformations) {
        variable = transformations->GetVar(name);
    }
    if (variable == nullptr) {
        Refuse(kNotInDictionaries, name.c_str(), Tags::XML_ELE_DATADICTIONARY.c_str(),
               Tags::XML_ELE_TRANSFORMATION.c_str());
    }

    // Any other usage, supplementary or group for instance, gets no role.
    const bool isTarget = IsEqual(usage, Tags::XML_ATT_MF_FUT_PREDICTED) ||
                          IsEqual(usage, Tags::XML_ATT_MF_FUT_TARGET);
    const bool isActive = IsBlank(usage) || IsEqual(usage, Tags::XML_ATT_MF_FUT_ACTIVE);
    if (isTarget && model->GetTargetVar() != nullptr) Refuse(kSecondTarget, name.c_str());
    const ScoreModel::VarRole role = model->GetVarRole(name);
    if (role == ScoreModel::ROLE_TARGET || role == ScoreModel::ROLE_PREDICTOR) {
        Refuse(kRoleOrCategories, name.c_str());
    }
    bool taken = true;
    if (isActive) taken = model->SetVarRole(variable, ScoreModel::ROLE_PREDICTOR);
    if (isTarget) {
        taken = model->SetVarRole(variable, ScoreModel::ROLE_TARGET) &&
                static_cast<RegressionModel*>(model)->SetTargetVar(variable);
        // The Cox model of complex samples keeps no status values, on purpose.
        if (model->GetModelType() == ScoreModel::TYPE_COXREG) ReadCoxStatus(field, model);
    }
    if (!taken) Refuse(kRoleRefused, Tags::XML_ELE_MININGFIELD.c_str(), name.c_str());

    if (variable->GetMeasureLevel() != ScoreDictVar::CONTINUOUS) {
        SetupCatEncoder(variable);  // a categorical field takes no limit and no replacement here
    } else {
        ReadFieldLimits(field, variable);
    }
}

// The values of the target that mean the event happened: each followed by a comma, the last too.
void GeneralRegressionTranslator::ReadCoxStatus(DOMElement* field, ScoreModel* model)
{
    const auto* status = static_cast<const DOMElement*>(
        GetElementsByTagName(field, Tags::XML_EXT_ELE_COXREG_STRATUM)->item(0));
    if (status == nullptr ||
        AttributeText(status, Tags::XML_ATT_NAME) != Tags::XML_EXT_NAME_COXREG_STATUS) {
        return;
    }
    std::string values;
    const xercesc::DOMNodeList* elements = GetElementsByTagName(status, Tags::XML_ELE_VALUE);
    for (XMLSize_t i = 0; const xercesc::DOMNode* value = elements->item(i); ++i) {
        values += AttributeText(static_cast<const DOMElement*>(value), Tags::XML_ATT_VALUE) + ",";
    }
    if (!values.empty()) static_cast<CoxRegModel*>(model)->SetTargetString(values);
}

void GeneralRegressionTranslator::ReadFieldLimits(DOMElement* field, ScoreDictVar* variable)
{
    std::unique_ptr<VarStats> stats;
    const auto statsOnNeed = [&stats]() -> VarStats& {
        if (!stats) stats = std::make_unique<VarStats>();
        return *stats;
    };
    const XMLCh* replacement = GetAttribute(field, Tags::XML_ATT_MININGFIELD_MISSREPLACE);
    if (!IsBlank(replacement)) {
        const NumericValue value(VerifyDouble(replacement));
        statsOnNeed().SetMissingReplacement(&value);
    }
    double low = NumericValue::GetSysmisValue();
    double high = NumericValue::GetSysmisValue();
    const XMLCh* highText = GetAttribute(field, Tags::XML_ATT_MININGFIELD_HIGHVALUE);
    const XMLCh* lowText = GetAttribute(field, Tags::XML_ATT_MININGFIELD_LOWVALUE);
    if (!IsBlank(highText)) {
        high = VerifyDouble(highText);
        statsOnNeed().SetMaximum(high);
    }
    if (!IsBlank(lowText)) {
        low = VerifyDouble(lowText);
        statsOnNeed().SetMinimum(low);
    }
    variable->SetVarStats(stats.release());

    const XMLCh* outliers = GetAttribute(field, Tags::XML_ATT_MININGFIELD_OUTLIERS);
    if (IsEqual(outliers, Tags::XML_VAL_MININGFIELD_OUTLIERS_ASEXTREME)) {
        variable->SetOutlierTreatment(ScoreDictVar::AS_EXTREME);
        if (pmmlVersion >= kExtremeLimitsVersion) {
            const char* fieldTag = Tags::XML_ELE_MININGFIELD.c_str();
            if (NumericValue::IsSystemMissingValue(low)) {
                Refuse(kLowValueNeeded, Tags::XML_ATT_MININGFIELD_LOWVALUE.c_str(), fieldTag);
            }
            if (NumericValue::IsSystemMissingValue(high)) {
                Refuse(kHighValueNeeded, Tags::XML_ATT_MININGFIELD_HIGHVALUE.c_str(), fieldTag);
            }
        }
    } else if (IsEqual(outliers, Tags::XML_VAL_MININGFIELD_OUTLIERS_ASMISS)) {
        variable->SetOutlierTreatment(ScoreDictVar::AS_MISSING);
    }
}

void GeneralRegressionTranslator::ResolveTarget(Parse& parse, bool hasSchema)
{
    NoteElement(parse.modelElement);
    parse.targetName = Transcode(parse.targetAttribute);
    const bool mayLack = parse.function == kFunctionWithoutTarget;
    if (hasSchema) {
        const ScoreDictVar* target = parse.model->GetTargetVar();
        if (target == nullptr && !mayLack) Refuse(kNoTarget);
        if (parse.targetAttribute != nullptr) {
            if (target == nullptr || target->GetName() != parse.targetName) {
                Refuse(kTargetsDiffer, parse.targetName.c_str(),
                       Tags::XML_ELE_DATADICTIONARY.c_str());
            }
            return;
        }
        if (target != nullptr) {
            parse.targetName = target->GetName();
            return;
        }
    }
    const ScoreDictVar* target = parse.dictionary->GetVar(parse.targetName);
    if (target == nullptr && !mayLack) {
        Refuse(kNotInDictionaries, parse.targetName.c_str(), Tags::XML_ELE_DATADICTIONARY.c_str(),
               Tags::XML_ELE_TRANSFORMATION.c_str());
    }
    parse.model->SetVarRole(target, ScoreModel::ROLE_TARGET);
    parse.model->SetTargetVar(target);
}

void GeneralRegressionTranslator::CheckTarget(Parse& parse)
{
    const ScoreDictVar* target = parse.model->GetTargetVar();
    if (target == nullptr) return;
    const char* name = parse.targetName.c_str();
    if (target->GetMeasureLevel() != ScoreDictVar::CONTINUOUS) {
        const ValueSet* values = target->GetValueSet();
        if (values != nullptr) {
            parse.targetHasCategoryList = values->GetKind() == ValueSet::ENUMERATED;
        } else if (!parse.IsAmong(kCoxFamilies)) {
            Refuse(kRoleOrCategories, name);
        }
    }
    const bool generalized = parse.Is(kGeneralizedLinear);
    const bool binary = parse.Is(kBinary) || (generalized && !parse.choice.targetIsScale);
    if (binary && target->GetNumCategories() != 2) {
        Refuse(kTargetNotTwoCategories, Tags::XML_ELE_VALUE.c_str(), name);
    }
    if (generalized && parse.choice.targetIsScale &&
        target->GetMeasureLevel() != ScoreDictVar::CONTINUOUS) {
        Refuse(kTargetNotContinuous, Tags::XML_VAL_OT_CONTINUOUS.c_str(),
               Tags::XML_ATT_DATAFIELD_OPTYPE.c_str(), name);
    }
}

}  // namespace MCVelscore_850
