// What only a Cox document has: its time and subject variables, the baseline cumulative hazard of
// each stratum in one of two forms, and the reference points of the older form.

#include "host/documents/pmmlmodeltags.h"
#include "models/coxregrmodel.h"
#include "readers/codes.h"
#include "readers/generalregressiontranslator.h"
#include "readers/modeloptions.h"
#include "readers/parse.h"

namespace MCVelscore_850 {

using xercesc::DOMElement;
using xercesc::DOMNodeList;
using Tags = PMMLModelTags;

namespace {

constexpr double kAttributeVersion = 4.0;  // from here on the variables stand in attributes

// The key of the largest time where there are no strata.
const std::string kNoStratum = "No_StratumVariable_";
// At one place the largest time is looked for by this text, and not by the tag of that meaning.
const std::string kBaseMaxTime = "X-BaseMaxTime";

// The first time of a table without cells.
constexpr double kFirstTimeInStratum = NumericValue::GetSysmisValue();
constexpr double kFirstTimeWithoutStrata = -NumericValue::GetSysmisValue();

CoxRegModel& CoxModel(Parse& parse) { return static_cast<CoxRegModel&>(*parse.model); }

DOMElement* At(const DOMNodeList* elements, XMLSize_t i)
{
    return static_cast<DOMElement*>(elements->item(i));
}

// The only element of a list, null when it has none or several.
DOMElement* OnlyOf(const DOMNodeList* elements)
{
    return At(elements, 1) == nullptr ? At(elements, 0) : nullptr;
}

// A variable that the model keeps by its name, and its role. It needs none from the mining schema.
void TakeVariable(const ModelOption& option, void (CoxRegModel::*keep)(const std::string& name),
                  ScoreModel::VarRole role)
{
    const ScoreDictVar* variable = option.reader.FindVariable(option.parse, option.value);
    (CoxModel(option.parse).*keep)(option.value);
    option.parse.model->SetVarRole(variable, role);
}

}  // namespace

void TakeEndTimeVariable(const ModelOption& option)
{
    TakeVariable(option, &CoxRegModel::SetEndTimeVariableName, ScoreModel::ROLE_TIME);
}

void TakeStartTimeVariable(const ModelOption& option)
{
    TakeVariable(option, &CoxRegModel::SetStartTimeVariableName, ScoreModel::ROLE_TIME);
}

void TakeSubjectVariable(const ModelOption& option)
{
    TakeVariable(option, &CoxRegModel::SetSubjectVariableName, ScoreModel::ROLE_SUBJECT);
}

void TakeReferencePoints(const ModelOption& option)
{
    option.reader.HandleBasePointElem(
        option.reader.GetElementsByTagName(option.element, Tags::XML_EXT_ELE_COXREG_BASEPOINT),
        option.parse.basePoints);
}

void TakeHazardTables(const ModelOption& option)
{
    option.reader.ReadBaselineExtension(option.parse, option.element);
}

// The end time is required here and the others aren't; what role their variables get the mining
// schema may still change. No name is looked for yet: the derived fields aren't read.
void GeneralRegressionTranslator::ReadCoxAttributes(Parse& parse)
{
    if (!parse.IsAmong(kCoxFamilies) || pmmlVersion < kAttributeVersion) return;
    CoxRegModel& model = CoxModel(parse);
    const auto giveRole = [&](const std::string& name, ScoreModel::VarRole role) {
        model.SetVarRole(parse.dictionary->GetVar(name), role);
    };
    const std::string endTime =
        ForcedText(parse.modelElement, Tags::XML_EXT_NAME_COXREG_ENDTIMEVARIABLE);
    model.SetEndTimeVariableName(endTime);
    giveRole(endTime, ScoreModel::ROLE_TIME);
    const std::string startTime =
        AttributeText(parse.modelElement, Tags::XML_EXT_NAME_COXREG_STARTTIMEVARIABLE);
    if (!startTime.empty()) {
        model.SetStartTimeVariableName(startTime);
        giveRole(startTime, ScoreModel::ROLE_TIME);
    }
    const std::string subject =
        AttributeText(parse.modelElement, Tags::XML_EXT_NAME_COXREG_SUBJECT_VARIABLE);
    if (!subject.empty()) {
        model.SetSubjectVariableName(subject);
        giveRole(subject, ScoreModel::ROLE_SUBJECT);
    }
}

void GeneralRegressionTranslator::ReadBaselineExtension(Parse& parse, DOMElement* extension)
{
    Baseline baseline;
    baseline.stratumName =
        HandleStratumElements(extension, parse.hazardTables, baseline.stratumCategories,
                              baseline.minTimes, baseline.maxTimes, parse.stratumMaxTimes);
    if (!baseline.stratumName.empty()) {
        FindStratum(parse, baseline, extension);
        CoxModel(parse).SetStratumVarName(baseline.stratumName);
    }
    TakeBaseline(parse, baseline);
}

void GeneralRegressionTranslator::ReadBaseCumHazardTables(Parse& parse)
{
    if (!parse.IsAmong(kCoxFamilies)) return;
    DOMElement* section = GetChildByTag(parse.modelElement, Tags::XML_ELM_BASECUMHAZARDTABLES);
    if (section == nullptr) return;
    Baseline baseline;
    // The tables of an extension stay ahead of these, and the categories are these alone: a
    // document that carries both forms is taken so, on purpose.
    baseline.stratumName =
        HandleStratumElementsEx(section, parse.hazardTables, baseline.stratumCategories,
                                baseline.minTimes, baseline.maxTimes, parse.stratumMaxTimes);
    if (baseline.stratumName.empty()) {
        baseline.stratumName =
            AttributeText(parse.modelElement, Tags::XML_ATT_BASELINESTRATAVARIABLE);
        CoxModel(parse).SetStratumVarName(baseline.stratumName);
    }
    if (!baseline.stratumName.empty()) FindStratum(parse, baseline, section);
    TakeBaseline(parse, baseline);
}

void GeneralRegressionTranslator::FindStratum(Parse& parse, const Baseline& baseline,
                                              const DOMElement* section)
{
    NoteElement(section);
    parse.model->SetVarRole(FindVariable(parse, baseline.stratumName), ScoreModel::ROLE_STRATUM);
}

void GeneralRegressionTranslator::TakeBaseline(Parse& parse, const Baseline& baseline)
{
    CoxRegModel& model = CoxModel(parse);
    model.SetStratumCatValMaxMap(parse.stratumMaxTimes);
    model.SetCumHazardTable(parse.hazardTables, baseline.stratumCategories, baseline.stratumName);
    model.SetMinMaxTime(baseline.minTimes, baseline.maxTimes);
}

void GeneralRegressionTranslator::HandleBasePointElem(const DOMNodeList* points,
                                                      std::map<std::string, double>& basePoints)
{
    for (XMLSize_t i = 0; const DOMElement* point = At(points, i); ++i) {
        const std::string name =
            ForcedText(point, Tags::XML_EXT_ATT_COXREG_BASEPOINT_PARAMETERNAME);
        basePoints.emplace(name, ForcedNumber(point, Tags::XML_ATT_EXT_VALUE));
    }
}

void GeneralRegressionTranslator::HandleBaseCumHazardTables(DOMElement* table,
                                                            std::map<double, double>& cells,
                                                            double& firstTime)
{
    ReadHazardCells(GetElementsByTagName(table, Tags::XML_EXT_ELE_COXREG_BASELINE), cells,
                    firstTime);
}

void GeneralRegressionTranslator::HandleBaseCumHazardTablesEx(DOMElement* table,
                                                              std::map<double, double>& cells,
                                                              double& firstTime)
{
    ReadHazardCells(GetElementsByTagName(table, Tags::XML_ELM_BASELINECELL), cells, firstTime);
}

void GeneralRegressionTranslator::ReadHazardCells(const DOMNodeList* elements,
                                                  std::map<double, double>& cells,
                                                  double& firstTime)
{
    for (XMLSize_t i = 0; const DOMElement* cell = At(elements, i); ++i) {
        const double time = ForcedNumber(cell, Tags::XML_EXT_ELE_ATT_COXREG_BASELINE_TIME);
        if (i == 0) firstTime = time;  // the first of the document, which needn't be the smallest
        const double hazard = ForcedNumber(cell, Tags::XML_EXT_ELE_ATT_COXREG_BASELINE_CUMHAZARD);
        cells.emplace_hint(cells.end(), time, hazard);  // a time that is there keeps its hazard
    }
}

std::string GeneralRegressionTranslator::HandleStratumElements(
    DOMElement* section, std::vector<std::map<double, double>>& hazardTables,
    std::vector<std::string>& stratumCategories, std::vector<double>& minTimes,
    std::vector<double>& maxTimes, std::map<std::string, double>& stratumMaxTimes)
{
    // Just one table, and just one largest time, count; none or several of them are passed over.
    const auto readTable = [&](DOMElement* parent, double firstTime) {
        DOMElement* table =
            OnlyOf(GetElementsByTagName(parent, Tags::XML_EXT_ELE_COXREG_HAZARD_TABLE));
        if (table == nullptr) return;
        std::map<double, double> cells;
        HandleBaseCumHazardTables(table, cells, firstTime);
        minTimes.push_back(firstTime);
        hazardTables.push_back(std::move(cells));
    };
    const auto readMaxTime = [&](DOMElement* parent) {
        const DOMElement* limit =
            OnlyOf(GetElementsByTagName(parent, Tags::XML_EXT_ELE_COXREG_BASEMAXTIME));
        if (limit != nullptr) maxTimes.push_back(ForcedNumber(limit, Tags::XML_ATT_VALUE));
        return limit != nullptr;
    };

    const DOMNodeList* strata = GetElementsByTagName(section, Tags::XML_EXT_ELE_COXREG_STRATUM);
    if (At(strata, 0) == nullptr) {
        readTable(section, kFirstTimeWithoutStrata);
        if (readMaxTime(section)) stratumMaxTimes.emplace(kNoStratum, maxTimes.back());
        return "";
    }
    std::string stratumName =
        AttributeText(At(strata, 0), Tags::XML_EXT_ELE_ATT_COXREG_STRATUM_VARNAME);
    for (XMLSize_t i = 0; DOMElement* stratum = At(strata, i); ++i) {
        const std::string category = ForcedText(stratum, Tags::XML_ATT_VALUE);
        stratumCategories.push_back(category);
        const DOMElement* limit = At(GetElementsByTagName(stratum, kBaseMaxTime), 0);
        if (limit != nullptr) {
            stratumMaxTimes.emplace(category, ForcedNumber(limit, Tags::XML_ATT_VALUE));
        }
        readTable(stratum, kFirstTimeInStratum);
        readMaxTime(stratum);
    }
    return stratumName;
}

std::string GeneralRegressionTranslator::HandleStratumElementsEx(
    DOMElement* section, std::vector<std::map<double, double>>& hazardTables,
    std::vector<std::string>& stratumCategories, std::vector<double>& minTimes,
    std::vector<double>& maxTimes, std::map<std::string, double>& stratumMaxTimes)
{
    const auto readTable = [&](DOMElement* parent, double firstTime, const std::string& key) {
        std::map<double, double> cells;
        HandleBaseCumHazardTablesEx(parent, cells, firstTime);
        minTimes.push_back(firstTime);
        hazardTables.push_back(std::move(cells));
        maxTimes.push_back(ForcedNumber(parent, Tags::XML_ATT_MAXTIME));
        stratumMaxTimes.emplace(key, maxTimes.back());
    };

    const DOMNodeList* strata = GetElementsByTagName(section, Tags::XML_ELM_BASELINESTRATUM);
    if (At(strata, 0) == nullptr) {
        readTable(section, kFirstTimeWithoutStrata, kNoStratum);
        return "";
    }
    std::string stratumName =
        AttributeText(At(strata, 0), Tags::XML_EXT_ELE_ATT_COXREG_STRATUM_VARNAME);
    for (XMLSize_t i = 0; DOMElement* stratum = At(strata, i); ++i) {
        const std::string category = ForcedText(stratum, Tags::XML_ATT_VALUE);
        stratumCategories.push_back(category);
        readTable(stratum, kFirstTimeInStratum, category);
    }
    return stratumName;
}

void GeneralRegressionTranslator::CheckCox(Parse& parse)
{
    NoteElement(parse.modelElement);
    if (parse.hazardTables.empty()) {
        Refuse(kNoHazardTables, Tags::XML_EXT_NAME_COXREG_XBASE_CUMHAZARD_TABLES.c_str(),
               Tags::XML_ELE_EXTENSION.c_str(), Tags::XML_ELE_REGRESSMODEL.c_str());
    }
    const CoxRegModel& model = CoxModel(parse);
    if (model.GetEndTimeVariableName().empty()) {
        Refuse(kNoEndTime, Tags::XML_EXT_NAME_COXREG_ENDTIMEVARIABLE.c_str(),
               Tags::XML_ELE_REGRESSMODEL.c_str());
    }
    // A name of the attribute form was never looked for: nothing could be scored with it.
    if (model.GetEndTimeVariable() == nullptr) {
        Refuse(kNotInDictionaries, model.GetEndTimeVariableName().c_str(),
               Tags::XML_ELE_DATADICTIONARY.c_str(), Tags::XML_ELE_TRANSFORMATION.c_str());
    }
}

double GeneralRegressionTranslator::ForcedNumber(const DOMElement* element,
                                                 const std::string& name) const
{
    return VerifyDouble(GetAttributeForced(element, name));
}

}  // namespace MCVelscore_850
