// The sections that define the regression: parameters, factors, covariates, betas, reference
// points, and the predictor-to-parameter matrix.

#include "host/documents/pmmlmodeltags.h"
#include "host/messages/messages.h"
#include "models/blrmodel.h"
#include "models/coxregrmodel.h"
#include "models/glrmodel.h"
#include "models/gzlrmodel.h"
#include "models/lrmodel.h"
#include "readers/cellreading.h"
#include "readers/codes.h"
#include "readers/generalregressiontranslator.h"
#include "readers/parse.h"
#include "readers/tablelimit.h"

namespace MCVelscore_850 {

using xercesc::DOMElement;
using Tags = PMMLModelTags;

namespace {

const std::string kConstant = "(Constant)";
const std::string kInterceptLabel = "Intercept";

}  // namespace

// What the cells of the beta table have named so far.
struct TargetCells {
    int categoryCount = 0;      // of the target
    int cellsWithCategory = 0;  // cells so far that named a category
    const XMLCh* lastCategoryAttribute = nullptr;
    std::string firstCategory;  // of a binary model, whose cells all name one category
};

void GeneralRegressionTranslator::ReadParameterList(Parse& parse)
{
    DOMElement* list = GetChildByTagForced(parse.modelElement, Tags::XML_ELE_PARAM_LIST);
    for (DOMElement* child = GetFirstChildElt(list); child != nullptr;
         child = GetNextSiblingElt(child)) {
        ExpectTag(*this, child, Tags::XML_ELE_PARAM, Tags::XML_ELE_PARAM_LIST);
        const std::string name = ForcedText(child, Tags::XML_ATT_PARAM_NAME);
        const std::string label = AttributeText(child, Tags::XML_ATT_PARAM_LABEL);
        const XMLCh* point = GetAttribute(child, Tags::XML_EXT_NAME_COXREG_REFERENCEPOINT);
        if (!IsBlank(point)) parse.basePoints.emplace(name, VerifyDouble(point));
        if (name == kConstant) {
            parse.constantParamName = name;
        } else {
            parse.paramNames.push_back(name);
            parse.paramLabelsList.push_back(label);
        }
        if (parse.targetHasCategoryList && label == kInterceptLabel) parse.hasIntercept = true;
    }
    // The constant goes last, under its own name as label; a linear regression always has one.
    if (!parse.constantParamName.empty() || parse.Is(kLinear)) {
        parse.paramNames.push_back(kConstant);
        parse.paramLabelsList.push_back(kConstant);
    }
}

void GeneralRegressionTranslator::DetectIntercept(Parse& parse)
{
    // One cell a parameter with one parameter left out counts as an intercept.
    const DOMElement* matrix = GetChildByTag(parse.modelElement, Tags::XML_ELE_PP_MATRIX);
    if (!parse.hasIntercept && parse.targetHasCategoryList && matrix != nullptr) {
        std::vector<std::string> ppParamNames;
        for (DOMElement* child = GetFirstChildElt(matrix); child != nullptr;
             child = GetNextSiblingElt(child)) {
            ppParamNames.push_back(AttributeText(child, Tags::XML_ATT_PPC_PARAMNAME));
        }
        if (!ppParamNames.empty() && parse.paramNames.size() == ppParamNames.size() + 1) {
            parse.hasIntercept = true;
        }
    }
    if (parse.Is(kConditional) && (parse.hasIntercept || !parse.targetHasCategoryList)) {
        Refuse(kConditionalIntercept, Tags::XML_ATT_INTERCEPT.c_str(),
               Tags::XML_ATT_PARAM_LABEL.c_str(), parse.modelType.c_str());
    }
}

void GeneralRegressionTranslator::AddParameters(Parse& parse)
{
    for (size_t i = 0; i < parse.paramNames.size(); ++i) {
        parse.model->AddParameter(parse.paramNames[i], parse.paramLabelsList[i]);
    }
}

void GeneralRegressionTranslator::ReadFactorList(Parse& parse)
{
    DOMElement* list = GetChildByTag(parse.modelElement, Tags::XML_ELE_FAC_LIST);
    if (list == nullptr) return;
    for (DOMElement* child = GetFirstChildElt(list); child != nullptr;
         child = GetNextSiblingElt(child)) {
        ExpectTag(*this, child, Tags::XML_ELE_PREDICTOR, Tags::XML_ELE_FAC_LIST);
        const std::string name = ForcedText(child, Tags::XML_ATT_PRED_NAME);
        parse.model->AddPredictor(name);
        ScoreDictVar* variable = FindVariable(parse, name);
        if (variable->GetMeasureLevel() == ScoreDictVar::CONTINUOUS) {
            Refuse(kUnexpectedWord, Tags::XML_VAL_OT_CONTINUOUS.c_str(),
                   Tags::XML_ATT_DATAFIELD_OPTYPE.c_str(), name.c_str());
        }
        if (variable->GetValueSet() == nullptr && !variable->HasOpenCategories()) {
            Refuse(kRoleOrCategories, name.c_str());
        }
        parse.model->SetVarRole(variable, ScoreModel::ROLE_FACTOR);
        ReadContrastMatrix(parse, child, variable);
    }
}

void GeneralRegressionTranslator::ReadCovariateList(Parse& parse)
{
    DOMElement* list = GetChildByTag(parse.modelElement, Tags::XML_ELE_COV_LIST);
    if (list == nullptr) return;
    for (DOMElement* child = GetFirstChildElt(list); child != nullptr;
         child = GetNextSiblingElt(child)) {
        ExpectTag(*this, child, Tags::XML_ELE_PREDICTOR, Tags::XML_ELE_COV_LIST);
        const std::string name = ForcedText(child, Tags::XML_ATT_PRED_NAME);
        parse.model->AddPredictor(name);
        ScoreDictVar* variable = FindVariable(parse, name);
        if (variable->GetMeasureLevel() != ScoreDictVar::CONTINUOUS) {
            Refuse(kCovariateNotContinuous, Tags::XML_VAL_OT_CONTINUOUS.c_str(),
                   Tags::XML_ATT_DATAFIELD_OPTYPE.c_str(), name.c_str());
        }
        parse.model->SetVarRole(variable, ScoreModel::ROLE_COVARIATE);
    }
}

void GeneralRegressionTranslator::ExpectTablesFit(const Parse& parse) const
{
    const size_t parameters = parse.model->GetParameterMap().size();
    const auto categories = static_cast<size_t>(parse.model->GetTargetVar()->GetNumCategories());
    ExpectTableFits(Tags::XML_ELE_PARAM_MATRIX, parameters, categories);
    // The others keep the cells that are written alone.
    constexpr FamilySet kWithNumbers = Family(kMultinomial) | Family(kMultinomialGeneralized) |
                                       Family(kNormalized) | Family(kGeneralLinear) |
                                       Family(kBinary);
    if (parse.IsAmong(kWithNumbers)) {
        ExpectTableFits(Tags::XML_ELE_PP_MATRIX, parameters, parse.model->GetPredictorMap().size());
    }
}

void GeneralRegressionTranslator::SetUpModel(Parse& parse)
{
    NoteElement(parse.modelElement);
    if (!parse.IsAmong(kCoxFamilies) && parse.paramNames.empty()) {
        Refuse(kNoParameters, Tags::XML_ELE_PARAM_LIST.c_str());
    }
    if (parse.model->GetTargetVar() == nullptr) {
        Refuse(kModelWithoutTarget, parse.modelType.c_str());
    }
    ExpectTablesFit(parse);
    if (!parse.model->Setup()) Refuse(kSetupFailed);
    // The betas of an ordinal model lie in the last row but one.
    const size_t categories = parse.model->GetCategoryMap().size();
    if (parse.IsAmong(kOrdinalFamilies) && parse.paramNames.size() > 1 && categories < 2) {
        Refuse(kOrdinalTarget, parse.targetName.c_str(), static_cast<int>(categories));
    }
}

void GeneralRegressionTranslator::ReadParamMatrix(Parse& parse)
{
    DOMElement* matrix = GetChildByTag(parse.modelElement, Tags::XML_ELE_PARAM_MATRIX);
    if (matrix == nullptr) return;  // all betas stay 0
    TargetCells cells;
    cells.categoryCount = parse.model->GetTargetVar()->GetNumCategories();
    for (DOMElement* child = GetFirstChildElt(matrix); child != nullptr;
         child = GetNextSiblingElt(child)) {
        if (IsEqual(child->getTagName(), Tags::XML_ELE_EXTENSION)) continue;
        ExpectTag(*this, child, Tags::XML_ELE_PCELL, Tags::XML_ELE_PARAM_MATRIX);
        ReadParamCell(parse, child, cells);
    }
}

void GeneralRegressionTranslator::ReadParamCell(Parse& parse, DOMElement* element,
                                                TargetCells& cells)
{
    const std::string category = CellCategory(parse, element, cells);
    const std::string parameter = ForcedText(element, Tags::XML_ATT_PC_PARAMNAME);
    const ParamTableCell cell =
        MakeParamTableCell(*this, GetAttributeForced(element, Tags::XML_ATT_PC_BETA),
                           GetAttribute(element, Tags::XML_ATT_PC_DF));
    if (!parse.model->GetParamTable()->SetCell(category, parameter, cell)) {
        Refuse(kCellNotTaken, category.c_str(), Tags::XML_ATT_PC_TARGET_CAT.c_str(),
               parameter.c_str(), Tags::XML_ATT_PC_PARAMNAME.c_str(), Tags::XML_ELE_PCELL.c_str());
    }
    if (parse.Is(kGeneralizedLinear)) {
        // The category that the cells name is the event, by its text as written. Each cell says so
        // anew, on purpose.
        static_cast<GZLRModel&>(*parse.model)
            .UpdateResAndRefCat(AttributeText(element, Tags::XML_ATT_PCC_TARGET_CAT));
    }
}

std::string GeneralRegressionTranslator::CellCategory(Parse& parse, DOMElement* element,
                                                      TargetCells& cells)
{
    // Families with one equation have one row of betas, whatever the cell names.
    if (parse.Is(kLinear)) return static_cast<LRModel&>(*parse.model).GetDummyCategory();
    if (parse.Is(kGeneralLinear)) return static_cast<GLRModel&>(*parse.model).GetDummyCategory();
    if (parse.Is(kGeneralizedLinear) && parse.choice.targetIsScale) {
        return static_cast<GZLRModel&>(*parse.model).GetDummyCategory();
    }
    if (parse.IsAmong(kCoxFamilies)) {
        return static_cast<CoxRegModel&>(*parse.model).GetDummyCategory();
    }

    const ScoreDictVar& target = *parse.model->GetTargetVar();
    if (parse.IsAmong(kOrdinalFamilies) && cells.cellsWithCategory == cells.categoryCount - 1) {
        // The thresholds are through: every further cell belongs to the last category named.
        std::string text = Transcode(cells.lastCategoryAttribute);
        MakeTargetValue(target, text);
        return text;
    }
    cells.lastCategoryAttribute = GetAttributeForced(element, Tags::XML_ATT_PC_TARGET_CAT);
    std::string text = Transcode(cells.lastCategoryAttribute);
    ++cells.cellsWithCategory;
    std::unique_ptr<ScoreValue> value = MakeTargetValue(target, text);
    const bool isFirst = cells.cellsWithCategory == 1;
    if (!target.IsValid(value.get()) ||
        (parse.Is(kBinary) && !isFirst && text != cells.firstCategory)) {
        Refuse(kInvalidValue, text.c_str(), target.GetName().c_str());
    }
    if (parse.Is(kBinary) && isFirst) {
        static_cast<BLRModel&>(*parse.model).SetReferencedTargetCate(value.release());
        cells.firstCategory = text;
    }
    return text;
}

void GeneralRegressionTranslator::ReadReferencePoints(Parse& parse)
{
    if (parse.basePoints.empty()) return;
    const size_t parameters =
        static_cast<size_t>(parse.model->GetParamTable()->GetNumOfParameters());
    if (parse.basePoints.size() != parameters) {
        Refuse(kReferencePointCount, std::to_string(parse.basePoints.size()).c_str(),
               Tags::XML_EXT_ELE_COXREG_BASEPOINT.c_str(),
               Tags::XML_EXT_NAME_COXREG_REFERENCEPOINT.c_str(), std::to_string(parameters).c_str(),
               Tags::XML_ELE_PARAM.c_str(), Tags::XML_ELE_PARAM_LIST.c_str());
    }
    if (!parse.IsAmong(kCoxFamilies)) {  // no other has a place for them
        Refuse(kReferencePointFamily, parse.basePoints.begin()->first.c_str(),
               parse.modelType.c_str());
    }
    std::vector<double> points(parameters, 0.0);
    for (const auto& [name, point] : parse.basePoints) {
        const int index = parse.model->GetParamTable()->GetParameterIndex(name);
        // Counted above, a point of an unknown parameter is dropped.
        if (index >= 0) points[static_cast<size_t>(index)] = point;
    }
    static_cast<CoxRegModel&>(*parse.model).SetBasePointTable(points);
}

void GeneralRegressionTranslator::ReadPPMatrix(Parse& parse)
{
    DOMElement* matrix = GetChildByTag(parse.modelElement, Tags::XML_ELE_PP_MATRIX);
    if (matrix == nullptr) return;
    for (DOMElement* child = GetFirstChildElt(matrix); child != nullptr;
         child = GetNextSiblingElt(child)) {
        ExpectTag(*this, child, Tags::XML_ELE_PP_CELL, Tags::XML_ELE_PP_MATRIX);
        ReadPPCell(parse, child);
    }
}

void GeneralRegressionTranslator::ReadPPCell(Parse& parse, DOMElement* element)
{
    const std::string parameter = ForcedText(element, Tags::XML_ATT_PPC_PARAMNAME);
    const std::string predictor = ForcedText(element, Tags::XML_ATT_PPC_PREDNAME);
    ScoreDictVar* variable = FindVariable(parse, predictor);
    const std::string text = ForcedText(element, Tags::XML_ATT_PPC_VALUE);
    int index = -1;
    FillCateValuesToDataDict(variable, text, index);

    const ScoreModel::VarRole role = parse.model->GetVarRole(variable);
    PredictorCell cell = MakePredictorCell(*this, role, variable, predictor, text, index);
    if (role == ScoreModel::ROLE_FACTOR && !variable->IsValid(cell.value.get())) {
        Refuse(kInvalidValue, text.c_str(), predictor.c_str());
    }
    if (!parse.model->GetPPCMatrix()->SetCell(parameter, predictor, cell.value.release())) {
        Refuse(kCellNotTaken, parameter.c_str(), Tags::XML_ATT_PPC_PARAMNAME.c_str(),
               predictor.c_str(), Tags::XML_ATT_PPC_PREDNAME.c_str(),
               Tags::XML_ELE_PP_CELL.c_str());
    }
    StoreCellNumber(*parse.model, parameter, predictor, cell.number);
}

bool GeneralRegressionTranslator::FillCateValuesToDataDict(ScoreDictVar* variable,
                                                           const std::string& text, int& index)
{
    if (GetTranscoder() == nullptr || variable == nullptr || variable->HasOpenCategories()) {
        return false;
    }
    AddCategoryOfCell(*this, *variable, text, index);
    return true;
}

}  // namespace MCVelscore_850
