#include "engine/documents/legacyconverter.h"

#include <algorithm>
#include <map>
#include <memory>
#include <set>

#include "engine/documents/documentadapter.h"
#include "engine/documents/documentloader.h"
#include "engine/documents/documenttree.h"
#include "engine/documents/legacyfields.h"
#include "engine/documents/loadedmodel.h"
#include "engine/documents/modelelement.h"
#include "engine/documents/modelreading.h"
#include "engine/documents/treewriting.h"
#include "host/documents/pmmlmodeltags.h"
#include "host/documents/zeltmodeltags.h"
#include "host/messages/messages.h"
#include "host/model/scoremodel.h"
#include "host/values/numericvalue.h"
#include "host/variables/scoredictionary.h"
#include "host/variables/scoredictvar.h"
#include "host/variables/valueset.h"

namespace MCVelscore_850 {

namespace {

using Old = ZELTModelTags;
using Tags = PMMLModelTags;
using Names = std::vector<std::string>;
// Attribute names and texts.
using Attributes = std::vector<std::pair<std::string, std::string>>;

// The row of betas beside the target's first category in a conditional model.
const std::string kConditionalDummy = "CLRdummy";
const std::string kNameSpace = "http://www.dmg.org/PMML-4_4";
const std::string kVersion = "4.4";

enum class Type { Regression, Multinomial, Conditional };

// The model types of the older form and what the published one calls them.
struct TypeRow {
    const std::string& word;
    Type type;
    const std::string& modelType;
    std::string algorithm;
    std::string function;
};
const TypeRow kTypes[] = {
    {Old::XML_VAL_MT_REGRESS, Type::Regression, Tags::XML_VAL_MT_REGRESS, "", "regression"},
    {Old::XML_VAL_MT_MLR, Type::Multinomial, Tags::XML_VAL_MT_MLR, "",
     Tags::XML_VAL_RM_FUNC_NAME_C},
    {Old::XML_VAL_MT_CLR, Type::Conditional, Tags::XML_VAL_MT_MLR, Tags::XML_VAL_MT_COND,
     Tags::XML_VAL_RM_FUNC_NAME_C},
};

// As readers make it of a document's text: a number may have a plus sign.
std::unique_ptr<ScoreValue> ValueOf(const ScoreDictVar& var, const std::string& text)
{
    if (var.GetValueType() == ScoreDictVar::NUMERIC) {
        return std::make_unique<NumericValue>(NumberOf(text));
    }
    return std::unique_ptr<ScoreValue>(var.MakeValue(text));
}

// An optional attribute without text is left out. A name stays also when it is the empty one.
Element Add(Element parent, const std::string& tag, const Attributes& attributes,
            const Attributes& optional = {})
{
    const Element element = parent.Append(tag);
    for (const auto& [name, text] : attributes) element.SetText(name, text);
    for (const auto& [name, text] : optional) {
        if (!text.empty()) element.SetText(name, text);
    }
    return element;
}

// A document in the older form that its reader took, and the tree that says the same.
class Conversion {
public:
    Conversion(const Document& document, const ScoreModel& model);

    PublishedForm Convert();

private:
    Names NamesIn(std::string_view list, std::string_view tag) const;
    ElementRange CellsOf(std::string_view section, std::string_view cell) const;
    const ScoreDictVar& Variable(const std::string& name) const;
    FieldUse UseOf(const std::string& name) const;

    // What the published form can't say.

    void RefuseVariables() const;
    void RefuseFactorCells() const;
    void RefuseUnpaired() const;
    void RefuseConstant() const;

    // The sections, in the published order.

    void AddHeader(Element root) const;
    void AddDictionary(Element root);
    Element AddModel(Element root) const;
    void AddMiningSchema(Element model) const;
    void AddNames(Element model, const std::string& list, const std::string& tag,
                  const Names& names) const;
    void AddPPMatrix(Element model);
    void AddPairs(Element matrix);
    void AddPCovMatrix(Element model);
    void AddParamMatrix(Element model);

    bool IsParameter(Element cell, const std::string& attribute) const
    {
        return positions_.contains(cell.Text(attribute));
    }
    std::set<std::string> Rows() const;
    void NoteLeftOut(const std::string& section, const Elements& cells);

    Element root_;
    Element modelElement_;
    const ScoreDictionary& dictionary_;
    const TypeRow* type_;
    std::string target_;
    Names parameters_;                                      // each once, the constant last
    std::map<std::string, size_t, std::less<>> positions_;  // of the parameters
    Names factors_;
    Names covariates_;
    std::map<std::string, FieldUse> uses_;
    ElementRange ppCells_;
    Names notes_;
};

Conversion::Conversion(const Document& document, const ScoreModel& model)
    : root_(document.Root()),
      modelElement_(root_.Child(Old::XML_ELE_MODEL).Child(Old::XML_ELE_REGRESS_MODEL)),
      dictionary_(*model.GetDictionary()),
      target_(modelElement_.Text(Old::XML_ATT_RM_TARGET_VAR)),
      parameters_(NamesIn(Old::XML_ELE_PARAM_LIST, Old::XML_ELE_PARAM)),
      factors_(NamesIn(Old::XML_ELE_FAC_LIST, Old::XML_ELE_PREDICTOR)),
      covariates_(NamesIn(Old::XML_ELE_COV_LIST, Old::XML_ELE_PREDICTOR)),
      ppCells_(CellsOf(Old::XML_ELE_PP_MATRIX, Old::XML_ELE_PP_CELL))
{
    const std::string word = modelElement_.Text(Old::XML_ATT_RM_MODEL_TYPE);
    type_ = std::find_if(std::begin(kTypes), std::end(kTypes),
                         [&](const TypeRow& row) { return row.word == word; });
    std::stable_partition(parameters_.begin(), parameters_.end(),
                          [](const std::string& name) { return name != kConstantParameter; });
    for (size_t i = 0; i < parameters_.size(); ++i) positions_.emplace(parameters_[i], i);
    uses_[target_] =
        type_->type == Type::Regression ? FieldUse::MeanTarget : FieldUse::CategoryTarget;
    for (const std::string& name : factors_) uses_.emplace(name, FieldUse::Factor);
    for (const std::string& name : covariates_) uses_.emplace(name, FieldUse::Covariate);
}

// The reader registers a name that is listed again once.
Names Conversion::NamesIn(std::string_view list, std::string_view tag) const
{
    Names names;
    std::set<std::string> seen;
    for (const Element element : modelElement_.Child(list).Children(tag)) {
        std::string name = element.Text(Old::XML_ATT_NAME);
        if (seen.insert(name).second) names.push_back(std::move(name));
    }
    return names;
}

ElementRange Conversion::CellsOf(std::string_view section, std::string_view cell) const
{
    return modelElement_.Child(section).Children(cell);
}

const ScoreDictVar& Conversion::Variable(const std::string& name) const
{
    return *dictionary_.GetVar(name);
}

FieldUse Conversion::UseOf(const std::string& name) const
{
    const auto use = uses_.find(name);
    return use == uses_.end() ? FieldUse::None : use->second;
}

PublishedForm Conversion::Convert()
{
    RefuseVariables();
    if (type_->type == Type::Regression) RefuseUnpaired();
    if (type_->type == Type::Conditional) RefuseConstant();
    RefuseFactorCells();

    const OwnedTree tree = NewTree(kNameSpace, Tags::XML_ELE_PMML);
    const Element root(tree->getDocumentElement());
    root.SetText(Tags::XML_ATT_VERSION, kVersion);
    // In the order that the published schema prescribes.
    AddHeader(root);
    AddDictionary(root);
    const Element model = AddModel(root);
    AddMiningSchema(model);
    AddNames(model, Tags::XML_ELE_PARAM_LIST, Tags::XML_ELE_PARAM, parameters_);
    AddNames(model, Tags::XML_ELE_FAC_LIST, Tags::XML_ELE_PREDICTOR, factors_);
    AddNames(model, Tags::XML_ELE_COV_LIST, Tags::XML_ELE_PREDICTOR, covariates_);
    AddPPMatrix(model);
    AddPCovMatrix(model);
    AddParamMatrix(model);
    return {"", TreeText(*tree), std::move(notes_)};
}

void Conversion::RefuseVariables() const
{
    for (const Names* list : {&factors_, &covariates_}) {
        for (const std::string& name : *list) {
            if (name == target_) {
                RefuseAt(modelElement_, kTwoUses, name.c_str(), "the target", "a predictor");
            }
        }
    }
    for (const std::string& name : covariates_) {
        if (UseOf(name) == FieldUse::Factor) {
            RefuseAt(modelElement_, kTwoUses, name.c_str(), "a factor", "a covariate");
        }
        if (Variable(name).GetValueType() == ScoreDictVar::STRING) {
            RefuseAt(modelElement_, kTextsAsNumbers, name.c_str(), "covariate");
        }
    }
    if (type_->type == Type::Regression) {
        if (!factors_.empty()) RefuseAt(modelElement_, kFactorOfLinear, factors_.front().c_str());
        if (Variable(target_).GetValueType() == ScoreDictVar::STRING) {
            RefuseAt(modelElement_, kTextsAsNumbers, target_.c_str(), "target");
        }
    }
}

// Slope i belongs to predictor i, and the constant comes after them.
void Conversion::RefuseUnpaired() const
{
    const size_t slopes = parameters_.size() - (positions_.contains(kConstantParameter) ? 1 : 0);
    if (slopes == covariates_.size()) return;
    RefuseAt(modelElement_, kUnpairedParameters, static_cast<int>(slopes),
             static_cast<int>(covariates_.size()));
}

void Conversion::RefuseConstant() const
{
    std::set<std::string> withCells;
    for (const Element cell : ppCells_) {
        withCells.insert(cell.Text(Old::XML_ATT_PARAMETER_NAME));
    }
    for (const std::string& parameter : parameters_) {
        if (parameter == kConstantParameter || !withCells.contains(parameter)) {
            RefuseAt(modelElement_, kConditionalConstant, parameter.c_str());
        }
    }
}

// A multinomial model finds no category of a factor without a list, and scores no case; the
// published form gives it the list of its cells. A cell for a value that its factor doesn't accept
// is one that no case meets; there it is an error.
void Conversion::RefuseFactorCells() const
{
    constexpr std::string_view kNotAvailable = "NA";
    const auto isOpenText = [](const ScoreDictVar& var) {
        return var.GetValueType() == ScoreDictVar::STRING && var.HasOpenCategories();
    };
    for (const std::string& factor : factors_) {
        if (type_->type == Type::Multinomial && isOpenText(Variable(factor))) {
            RefuseAt(modelElement_, kOpenFactor, factor.c_str());
        }
    }
    for (const Element cell : ppCells_) {
        const std::string factor = cell.Text(Old::XML_ATT_PP_PREDICTOR);
        if (UseOf(factor) != FieldUse::Factor) continue;
        if (!IsParameter(cell, Old::XML_ATT_PARAMETER_NAME)) continue;
        const ScoreDictVar& var = Variable(factor);
        const std::string text = cell.Text(Old::XML_ATT_VALUE);
        const std::unique_ptr<ScoreValue> value = ValueOf(var, text);
        if (text.empty() || !var.Accepts(value.get())) {
            RefuseAt(cell, kFactorCell, text.c_str(), factor.c_str());
        }
        // In a table this text means a missing value until a category is called so.
        if (isOpenText(var) && text == kNotAvailable) RefuseAt(cell, kOpenFactor, factor.c_str());
    }
}

void Conversion::AddHeader(Element root) const
{
    const Element header = Add(root, "Header", {{"description", "Converted from the older form"}});
    Add(header, "Application", {{"name", "velscore"}});
}

void Conversion::AddDictionary(Element root)
{
    std::map<std::string, Names> cellValues;
    for (const Element cell : ppCells_) {
        std::string text = cell.Text(Old::XML_ATT_VALUE);
        if (text.empty()) continue;
        cellValues[cell.Text(Old::XML_ATT_PP_PREDICTOR)].push_back(std::move(text));
    }
    const Elements variables =
        root_.Child(Old::XML_ELE_DICTIONARY).Children(Old::XML_ELE_VARIABLE).List();
    const Element dictionary = Add(root, Tags::XML_ELE_DATADICTIONARY,
                                   {{"numberOfFields", std::to_string(variables.size())}});
    bool hasMeans = false;
    for (const Element element : variables) {
        const std::string name = element.Text(Old::XML_ATT_NAME);
        AddDataField(dictionary, {element, &Variable(name), UseOf(name), cellValues[name]});
        for (const Element stats : element.Children(Old::XML_ELE_VAR_STATS)) {
            hasMeans = hasMeans || !stats.Text(Old::XML_ATT_VS_MEAN).empty();
        }
    }
    if (hasMeans) {
        notes_.push_back("left out the means of var-stats, which --policy substitute alone takes");
    }
}

Element Conversion::AddModel(Element root) const
{
    return Add(root, Tags::XML_ELE_REGRESSMODEL,
               {{Tags::XML_ATT_RM_MODEL_TYPE, type_->modelType},
                {Tags::XML_ATT_FUNCTIONNAME, type_->function},
                {Tags::XML_ATT_RM_TARGET_VAR, target_}},
               {{Tags::XML_ATT_RM_ALGOR_NAME, type_->algorithm},
                {Tags::XML_VAL_NAME_MODELDF, modelElement_.Text(Old::XML_ATT_RM_MODEL_DF)}});
}

void Conversion::AddMiningSchema(Element model) const
{
    const Element schema = Add(model, Tags::XML_ELE_MININGSCHEMA, {});
    Add(schema, Tags::XML_ELE_MININGFIELD,
        {{Tags::XML_ATT_MININGFIELD_NAME, target_},
         {Tags::XML_ATT_MININGFIELD_USAGETYPE, Tags::XML_ATT_MF_FUT_TARGET}});
    for (const Names* list : {&factors_, &covariates_}) {
        for (const std::string& name : *list) {
            Add(schema, Tags::XML_ELE_MININGFIELD,
                {{Tags::XML_ATT_MININGFIELD_NAME, name},
                 {Tags::XML_ATT_MININGFIELD_USAGETYPE, Tags::XML_ATT_MF_FUT_ACTIVE}});
        }
    }
}

void Conversion::AddNames(Element model, const std::string& list, const std::string& tag,
                          const Names& names) const
{
    // Only the list of parameters is required.
    if (names.empty() && list != Tags::XML_ELE_PARAM_LIST) return;
    const Element element = Add(model, list, {});
    for (const std::string& name : names) {
        element.Append(tag).SetText(Tags::XML_ATT_NAME, name);
    }
}

void Conversion::AddPPMatrix(Element model)
{
    const Element matrix = Add(model, Tags::XML_ELE_PP_MATRIX, {});
    if (type_->type == Type::Regression) {
        AddPairs(matrix);
        return;
    }
    Elements unknown;
    for (const Element cell : ppCells_) {
        if (!IsParameter(cell, Old::XML_ATT_PARAMETER_NAME)) {
            unknown.push_back(cell);
            continue;
        }
        Add(matrix, Tags::XML_ELE_PP_CELL,
            {{Tags::XML_ATT_PPC_VALUE, cell.Text(Old::XML_ATT_VALUE)},
             {Tags::XML_ATT_PPC_PREDNAME, cell.Text(Old::XML_ATT_PP_PREDICTOR)},
             {Tags::XML_ATT_PPC_PARAMNAME, cell.Text(Old::XML_ATT_PARAMETER_NAME)}});
    }
    NoteLeftOut(Old::XML_ELE_PP_MATRIX, unknown);
}

// A linear regression pairs by position, whatever its pp-matrix says.
void Conversion::AddPairs(Element matrix)
{
    for (size_t i = 0; i < covariates_.size(); ++i) {
        Add(matrix, Tags::XML_ELE_PP_CELL,
            {{Tags::XML_ATT_PPC_VALUE, "1"},
             {Tags::XML_ATT_PPC_PREDNAME, covariates_[i]},
             {Tags::XML_ATT_PPC_PARAMNAME, parameters_[i]}});
    }
    const auto saysOtherwise = [&](Element cell) {
        const auto found = positions_.find(cell.Text(Old::XML_ATT_PARAMETER_NAME));
        const double exponent = NumberOf(cell.Text(Old::XML_ATT_VALUE));
        return found == positions_.end() || found->second >= covariates_.size() ||
               exponent != 1.0 ||  // exact: as the document writes it
               covariates_[found->second] != cell.Text(Old::XML_ATT_PP_PREDICTOR);
    };
    if (std::any_of(ppCells_.begin(), ppCells_.end(), saysOtherwise)) {
        notes_.push_back(
            "the pp-matrix doesn't say what the model computes: in a linear regression each "
            "parameter belongs to the predictor in its position, and so they are written");
    }
}

void Conversion::AddPCovMatrix(Element model)
{
    const ElementRange cells = CellsOf(Old::XML_ELE_PCOV_MATRIX, Old::XML_ELE_PCOV_CELL);
    if (cells.Empty()) return;
    if (type_->type != Type::Regression) {
        notes_.push_back("left out the pcov-matrix, which a model of this type doesn't read");
        return;
    }
    Elements unknown;
    Element matrix;
    for (const Element cell : cells) {
        if (!IsParameter(cell, Old::XML_ATT_PCOV_P_ROW) ||
            !IsParameter(cell, Old::XML_ATT_PCOV_P_COL)) {
            unknown.push_back(cell);
            continue;
        }
        if (!matrix) matrix = Add(model, Tags::XML_ELE_PCOV_MATRIX, {});
        Add(matrix, Tags::XML_ELE_PCOV_CELL,
            {{Tags::XML_ATT_PCC_PROW, cell.Text(Old::XML_ATT_PCOV_P_ROW)},
             {Tags::XML_ATT_PCC_PCOL, cell.Text(Old::XML_ATT_PCOV_P_COL)},
             {Tags::XML_ATT_PCC_VALUE, cell.Text(Old::XML_ATT_VALUE)}});
    }
    NoteLeftOut(Old::XML_ELE_PCOV_MATRIX, unknown);
}

void Conversion::AddParamMatrix(Element model)
{
    const Element matrix = Add(model, Tags::XML_ELE_PARAM_MATRIX, {});
    const bool hasCategories = type_->type != Type::Regression;
    const bool areNumbers = Variable(target_).GetValueType() == ScoreDictVar::NUMERIC;
    const std::set<std::string> rows = hasCategories ? Rows() : std::set<std::string>();
    Elements unknown;
    for (const Element cell : CellsOf(Old::XML_ELE_P_TABLE, Old::XML_ELE_P_CELL)) {
        const std::string category = hasCategories ? cell.Text(Old::XML_ATT_PC_TARGET_CAT) : "";
        const bool hasRow =
            !hasCategories ||
            rows.contains(areNumbers ? NumericValue(category).GetString() : category);
        if (!hasRow || !IsParameter(cell, Old::XML_ATT_PARAMETER_NAME)) {
            unknown.push_back(cell);
            continue;
        }
        Add(matrix, Tags::XML_ELE_PCELL,
            {{Tags::XML_ATT_PC_PARAMNAME, cell.Text(Old::XML_ATT_PARAMETER_NAME)},
             {Tags::XML_ATT_PC_BETA, cell.Text(Old::XML_ATT_PC_BETA)}},
            {{Tags::XML_ATT_PC_TARGET_CAT, category},
             {Tags::XML_ATT_PC_DF, cell.Text(Old::XML_ATT_PC_DF)}});
    }
    NoteLeftOut(Old::XML_ELE_P_TABLE, unknown);
}

// The categories that have a row of betas.
std::set<std::string> Conversion::Rows() const
{
    std::set<std::string> rows;
    const auto& entries = Variable(target_).GetValueSet()->GetEntries();
    if (type_->type == Type::Conditional) {
        return {entries.front().GetEntryValue()->GetString(), kConditionalDummy};
    }
    for (const ValueSetEntry& entry : entries) rows.insert(entry.GetEntryValue()->GetString());
    return rows;
}

void Conversion::NoteLeftOut(const std::string& section, const Elements& cells)
{
    if (cells.empty()) return;
    const DocumentPlace place = cells.front().Place();
    notes_.push_back("left out " + std::to_string(cells.size()) +
                     (cells.size() == 1 ? " cell" : " cells") + " of the " + section +
                     " that name a parameter or category which the model doesn't have, the first "
                     "in line " +
                     std::to_string(place.line));
}

// What is written is what the reader takes, without any adaptation.
void ReadBack(const PublishedForm& published, const Plugin& plugin)
{
    Document document = LoadDocumentText(published.text, published.file);
    std::string reason;
    if (const auto adaptations = AdaptDocument(document); !adaptations.empty()) {
        reason = adaptations.front().change;
    } else {
        try {
            ReadModel(plugin, document);
            return;
        } catch (const VSException& refusal) {
            reason = refusal.GetText();
        }
    }
    Refuse(kPublishedFormRefused, reason.c_str());
}

}  // namespace

PublishedForm ConvertLegacyDocument(const Document& document, const Plugin& plugin)
{
    if (IsPmmlRoot(document.Root())) {
        throw Failure(FailureKind::Document, kAlreadyPublished, {document.File()});
    }
    try {
        const std::unique_ptr<ScoreModel> model = ReadModel(plugin, document);
        PublishedForm published = Conversion(document, *model).Convert();
        published.file = document.File();
        ReadBack(published, plugin);
        return published;
    } catch (const VSException& refusal) {
        throw DocumentFailure(refusal, document.File());
    }
}

}  // namespace MCVelscore_850
