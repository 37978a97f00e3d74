#include "readers/cellreading.h"

#include <xercesc/dom/DOM.hpp>

#include "host/documents/basetranslator.h"
#include "host/documents/pmmlmodeltags.h"
#include "host/values/stringvalue.h"
#include "host/variables/catencoder.h"
#include "host/variables/scoredictvar.h"
#include "host/variables/valueset.h"
#include "models/regressionmodel.h"

namespace MCVelscore_850 {

using xercesc::DOMElement;

void ExpectTag(const BaseTranslator& reader, const DOMElement* element, const std::string& tag,
               const std::string& parent, int code)
{
    if (reader.IsEqual(element->getTagName(), tag)) return;
    reader.NoteElement(element);
    Refuse(code, reader.ToString(element->getTagName()).c_str(), tag.c_str(), parent.c_str());
}

ParamTableCell MakeParamTableCell(const BaseTranslator& reader, const XMLCh* beta, const XMLCh* df)
{
    ParamTableCell cell;
    cell.SetBeta(reader.VerifyDouble(beta, PMMLModelTags::XML_ATT_PC_BETA));
    cell.SetDf(IsBlank(df) ? 0 : reader.VerifyInt(df));
    return cell;
}

std::unique_ptr<ScoreValue> MakeTargetValue(const ScoreDictVar& target, std::string& text)
{
    if (target.GetValueType() != ScoreDictVar::NUMERIC) return std::make_unique<StringValue>(text);
    auto value = std::make_unique<NumericValue>(text);
    text = value->GetString();
    return value;
}

void AddCategoryOfCell(const BaseTranslator& reader, ScoreDictVar& variable,
                       const std::string& text, int& index)
{
    if (ScoreValue* value = reader.CarefullyMakeVarValue(&variable, text)) {
        variable.AddCategory(value, text);
        if (variable.GetCatEncoder() != nullptr) {
            index = variable.GetCatEncoderForUpdate()->EncodeString(text);
        }
    }
    const ValueSet* values = variable.GetValueSet();
    if (values != nullptr && values->GetKind() == ValueSet::NONE) {
        Refuse(kRoleOrCategories, variable.GetName().c_str());
    }
}

PredictorCell MakePredictorCell(const BaseTranslator& reader, ScoreModel::VarRole role,
                                const ScoreDictVar* variable, const std::string& predictor,
                                const std::string& text, int index)
{
    if (role == ScoreModel::ROLE_FACTOR && variable->GetValueType() == ScoreDictVar::STRING) {
        return {std::make_unique<StringValue>(text), static_cast<double>(index)};
    }
    if (role != ScoreModel::ROLE_FACTOR && role != ScoreModel::ROLE_COVARIATE) {
        Refuse(kNoPredictorRole, predictor.c_str());
    }
    const double number = reader.VerifyDouble(text, PMMLModelTags::XML_ATT_PPC_VALUE);
    return {std::make_unique<NumericValue>(number), number};
}

void StoreCellNumber(RegressionModel& model, const std::string& parameter,
                     const std::string& predictor, double number)
{
    RegressionModel::Matrix& numbers = model.GetNumericPPMatrix();
    if (numbers.empty()) return;
    const int row = model.GetParameterIndex(parameter);
    const int column = model.GetPredictorIndex(predictor);
    if (row >= 0 && column >= 0) {
        numbers[static_cast<size_t>(row)][static_cast<size_t>(column)] = number;
    }
}

}  // namespace MCVelscore_850
