#include "engine/documents/regressiontranslation.h"

#include <set>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include <fmt/format.h>
#include <xercesc/dom/DOM.hpp>

#include "engine/documents/modelelement.h"
#include "engine/documents/modelreading.h"
#include "engine/documents/names.h"
#include "engine/documents/regressionequations.h"
#include "engine/documents/regressionforms.h"
#include "engine/documents/regressionpredictors.h"
#include "engine/documents/regressiontables.h"
#include "engine/documents/regressiontarget.h"
#include "engine/documents/treefields.h"
#include "host/documents/pmmlmodeltags.h"
#include "host/messages/messages.h"
#include "host/model/modelfamilies.h"

namespace MCVelscore_850 {

namespace {

using Tags = PMMLModelTags;

const std::string kRegressionModel = "RegressionModel";
const std::string kInvalidValueTreatment = "invalidValueTreatment";
const std::string kDataType = "dataType";

class Translation {
public:
    Translation(Element root, Element model)
        : root_(root),
          old_(model),
          normalization_(NormalizationOf(model)),
          tables_(ReadRegressionTables(model)),
          target_(root, model)
    {}

    Change Translate();

private:
    void IndexTables();
    void ExpectTables() const;
    const RegressionTable* TableOf(const std::string& category) const;
    void KeepTablesThatCount();

    void ReplaceElement();
    void AddOption(const std::string& name, std::string_view value);
    void UseSelectors();
    void DropRepeatedDerivedFields();
    void RefuseInvalidValues();
    void MoveChildren(bool verification);
    void WriteEquations(RegressionPredictors& predictors) const;
    std::string NotCounted(const RegressionPredictors& predictors) const;

    Element root_;
    Element old_;
    Element model_;  // the new one
    // In this order: of several faults the first one is told.
    std::string normalization_;
    std::vector<RegressionTable> tables_;  // in the end those that count
    RegressionTarget target_;
    std::unordered_map<std::string, size_t> tableOf_;  // by category
    std::string remainder_;               // the category that has what the others leave
    std::vector<std::string> uncounted_;  // categories whose tables don't count
    const RegressionForm* form_ = nullptr;
};

Change Translation::Translate()
{
    Change change{old_.Place(), {}};
    target_.MatchTables(tables_);
    form_ = &FormOf(old_, target_.Shape(), tables_, target_.Categories());
    if (form_->shape != RegressionShape::Number) {
        IndexTables();
        ExpectTables();
        KeepTablesThatCount();
    }
    ReplaceElement();
    DropRepeatedDerivedFields();
    RefuseInvalidValues();
    MoveChildren(false);
    RegressionPredictors predictors(root_, model_, tables_, form_->way.takesFactors);
    WriteEquations(predictors);
    MoveChildren(true);
    old_.Erase();

    change.family = form_->family;
    const auto repeated = DropRepeatedMiningFields(root_);  // its rule has gone before
    change.text = fmt::format(
        "RegressionModel with normalizationMethod \"{}\" is read as a "
        "GeneralRegressionModel, modelType \"{}\"",
        normalization_, form_->way.modelType);
    if (repeated) change.text += "; " + repeated->text;
    change.text += NotCounted(predictors);
    return change;
}

// What of the equations never counts; empty where all does.
std::string Translation::NotCounted(const RegressionPredictors& predictors) const
{
    std::string text;
    if (!uncounted_.empty()) {
        text += fmt::format(
            "; the RegressionTable of {} doesn't count: the category has what "
            "the others leave",
            Listed(uncounted_));
    }
    if (const auto& terms = predictors.NeverMet(); !terms.empty()) {
        text += fmt::format(
            "; {} is no category of its field, so that its coefficient never "
            "counts",
            Listed(terms));
    }
    return text;
}

void Translation::IndexTables()
{
    for (size_t i = 0; i < tables_.size(); ++i) tableOf_.emplace(tables_[i].category, i);
}

// Where all count each category has its own; else one may be without.
void Translation::ExpectTables() const
{
    std::vector<std::string> without;
    for (const std::string& category : target_.Categories()) {
        if (TableOf(category) == nullptr) without.push_back(category);
    }
    const bool mayLackIt =
        without.size() == 1 && form_->counts != CountedTables::All &&
        (!form_->IsByCategory() || without.front() == target_.Categories().back());
    if (!without.empty() && !mayLackIt) {
        RefuseAt(old_, kTablesMissing, Listed(without).c_str(),
                 std::string(form_->normalization).c_str());
    }
    if (form_->counts == CountedTables::First && tables_.size() == 2 && tables_.front().IsEmpty() &&
        !tables_.back().IsEmpty()) {
        RefuseAt(tables_.front().element, kEmptyFirstTable, tables_.front().category.c_str(),
                 std::string(form_->normalization).c_str());
    }
}

const RegressionTable* Translation::TableOf(const std::string& category) const
{
    const auto found = tableOf_.find(category);
    return found == tableOf_.end() ? nullptr : &tables_[found->second];
}

void Translation::KeepTablesThatCount()
{
    std::vector<RegressionTable> kept = tables_;
    if (form_->IsByCategory()) {
        kept.clear();
        for (size_t i = 0; i + 1 < target_.Categories().size(); ++i)
            kept.push_back(*TableOf(target_.Categories()[i]));
    } else if (form_->counts != CountedTables::All) {
        kept.resize(target_.Categories().size() - 1, tables_.front());
    }
    std::set<std::string> counted;
    for (const RegressionTable& table : kept) counted.insert(table.category);
    for (const std::string& category : target_.Categories()) {
        if (counted.contains(category)) continue;
        remainder_ = category;
        const RegressionTable* table = TableOf(category);
        if (table != nullptr && !table->terms.empty()) uncounted_.push_back(category);
    }
    tables_ = std::move(kept);
    tableOf_.clear();  // of all of them
}

void Translation::ReplaceElement()
{
    model_ = AppendFor(root_, Tags::XML_ELE_REGRESSMODEL, old_);
    root_.Insert(model_, old_);
    for (const std::string& kept : {Tags::XML_ATT_RM_MODEL_NAME, Tags::XML_ATT_RM_IS_SCORABLE}) {
        if (old_.Has(kept)) model_.SetText(kept, old_.Text(kept));
    }
    const RegressionWay& way = form_->way;
    const bool classifies = form_->shape != RegressionShape::Number;
    model_.SetText(Tags::XML_ATT_RM_MODEL_TYPE, way.modelType);
    model_.SetText(Tags::XML_ATT_MODELALGO, way.algorithm);
    model_.SetText(Tags::XML_ATT_FUNCTIONNAME,
                   classifies ? Tags::XML_VAL_RM_FUNC_NAME_C : Tags::XML_VAL_MT_REGRESS);
    model_.SetText(Tags::XML_ATT_RM_TARGET_VAR, target_.Name());
    if (!form_->link.empty()) model_.SetText(Tags::XML_ATT_LINKFUNCTION, form_->link);
    if (way.namesDistribution) {
        model_.SetText(Tags::XML_VAL_RM_EXT_NAME_DISTRIBUTION,
                       classifies ? Tags::XML_VAL_RM_EXT_VALUE_DIST_BINOMIAL
                                  : Tags::XML_VAL_RM_EXT_VALUE_DIST_NORMAL);
    }
    if (way.NeedsSelector()) UseSelectors();
    if (way.takesFactors) AddOption(Tags::XML_ATT_RM_EXT_NAME_ALLMISSINGFACTORS, "true");
    if (!way.namesNormalization) return;
    AddOption(Tags::XML_ATT_RM_EXT_NAME_NORMALIZATION, form_->normalization);
    if (form_->counts == CountedTables::AllButHighest) {
        AddOption(Tags::XML_ATT_RM_EXT_NAME_ORDERED, "true");
    } else if (form_->counts != CountedTables::All) {
        AddOption(Tags::XML_ATT_RM_EXT_NAME_REMAINDER, target_.TextOf(remainder_));
    }
}

void Translation::AddOption(const std::string& name, std::string_view value)
{
    const Element extension = AppendFor(model_, Tags::XML_ELE_EXTENSION, old_);
    extension.SetText(Tags::XML_ATT_EXTENSION_EXTENDER, Tags::XML_VAL_EXTENSION_EXTENDER);
    extension.SetText(Tags::XML_ATT_EXT_NAME, name);
    extension.SetText(Tags::XML_ATT_EXT_VALUE, value);
}

// Before the version of selectors the family can't be asked for, and dataType may be left out.
void Translation::UseSelectors()
{
    if (VersionOf(root_) >= kSelectorVersion) return;
    root_.SetText(Tags::XML_ATT_VERSION, fmt::format("{}", kSelectorVersion));
    for (const Element field : DataFields(root_)) {
        if (field.Has(kDataType)) continue;
        const bool isNumber =
            field.Text(Tags::XML_ATT_DATAFIELD_OPTYPE) == Tags::XML_VAL_OT_CONTINUOUS;
        field.SetText(kDataType, isNumber ? "double" : "string");
    }
}

// The same derived field again, as converters write it that encode a column twice.
void Translation::DropRepeatedDerivedFields()
{
    for (const Element section : {root_.Child(Tags::XML_ELE_TRANSFORMATION),
                                  old_.Child(Tags::XML_ELE_LOCALTRANSFORMATIONS)}) {
        std::unordered_map<std::string, Element> first;
        std::vector<Element> repeated;
        for (const Element field : section.Children("DerivedField")) {
            const auto [known, isNew] = first.emplace(field.Text(Tags::XML_ATT_NAME), field);
            if (!isNew && known->second.Dom()->isEqualNode(field.Dom())) repeated.push_back(field);
        }
        for (Element& field : repeated) field.Erase();
    }
}

// The standard's word for a field that says none: a value outside of what its field declares gives
// no score. An indicator would take it for another category.
void Translation::RefuseInvalidValues()
{
    std::set<std::string> closed;
    for (const Element field : DataFields(root_)) {
        if (!ValidValues(field).empty() || field.Child("Interval")) {
            closed.insert(field.Text(Tags::XML_ATT_NAME));
        }
    }
    for (const Element field :
         old_.Child(Tags::XML_ELE_MININGSCHEMA).Children(Tags::XML_ELE_MININGFIELD)) {
        if (field == target_.MiningField() || field.Has(kInvalidValueTreatment)) continue;
        if (!closed.contains(field.Text(Tags::XML_ATT_MININGFIELD_NAME))) continue;
        field.SetText(kInvalidValueTreatment, "returnInvalid");
    }
}

// Extensions of the old element mean nothing to the new one. The published order has the records of
// a verification last.
void Translation::MoveChildren(bool verification)
{
    std::vector<Element> children;
    for (const Element child : old_.Children()) {
        if (child.Is("RegressionTable") || child.Is(Tags::XML_ELE_EXTENSION)) continue;
        if (child.Is("ModelVerification") == verification) children.push_back(child);
    }
    for (const Element child : children) model_.Insert(child, {});
}

void Translation::WriteEquations(RegressionPredictors& predictors) const
{
    RegressionEquations equations(tables_, predictors, old_);
    equations.WriteLists(model_, predictors);
    std::vector<std::string> categories;
    for (const RegressionTable& table : tables_) {
        const bool isNumber = form_->shape == RegressionShape::Number;
        categories.push_back(isNumber || table.category.empty() ? std::string()
                                                                : target_.TextOf(table.category));
    }
    equations.WriteBetas(model_, categories, form_->counts == CountedTables::SharedSlopes);
}

}  // namespace

std::optional<Change> TranslateRegressionModel(Element root)
{
    const Element model = root.Child(kRegressionModel);
    if (!model || ModelElement(root)) return std::nullopt;
    for (const Element child : root.Children()) {
        if (child == model || !IsOtherModel(child.Tag())) continue;
        RefuseAt(child, kModelBeside, child.Tag().c_str());
    }
    return Translation(root, model).Translate();
}

}  // namespace MCVelscore_850
