#include "readers/regressiontranslator.h"

#include <xercesc/dom/DOM.hpp>

#include "host/documents/documentplace.h"
#include "host/documents/zeltmodeltags.h"
#include "host/messages/messages.h"
#include "host/messages/scoringlog.h"
#include "host/model/versioninfo.h"
#include "host/variables/scoredictvar.h"
#include "models/clrmodel.h"
#include "models/lrmodel.h"
#include "models/mlrmodel.h"
#include "readers/cellreading.h"
#include "readers/codes.h"
#include "readers/tablelimit.h"

namespace MCVelscore_850 {

using xercesc::DOMDocument;
using xercesc::DOMElement;
using Tags = ZELTModelTags;

namespace {

const std::string kConstant = "(Constant)";
const std::string kNoLabel = " ";  // this form has no labels

template <class Model>
std::unique_ptr<RegressionModel> Make()
{
    return std::make_unique<Model>();
}

// The model types and their codes in the trace. Others are words of the vocabulary without a
// model.
struct TypeRow {
    const std::string& word;
    int code;
    std::unique_ptr<RegressionModel> (*make)();
};
enum TypeCode { kMultinomialType = 0, kConditionalType = 1, kRegressionType = 2 };

const TypeRow kTypes[] = {
    {Tags::XML_VAL_MT_MLR, kMultinomialType, Make<MLRModel>},
    {Tags::XML_VAL_MT_CLR, kConditionalType, Make<CLRModel>},
    {Tags::XML_VAL_MT_REGRESS, kRegressionType, Make<LRModel>},
};

}  // namespace

struct RegressionTranslator::Parse {
    DOMElement* root;
    DOMElement* modelElement;
    std::string targetName;
    std::string modelType;
    int code = -1;
    std::unique_ptr<RegressionModel> model;
    ScoreDictionary* dictionary = nullptr;  // the model's
};

RegressionTranslator::RegressionTranslator() = default;
RegressionTranslator::~RegressionTranslator() = default;

ScoreModel* RegressionTranslator::ParseFromTree(DOMDocument* document, const std::string& encoding)
{
    ScoringLog::GetInstance()->TraceText(1, "Enter:%s", "ParseFromTree");
    ForgetCurrentElement();
    Parse parse;  // owns the half-built model until it is handed over
    try {
        CreateTranscoder(encoding);
        parse.root = document->getDocumentElement();
        ConstructModel(parse);
        ReadDictionaryAndTarget(parse);
        ReadParameters(parse);
        ReadPredictors(parse, Tags::XML_ELE_FAC_LIST, ScoreModel::ROLE_FACTOR);
        ReadPredictors(parse, Tags::XML_ELE_COV_LIST, ScoreModel::ROLE_COVARIATE);
        SetUpModel(parse);
        ReadParamTable(parse);
        ReadPPMatrix(parse);
        ReadPCovMatrix(parse);
        parse.model->FinishSetup();
    } catch (VSException& refusal) {
        if (!refusal.GetPlace().IsKnown()) refusal.SetPlace(PlaceOf(CurrentElement()));
        throw VSException(refusal);
    }
    ScoringLog::GetInstance()->TraceText(1, "Exit:%s", "ParseFromTree");
    return parse.model.release();
}

void RegressionTranslator::ConstructModel(Parse& parse)
{
    const std::string version = Attribute(parse.root, Tags::XML_ATT_VERSION);
    DOMElement* model = GetChildByTagForced(parse.root, Tags::XML_ELE_MODEL);
    parse.modelElement = GetChildByTagForced(model, Tags::XML_ELE_REGRESS_MODEL);
    parse.targetName = Attribute(parse.modelElement, Tags::XML_ATT_RM_TARGET_VAR);
    parse.modelType = Attribute(parse.modelElement, Tags::XML_ATT_RM_MODEL_TYPE);
    for (const TypeRow& row : kTypes) {
        if (parse.modelType != row.word) continue;
        ScoringLog::GetInstance()->TraceText(2, "The Model Type is %d.", row.code);
        parse.code = row.code;
        parse.model = row.make();
        break;
    }
    if (!parse.model) {
        Refuse(kUnexpectedWord, parse.modelType.c_str(), Tags::XML_ATT_RM_MODEL_TYPE.c_str(),
               Tags::XML_ELE_REGRESS_MODEL.c_str());
    }
    parse.model->SetVersionInfo(new VersionInfo(version));
    const XMLCh* df = GetAttribute(parse.modelElement, Tags::XML_ATT_RM_MODEL_DF);
    if (!IsBlank(df)) parse.model->SetDF(VerifyDouble(df));
}

void RegressionTranslator::ReadDictionaryAndTarget(Parse& parse)
{
    parse.dictionary = ParseDictionary(GetChildByTagForced(parse.root, Tags::XML_ELE_DICTIONARY));
    parse.model->SetScoreDictionary(parse.dictionary);
    NoteElement(parse.modelElement);
    parse.model->SetTargetVar(FindVariable(parse, parse.targetName));
}

void RegressionTranslator::ReadParameters(Parse& parse)
{
    const DOMElement* list = GetChildByTagForced(parse.modelElement, Tags::XML_ELE_PARAM_LIST);
    bool hasConstant = false;
    for (DOMElement* child = GetFirstChildElt(list); child != nullptr;
         child = GetNextSiblingElt(child)) {
        ExpectTag(*this, child, Tags::XML_ELE_PARAM, Tags::XML_ELE_PARAM_LIST);
        const std::string name = Attribute(child, Tags::XML_ATT_NAME);
        if (name == kConstant) {
            hasConstant = true;
        } else {
            parse.model->AddParameter(name, kNoLabel);
        }
    }
    if (hasConstant) parse.model->AddParameter(kConstant, kNoLabel);  // last, wherever it stood
}

void RegressionTranslator::ReadPredictors(Parse& parse, const std::string& listTag,
                                          ScoreModel::VarRole role)
{
    const DOMElement* list = GetChildByTag(parse.modelElement, listTag);
    if (list == nullptr) return;
    for (DOMElement* child = GetFirstChildElt(list); child != nullptr;
         child = GetNextSiblingElt(child)) {
        ExpectTag(*this, child, Tags::XML_ELE_PREDICTOR, listTag);
        const std::string name = Attribute(child, Tags::XML_ATT_NAME);
        ScoreDictVar* variable = FindVariable(parse, name);
        parse.model->AddPredictor(name);
        parse.model->SetVarRole(variable, role);
    }
}

void RegressionTranslator::SetUpModel(Parse& parse)
{
    NoteElement(parse.modelElement);
    const size_t parameters = parse.model->GetParameterMap().size();
    const auto categories = static_cast<size_t>(parse.model->GetTargetVar()->GetNumCategories());
    ExpectTableFits(Tags::XML_ELE_P_TABLE, parameters, categories);
    if (parse.code == kMultinomialType) {  // the others keep the cells that are written alone
        ExpectTableFits(Tags::XML_ELE_PP_MATRIX, parameters, parse.model->GetPredictorMap().size());
    }
    // A model that can't be set up is not refused here, but one without tables has no place for
    // what follows, and one without categories predicts nothing.
    parse.model->Setup();
    if (parse.model->GetParamTable() == nullptr) Refuse(kSetupFailed);
    if (parse.model->GetCategoryMap().empty()) {
        Refuse(kTargetWithoutCategories, parse.targetName.c_str(), parse.modelType.c_str());
    }
}

void RegressionTranslator::ReadParamTable(Parse& parse)
{
    const DOMElement* table = GetChildByTagForced(parse.modelElement, Tags::XML_ELE_P_TABLE);
    for (DOMElement* child = GetFirstChildElt(table); child != nullptr;
         child = GetNextSiblingElt(child)) {
        ExpectTag(*this, child, Tags::XML_ELE_P_CELL, Tags::XML_ELE_P_TABLE);
        std::string category;
        if (parse.code == kRegressionType) {
            category = static_cast<LRModel&>(*parse.model).GetDummyCategory();
        } else {
            category = Attribute(child, Tags::XML_ATT_PC_TARGET_CAT);
            MakeTargetValue(*parse.model->GetTargetVar(), category);
        }
        const ParamTableCell cell =
            MakeParamTableCell(*this, GetAttribute(child, Tags::XML_ATT_PC_BETA),
                               GetAttribute(child, Tags::XML_ATT_PC_DF));
        // A cell whose names the model doesn't know has no effect: this form doesn't check them.
        parse.model->GetParamTable()->SetCell(category,
                                              Attribute(child, Tags::XML_ATT_PARAMETER_NAME), cell);
    }
}

void RegressionTranslator::ReadPPMatrix(Parse& parse)
{
    const DOMElement* matrix = GetChildByTag(parse.modelElement, Tags::XML_ELE_PP_MATRIX);
    if (matrix == nullptr) return;
    for (DOMElement* child = GetFirstChildElt(matrix); child != nullptr;
         child = GetNextSiblingElt(child)) {
        ExpectTag(*this, child, Tags::XML_ELE_PP_CELL, Tags::XML_ELE_PP_MATRIX);
        const std::string parameter = Attribute(child, Tags::XML_ATT_PARAMETER_NAME);
        const std::string predictor = Attribute(child, Tags::XML_ATT_PP_PREDICTOR);
        const std::string text = Attribute(child, Tags::XML_ATT_VALUE);
        ScoreDictVar* variable = parse.dictionary->GetVar(predictor);
        int index = -1;
        FillCateValuesToDataDict(variable, text, index);
        const ScoreModel::VarRole role =
            variable == nullptr ? ScoreModel::ROLE_NONE : parse.model->GetVarRole(variable);
        PredictorCell cell = MakePredictorCell(*this, role, variable, predictor, text, index);
        parse.model->GetPPCMatrix()->SetCell(parameter, predictor, cell.value.release());
        StoreCellNumber(*parse.model, parameter, predictor, cell.number);
    }
}

void RegressionTranslator::ReadPCovMatrix(Parse& parse)
{
    if (parse.code != kRegressionType) return;
    const DOMElement* matrix = GetChildByTag(parse.modelElement, Tags::XML_ELE_PCOV_MATRIX);
    if (matrix == nullptr) return;
    for (DOMElement* child = GetFirstChildElt(matrix); child != nullptr;
         child = GetNextSiblingElt(child)) {
        ExpectTag(*this, child, Tags::XML_ELE_PCOV_CELL, Tags::XML_ELE_PCOV_MATRIX,
                  kUnexpectedElement);
        PCovMatrix& covariances = *parse.model->GetPCovMatrix();
        ExpectTableFits(Tags::XML_ELE_PCOV_MATRIX, covariances.GetDimension(),
                        covariances.GetDimension());
        // One triangle is given; SetCell writes both.
        covariances.SetCell(
            Attribute(child, Tags::XML_ATT_PCOV_P_COL), Attribute(child, Tags::XML_ATT_PCOV_P_ROW),
            VerifyDouble(GetAttribute(child, Tags::XML_ATT_VALUE), Tags::XML_ATT_VALUE));
    }
}

bool RegressionTranslator::FillCateValuesToDataDict(const ScoreDictVar* variable,
                                                    const std::string& text, int& index)
{
    if (GetTranscoder() == nullptr || variable == nullptr || variable->HasOpenCategories() ||
        text.empty()) {
        return false;
    }
    // The variables of a dictionary can be changed; the reader has it from there.
    AddCategoryOfCell(*this, const_cast<ScoreDictVar&>(*variable), text, index);
    return true;
}

std::string RegressionTranslator::Attribute(const DOMElement* element,
                                            const std::string& name) const
{
    return Transcode(GetAttribute(element, name));
}

ScoreDictVar* RegressionTranslator::FindVariable(const Parse& parse, const std::string& name) const
{
    ScoreDictVar* variable = parse.dictionary->GetVar(name);
    if (variable == nullptr) {
        Refuse(kNotInDictionary, name.c_str(), Tags::XML_ELE_DICTIONARY.c_str());
    }
    return variable;
}

}  // namespace MCVelscore_850
