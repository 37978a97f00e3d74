#include "readers/generalregressiontranslator.h"

#include <algorithm>
#include <cctype>

#include "host/documents/documentplace.h"
#include "host/documents/pmmlmodeltags.h"
#include "host/documents/zeltmodeltags.h"
#include "host/messages/messages.h"
#include "host/messages/scoringlog.h"
#include "host/model/versioninfo.h"
#include "models/normalizedmodel.h"
#include "readers/codes.h"
#include "readers/parse.h"
#include "readers/regressiontranslator.h"

namespace MCVelscore_850 {

using xercesc::DOMDocument;
using xercesc::DOMElement;
using Tags = PMMLModelTags;

namespace {

constexpr double kOptionalTargetVersion = 3.1;  // below it the target attribute is required

void Trace(int level, const char* format, const std::string& text)
{
    // The formats are this file's own literals.
    ScoringLog::GetInstance()->TraceText(level, format, text.c_str());
}

}  // namespace

GeneralRegressionTranslator::GeneralRegressionTranslator() : PMMLTranslator("") {}
GeneralRegressionTranslator::~GeneralRegressionTranslator() = default;

ScoreModel* GeneralRegressionTranslator::ParseFromTree(DOMDocument* document,
                                                       const std::string& encoding)
{
    ScoringLog::GetInstance()->TraceText(1, "Entry:%s", "ParseFromTree");
    ForgetCurrentElement();
    if (IsEqual(document->getDocumentElement()->getTagName(), ZELTModelTags::XML_ELE_ZELTML)) {
        CreateTranscoder(encoding);
        RegressionTranslator legacy;
        return legacy.ParseFromTree(document, "");  // the encoding is not passed on, on purpose
    }
    Parse parse;  // owns the half-built model until it is handed over
    try {
        CreateTranscoder(encoding);
        // The order is fixed: a later stage relies on what an earlier one left.
        ReadHead(document, parse);
        ConstructModel(parse);
        ReadOrdinalLink(parse);
        ReadDictionaryAndTargets(parse);
        ReadTargetReferenceCategory(parse);
        ReadCoxAttributes(parse);
        ReadModelDf(parse);
        ReadTransformations(parse);
        ReadOrdinalOffset(parse);
        ReadMiningSchema(parse);
        CheckTarget(parse);
        ReadParameterList(parse);
        DetectIntercept(parse);
        ReadExtensions(parse);
        ReadBaseCumHazardTables(parse);
        ReadModelAttributes(parse);
        ReadDistributionParameter(parse);
        ExpectLinkParameter(parse);
        AddParameters(parse);
        RecordVersion(parse);
        ReadFactorList(parse);
        ReadCovariateList(parse);
        SetUpModel(parse);
        ReadParamMatrix(parse);
        ReadReferencePoints(parse);
        ReadPCovMatrix(parse);
        ReadPPMatrix(parse);
        CheckAndFinish(parse);
    } catch (VSException& refusal) {
        if (!refusal.GetPlace().IsKnown()) refusal.SetPlace(PlaceOf(CurrentElement()));
        throw VSException(refusal);
    }
    ScoringLog::GetInstance()->TraceText(1, "Exit:%s", "ParseFromTree");
    return parse.model.release();
}

void GeneralRegressionTranslator::ReadHead(DOMDocument* document, Parse& parse)
{
    parse.root = document->getDocumentElement();
    parse.versionText = ForcedText(parse.root, Tags::XML_ATT_VERSION);
    pmmlVersion = VerifyDouble(parse.versionText);
    parse.modelElement = GetChildByTagForced(parse.root, Tags::XML_ELE_REGRESSMODEL);
    ReadTargetAttribute(parse);

    std::string scorable = AttributeText(parse.modelElement, Tags::XML_ATT_RM_IS_SCORABLE);
    std::transform(scorable.begin(), scorable.end(), scorable.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    if (scorable == "false") {  // the word alone: a 0 lets the model pass
        Refuse(kNotScorable, Tags::XML_ATT_RM_IS_SCORABLE.c_str(), Tags::XML_ELE_PMML.c_str());
    }

    parse.modelType = ForcedText(parse.modelElement, Tags::XML_ATT_RM_MODEL_TYPE);
    parse.choice =
        ChooseFamily({parse.modelType, pmmlVersion, [this, &parse](const std::string& attribute) {
                          return AttributeText(parse.modelElement, attribute);
                      }});
}

void GeneralRegressionTranslator::ReadTargetAttribute(Parse& parse)
{
    try {
        const XMLCh* target = GetAttributeForced(parse.modelElement, Tags::XML_ATT_RM_TARGET_VAR);
        if (IsBlank(target)) {  // an empty one counts as absent
            Refuse(kAbsent, Tags::XML_ATT_RM_TARGET_VAR.c_str(),
                   Tags::XML_ELE_REGRESSMODEL.c_str());
        }
        parse.targetAttribute = target;
    } catch (const VSException&) {
        Trace(2, "PMML version is :%s", parse.versionText);
        if (pmmlVersion < kOptionalTargetVersion) throw;
    }
}

void GeneralRegressionTranslator::ConstructModel(Parse& parse)
{
    ScoringLog::GetInstance()->TraceText(2, "The Model Type is %d.", parse.choice.code);
    parse.model = MakeModel(parse.choice.code, parse.modelType);
    // The base's setter, also where a family has one of its own.
    parse.model->SetAlgorithmName(AttributeText(parse.modelElement, Tags::XML_ATT_RM_ALGOR_NAME));
    parse.function = BaseModel::MiningFunctionFromString(
        AttributeText(parse.modelElement, Tags::XML_ATT_FUNCTIONNAME));
    parse.model->SetMiningFunction(parse.function);
}

void GeneralRegressionTranslator::RecordVersion(Parse& parse)
{
    parse.model->SetVersionInfo(new VersionInfo(parse.versionText));
}

void GeneralRegressionTranslator::CheckAndFinish(Parse& parse)
{
    if (parse.IsAmong(kCategoryFamilies) && parse.model->GetCategoryMap().empty()) {
        NoteElement(parse.modelElement);
        Refuse(kTargetWithoutCategories, parse.targetName.c_str(), parse.modelType.c_str());
    }
    if (parse.Is(kNormalized) &&
        static_cast<const NormalizedModel&>(*parse.model).GetNormalization().empty()) {
        NoteElement(parse.modelElement);
        Refuse(kAbsent, Tags::XML_ATT_RM_EXT_NAME_NORMALIZATION.c_str(),
               Tags::XML_ELE_REGRESSMODEL.c_str());
    }
    if (parse.IsAmong(kCoxFamilies)) CheckCox(parse);
    parse.model->FinishSetup();
}

std::string GeneralRegressionTranslator::AttributeText(const DOMElement* element,
                                                       const std::string& name) const
{
    return Transcode(GetAttribute(element, name));
}

std::string GeneralRegressionTranslator::ForcedText(const DOMElement* element,
                                                    const std::string& name) const
{
    return Transcode(GetAttributeForced(element, name));
}

}  // namespace MCVelscore_850
