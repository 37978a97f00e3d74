#include "engine/documents/regressiontranslation.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <optional>
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
#include "engine/documents/regressionpredictors.h"
#include "engine/documents/regressiontables.h"
#include "engine/documents/treefields.h"
#include "host/documents/documentplace.h"
#include "host/documents/pmmlmodeltags.h"
#include "host/messages/messages.h"
#include "host/model/modelfamilies.h"
#include "host/values/numericvalue.h"

namespace MCVelscore_850 {

namespace {

using Tags = PMMLModelTags;

const std::string kRegressionModel = "RegressionModel";
const std::string kNormalizationMethod = "normalizationMethod";
const std::string kTargetFieldName = "targetFieldName";
const std::string kNone = "none";
const std::string kIntercept = "(Intercept)";
const std::string kInvalidValueTreatment = "invalidValueTreatment";
const std::string kOrdinal = "ordinal";
const std::string kCategorical = "categorical";
const std::string kDataType = "dataType";

constexpr size_t kMostCells = 100'000;  // betas of 0 among them

constexpr std::string_view kNormalizations[] = {
    "none", "simplemax", "softmax", "logit", "probit", "cloglog", "exp", "loglog", "cauchit"};

/// What the tables are the equations of.
enum class Shape { Number, TwoCategories, Categories, OrderedCategories };

// In messages.
constexpr const char* kShapes[] = {"a regression", "a classification into two categories",
                                   "a classification into more than two categories",
                                   "a target of ordered categories"};

// Which tables count. Where not all do, one category has what the others leave.
enum class Counts {
    All,
    First,          // of two
    AllButOne,      // the last table, or the category without one
    AllButHighest,  // the last category, each by its own equation
    SharedSlopes    // the same, by equations that differ in the intercept alone
};

// The general form's way to say it.
struct Way {
    const std::string& modelType;
    const std::string& algorithm;
    bool takesFactors;  // its families count a missing category as none of the factor's
};

const Way kLinear{Tags::XML_VAL_MT_GLIN, Tags::XML_VAL_MN_GLIN, true};
const Way kGeneralized{Tags::XML_VAL_MT_GDLIN, Tags::XML_VAL_MN_GZLM, false};
const Way kMultinomialLogistic{Tags::XML_VAL_MT_MLR, Tags::XML_VAL_MT_MLR, true};
const Way kOrdinalLogistic{Tags::XML_VAL_MT_ORDINAL, Tags::XML_VAL_MN_ORDINAL, false};
const Way kNormalizedEquations{Tags::XML_VAL_MT_MLR, Tags::XML_VAL_MN_NORMALIZED, true};

struct Form {
    Shape shape;
    Counts counts;
    std::string_view normalization;
    const Way& way;
    std::string_view link;  // empty where the family has none
    const char* family;
};

// The first one that fits.
const Form kForms[] = {
    {Shape::Number, Counts::All, "none", kLinear, "", "linear regression"},
    {Shape::Number, Counts::All, "exp", kGeneralized, "log", "generalized linear model"},
    {Shape::Number, Counts::All, "softmax", kGeneralized, "logit", "generalized linear model"},
    {Shape::Number, Counts::All, "logit", kGeneralized, "logit", "generalized linear model"},
    {Shape::Number, Counts::All, "probit", kGeneralized, "probit", "generalized linear model"},
    {Shape::Number, Counts::All, "cloglog", kGeneralized, "cloglog", "generalized linear model"},
    {Shape::Number, Counts::All, "loglog", kGeneralized, "loglog", "generalized linear model"},

    {Shape::TwoCategories, Counts::First, "none", kGeneralized, "identity", "binary regression"},
    {Shape::TwoCategories, Counts::All, "simplemax", kNormalizedEquations, "", "binary regression"},
    {Shape::TwoCategories, Counts::All, "softmax", kMultinomialLogistic, "",
     "binary logistic regression"},
    {Shape::TwoCategories, Counts::First, "logit", kMultinomialLogistic, "",
     "binary logistic regression"},
    {Shape::TwoCategories, Counts::First, "probit", kGeneralized, "probit", "binary regression"},
    {Shape::TwoCategories, Counts::First, "cloglog", kGeneralized, "cloglog", "binary regression"},
    {Shape::TwoCategories, Counts::First, "loglog", kGeneralized, "loglog", "binary regression"},
    {Shape::TwoCategories, Counts::First, "cauchit", kNormalizedEquations, "", "binary regression"},

    {Shape::Categories, Counts::All, "softmax", kMultinomialLogistic, "",
     "multinomial logistic regression"},
    {Shape::Categories, Counts::All, "simplemax", kNormalizedEquations, "",
     "multinomial regression"},
    {Shape::Categories, Counts::AllButOne, "none", kNormalizedEquations, "",
     "multinomial regression"},
    {Shape::Categories, Counts::AllButOne, "logit", kNormalizedEquations, "",
     "multinomial regression"},
    {Shape::Categories, Counts::AllButOne, "probit", kNormalizedEquations, "",
     "multinomial regression"},
    {Shape::Categories, Counts::AllButOne, "cloglog", kNormalizedEquations, "",
     "multinomial regression"},
    {Shape::Categories, Counts::AllButOne, "loglog", kNormalizedEquations, "",
     "multinomial regression"},
    {Shape::Categories, Counts::AllButOne, "cauchit", kNormalizedEquations, "",
     "multinomial regression"},

    {Shape::OrderedCategories, Counts::All, "softmax", kMultinomialLogistic, "",
     "multinomial logistic regression"},
    {Shape::OrderedCategories, Counts::All, "simplemax", kNormalizedEquations, "",
     "multinomial regression"},
    {Shape::OrderedCategories, Counts::SharedSlopes, "logit", kOrdinalLogistic, "logit",
     "ordinal regression"},
    {Shape::OrderedCategories, Counts::SharedSlopes, "probit", kOrdinalLogistic, "probit",
     "ordinal regression"},
    {Shape::OrderedCategories, Counts::SharedSlopes, "cloglog", kOrdinalLogistic, "cloglog",
     "ordinal regression"},
    {Shape::OrderedCategories, Counts::SharedSlopes, "loglog", kOrdinalLogistic, "loglog",
     "ordinal regression"},
    {Shape::OrderedCategories, Counts::SharedSlopes, "cauchit", kOrdinalLogistic, "cauchit",
     "ordinal regression"},
    {Shape::OrderedCategories, Counts::AllButHighest, "none", kNormalizedEquations, "",
     "ordinal regression"},
    {Shape::OrderedCategories, Counts::AllButHighest, "logit", kNormalizedEquations, "",
     "ordinal regression"},
    {Shape::OrderedCategories, Counts::AllButHighest, "probit", kNormalizedEquations, "",
     "ordinal regression"},
    {Shape::OrderedCategories, Counts::AllButHighest, "cloglog", kNormalizedEquations, "",
     "ordinal regression"},
    {Shape::OrderedCategories, Counts::AllButHighest, "loglog", kNormalizedEquations, "",
     "ordinal regression"},
    {Shape::OrderedCategories, Counts::AllButHighest, "cauchit", kNormalizedEquations, "",
     "ordinal regression"},
};

bool IsByCategory(const Form& form)
{
    return form.counts == Counts::AllButHighest || form.counts == Counts::SharedSlopes;
}

Element Add(Element parent, const std::string& tag, Element source)
{
    const Element added = parent.Append(tag);
    CopyPlace(source.Dom(), added.Dom());
    return added;
}

// A column of betas: a product of predictors, or the intercept.
struct Parameter {
    std::string name;
    Element element;
    std::vector<RegressionPredictors::Cell> cells;
};

// A coefficient of a table, in the column of its parameter.
struct Beta {
    size_t parameter;
    const RegressionTerm* term;
};

class Translation {
public:
    Translation(Element root, Element model) : root_(root), old_(model) {}

    Change Translate();

private:
    std::string Normalization() const;
    void FindTarget();
    bool Classifies() const;
    void SettleCategories();
    void ListCategories();
    void MatchTables();
    Shape ShapeOfTables() const;
    const Form& FindForm(Shape shape, const std::string& normalization) const;
    bool HasSharedSlopes() const;
    const RegressionTable* TableOf(const std::string& category) const;
    void KeepTablesThatCount();
    void ExpectOneTable() const;
    void ExpectTables() const;

    void DropRepeatedDerivedFields();
    void RefuseInvalidValues();
    void ReplaceElement();
    void AddOption(const std::string& name, std::string_view value);
    void MoveChildren(bool verification);
    void PlanParameters(RegressionPredictors& predictors);
    size_t ParameterOf(const std::vector<RegressionPredictors::Cell>& cells, Element element,
                       std::map<std::string, size_t>& repeats);
    void WriteLists(const RegressionPredictors& predictors);
    void WriteBetas();
    void WriteSlopes(size_t table, const std::string& category);
    Element WriteBeta(const Parameter& parameter, const std::string& beta, Element source,
                      const std::string& category);
    void UseSelectors();

    std::string TargetText(const std::string& category) const;

    Element root_;
    Element old_;
    Element model_;         // the new one
    Element targetMining_;  // MiningField
    Element target_;        // DataField
    std::string targetName_;
    std::vector<RegressionTable> tables_;              // in the end those that count
    std::unordered_map<std::string, size_t> tableOf_;  // by category
    std::vector<std::string> categories_;              // of the target, none of a number
    std::string remainder_;               // the category that has what the others leave
    std::vector<std::string> uncounted_;  // categories whose tables don't count
    const Form* form_ = nullptr;
    Element matrix_;                     // ParamMatrix
    std::vector<Parameter> parameters_;  // the first one is the intercept
    std::unordered_map<std::string, size_t> parameterOf_;
    std::set<std::string> parameterNames_{kIntercept, "(Constant)"};  // the reader moves the latter
    std::vector<std::vector<Beta>> betas_;                            // by table
};

Change Translation::Translate()
{
    Change change{old_.Place(), {}};
    const std::string normalization = Normalization();
    tables_ = ReadRegressionTables(old_);
    FindTarget();
    if (Classifies()) {
        SettleCategories();
        MatchTables();
    } else {
        ExpectOneTable();
    }
    const Shape shape = ShapeOfTables();
    form_ = &FindForm(shape, normalization);
    if (shape != Shape::Number) {
        ExpectTables();
        KeepTablesThatCount();
    }
    ReplaceElement();
    DropRepeatedDerivedFields();
    RefuseInvalidValues();
    MoveChildren(false);
    RegressionPredictors predictors(root_, model_, tables_, form_->way.takesFactors);
    PlanParameters(predictors);
    WriteLists(predictors);
    WriteBetas();
    MoveChildren(true);
    old_.Erase();

    change.family = form_->family;
    const auto repeated = DropRepeatedMiningFields(root_);  // its rule has gone before

    change.text = fmt::format(
        "RegressionModel with normalizationMethod \"{}\" is read as a "
        "GeneralRegressionModel, modelType \"{}\"",
        normalization, form_->way.modelType);
    if (repeated) change.text += "; " + repeated->text;
    if (!uncounted_.empty()) {
        change.text += fmt::format(
            "; the RegressionTable of {} doesn't count: the category has what "
            "the others leave",
            Listed(uncounted_));
    }
    if (const auto& terms = predictors.NeverMet(); !terms.empty()) {
        change.text += fmt::format(
            "; {} is no category of its field, so that its coefficient never "
            "counts",
            Listed(terms));
    }
    return change;
}

std::string Translation::Normalization() const
{
    std::string word = old_.Text(kNormalizationMethod);
    if (word.empty()) return kNone;
    if (std::find(std::begin(kNormalizations), std::end(kNormalizations), word) ==
        std::end(kNormalizations)) {
        RefuseAt(old_.Dom(), kUnknownNormalization, word.c_str());
    }
    return word;
}

// The mining schema decides; old documents name the field in the model's attribute alone.
void Translation::FindTarget()
{
    const Element schema = old_.Child(Tags::XML_ELE_MININGSCHEMA);
    const std::string named = old_.Text(kTargetFieldName);
    Element ofName;
    for (const Element field : schema.Children(Tags::XML_ELE_MININGFIELD)) {
        const std::string usage = field.Text(Tags::XML_ATT_MININGFIELD_USAGETYPE);
        const std::string name = field.Text(Tags::XML_ATT_MININGFIELD_NAME);
        if (!targetMining_ &&
            (usage == Tags::XML_ATT_MF_FUT_TARGET || usage == Tags::XML_ATT_MF_FUT_PREDICTED)) {
            targetMining_ = field;
            targetName_ = name;
        }
        if (name == named) ofName = field;
    }
    if (!targetMining_) {
        if (named.empty() || !schema) RefuseAt(old_.Dom(), kNoTargetField, old_.Tag().c_str());
        targetMining_ = ofName ? ofName : Add(schema, Tags::XML_ELE_MININGFIELD, old_);
        targetMining_.SetText(Tags::XML_ATT_MININGFIELD_NAME, named);
        targetMining_.SetText(Tags::XML_ATT_MININGFIELD_USAGETYPE, Tags::XML_ATT_MF_FUT_TARGET);
        targetName_ = named;
    } else if (!named.empty() && named != targetName_) {
        RefuseAt(old_.Dom(), kTargetFieldsDiffer, named.c_str(), targetName_.c_str());
    }
    for (const Element field : DataFields(root_)) {
        if (field.Text(Tags::XML_ATT_NAME) == targetName_) target_ = field;
    }
    if (!target_) {
        RefuseAt(targetMining_.Dom(), kUnknownTermField, targetName_.c_str(),
                 targetMining_.Tag().c_str());
    }
    const std::string optype = targetMining_.Text(Tags::XML_ATT_DATAFIELD_OPTYPE);
    if (!optype.empty()) target_.SetText(Tags::XML_ATT_DATAFIELD_OPTYPE, optype);
}

// A regression over several categories is what old exporters call a classification.
bool Translation::Classifies() const
{
    const std::string function = old_.Text(Tags::XML_ATT_FUNCTIONNAME);
    if (function == Tags::XML_VAL_RM_FUNC_NAME_C) return true;
    if (function != Tags::XML_VAL_MT_REGRESS) {
        RefuseAt(old_.Dom(), kUnknownFunctionName, function.c_str());
    }
    return tables_.size() > 1 &&
           std::none_of(tables_.begin(), tables_.end(),
                        [](const RegressionTable& table) { return table.category.empty(); });
}

void Translation::SettleCategories()
{
    for (const RegressionTable& table : tables_) {
        if (!table.category.empty()) continue;
        RefuseAt(table.element.Dom(), kTableWithoutCategory, static_cast<int>(tables_.size()));
    }
    if (target_.Text(Tags::XML_ATT_DATAFIELD_OPTYPE) == Tags::XML_VAL_OT_CONTINUOUS) {
        target_.SetText(Tags::XML_ATT_DATAFIELD_OPTYPE, kCategorical);
    }
    ListCategories();
    for (const Element value : ValidValues(target_)) {
        categories_.push_back(value.Text(Tags::XML_ATT_VALUE));
    }
    if (categories_.size() < 2) {
        const std::string only = "beside " + Listed(categories_);
        RefuseAt(target_.Dom(), kTablesMissing, only.c_str(), Normalization().c_str());
    }
}

// A target that lists no categories has those of the tables, in their order.
void Translation::ListCategories()
{
    if (!ValidValues(target_).empty()) return;
    std::set<std::string> keys;
    for (const RegressionTable& table : tables_) {
        if (!keys.insert(CategoryKeyOf(target_, table.category)).second) continue;
        Add(target_, Tags::XML_ELE_VALUE, table.element)
            .SetText(Tags::XML_ATT_VALUE, table.category);
    }
}

// Gives each table its category as the target lists it.
void Translation::MatchTables()
{
    std::unordered_map<std::string, std::string> listed;  // by key
    for (const std::string& category : categories_) {
        listed.emplace(CategoryKeyOf(target_, category), category);
    }
    for (size_t i = 0; i < tables_.size(); ++i) {
        RegressionTable& table = tables_[i];
        const auto category = listed.find(CategoryKeyOf(target_, table.category));
        if (category == listed.end()) {
            RefuseAt(table.element.Dom(), kUnknownTableCategory, table.category.c_str(),
                     targetName_.c_str(), Listed(categories_).c_str());
        }
        table.category = category->second;
        if (!tableOf_.emplace(table.category, i).second) {
            RefuseAt(table.element.Dom(), kTableTwice, table.category.c_str());
        }
    }
}

Shape Translation::ShapeOfTables() const
{
    if (categories_.empty()) return Shape::Number;
    // Of two categories there is one probability, and the order of the tables says whose.
    if (categories_.size() == 2) return Shape::TwoCategories;
    return target_.Text(Tags::XML_ATT_DATAFIELD_OPTYPE) == kOrdinal ? Shape::OrderedCategories
                                                                    : Shape::Categories;
}

const Form& Translation::FindForm(Shape shape, const std::string& normalization) const
{
    for (const Form& form : kForms) {
        if (form.shape != shape || form.normalization != normalization) continue;
        if (form.counts != Counts::SharedSlopes || HasSharedSlopes()) return form;
    }
    RefuseAt(old_.Dom(), kNormalizationNotTaken, normalization.c_str(),
             kShapes[static_cast<size_t>(shape)]);
}

// True where the equations of all categories but the last have the same terms.
bool Translation::HasSharedSlopes() const
{
    std::optional<std::vector<std::string>> shared;
    for (const RegressionTable& table : tables_) {
        if (table.category == categories_.back()) continue;
        std::vector<std::string> terms;
        for (const RegressionTerm& term : table.terms) {
            std::string text = fmt::format("{}", term.element.Number("coefficient").value_or(0.0));
            for (const TermFactor& factor : term.factors) {
                text += fmt::format("\n{}\n{}\n{}\n{}", factor.field, factor.exponent,
                                    factor.category.value_or(""), factor.mapMissingTo.value_or(""));
            }
            terms.push_back(std::move(text));
        }
        std::sort(terms.begin(), terms.end());
        if (shared && *shared != terms) return false;
        shared = std::move(terms);
    }
    return true;
}

void Translation::ExpectOneTable() const
{
    if (tables_.size() > 1) {
        RefuseAt(tables_[1].element.Dom(), kTableCount, static_cast<int>(tables_.size()));
    }
    const std::string dataType = target_.Text(kDataType);
    if (dataType == "string" || dataType == "boolean") {
        RefuseAt(target_.Dom(), kTextInEquation, targetName_.c_str(), dataType.c_str(),
                 old_.Tag().c_str());
    }
    target_.SetText(Tags::XML_ATT_DATAFIELD_OPTYPE, Tags::XML_VAL_OT_CONTINUOUS);
}

// Where all count each category has its own; else one may be without.
void Translation::ExpectTables() const
{
    std::vector<std::string> without;
    for (const std::string& category : categories_) {
        if (TableOf(category) == nullptr) without.push_back(category);
    }
    const bool mayLackIt = without.size() == 1 && form_->counts != Counts::All &&
                           (!IsByCategory(*form_) || without.front() == categories_.back());
    if (!without.empty() && !mayLackIt) {
        RefuseAt(old_.Dom(), kTablesMissing, Listed(without).c_str(),
                 std::string(form_->normalization).c_str());
    }
    if (form_->counts == Counts::First && tables_.size() == 2 && tables_.front().IsEmpty() &&
        !tables_.back().IsEmpty()) {
        RefuseAt(tables_.front().element.Dom(), kEmptyFirstTable, tables_.front().category.c_str(),
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
    if (IsByCategory(*form_)) {
        kept.clear();
        for (size_t i = 0; i + 1 < categories_.size(); ++i)
            kept.push_back(*TableOf(categories_[i]));
    } else if (form_->counts != Counts::All) {
        kept.resize(categories_.size() - 1, tables_.front());
    }
    std::set<std::string> counted;
    for (const RegressionTable& table : kept) counted.insert(table.category);
    for (const std::string& category : categories_) {
        if (counted.contains(category)) continue;
        remainder_ = category;
        const RegressionTable* table = TableOf(category);
        if (table != nullptr && !table->terms.empty()) uncounted_.push_back(category);
    }
    tables_ = std::move(kept);
    tableOf_.clear();  // of all of them
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
        if (field == targetMining_ || field.Has(kInvalidValueTreatment)) continue;
        if (!closed.contains(field.Text(Tags::XML_ATT_MININGFIELD_NAME))) continue;
        field.SetText(kInvalidValueTreatment, "returnInvalid");
    }
}

void Translation::ReplaceElement()
{
    model_ = Add(root_, Tags::XML_ELE_REGRESSMODEL, old_);
    root_.Insert(model_, old_);
    for (const std::string& kept : {Tags::XML_ATT_RM_MODEL_NAME, Tags::XML_ATT_RM_IS_SCORABLE}) {
        if (old_.Has(kept)) model_.SetText(kept, old_.Text(kept));
    }
    const Way& way = form_->way;
    const bool classifies = form_->shape != Shape::Number;
    model_.SetText(Tags::XML_ATT_RM_MODEL_TYPE, way.modelType);
    model_.SetText(Tags::XML_ATT_MODELALGO, way.algorithm);
    model_.SetText(Tags::XML_ATT_FUNCTIONNAME,
                   classifies ? Tags::XML_VAL_RM_FUNC_NAME_C : Tags::XML_VAL_MT_REGRESS);
    model_.SetText(Tags::XML_ATT_RM_TARGET_VAR, targetName_);
    if (!form_->link.empty()) model_.SetText(Tags::XML_ATT_LINKFUNCTION, form_->link);
    if (&way == &kGeneralized) {
        model_.SetText(Tags::XML_VAL_RM_EXT_NAME_DISTRIBUTION,
                       classifies ? Tags::XML_VAL_RM_EXT_VALUE_DIST_BINOMIAL
                                  : Tags::XML_VAL_RM_EXT_VALUE_DIST_NORMAL);
    }
    if (&way == &kGeneralized || &way == &kNormalizedEquations) UseSelectors();
    if (way.takesFactors) AddOption(Tags::XML_ATT_RM_EXT_NAME_ALLMISSINGFACTORS, "true");
    if (&way != &kNormalizedEquations) return;
    AddOption(Tags::XML_ATT_RM_EXT_NAME_NORMALIZATION, form_->normalization);
    if (form_->counts == Counts::AllButHighest) {
        AddOption(Tags::XML_ATT_RM_EXT_NAME_ORDERED, "true");
    } else if (form_->counts != Counts::All) {
        AddOption(Tags::XML_ATT_RM_EXT_NAME_REMAINDER, TargetText(remainder_));
    }
}

void Translation::AddOption(const std::string& name, std::string_view value)
{
    const Element extension = Add(model_, Tags::XML_ELE_EXTENSION, old_);
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

void Translation::PlanParameters(RegressionPredictors& predictors)
{
    parameters_.push_back({kIntercept, old_, {}});
    for (const RegressionTable& table : tables_) {
        std::map<std::string, size_t> repeats;
        std::vector<Beta> betas;
        for (const RegressionTerm& term : table.terms) {
            const auto cells = predictors.CellsOf(term);
            if (cells) betas.push_back({ParameterOf(*cells, term.element, repeats), &term});
        }
        betas_.push_back(std::move(betas));
    }
}

// The parameter of a product. Tables share it; a table that has it again, which adds, takes
// another.
size_t Translation::ParameterOf(const std::vector<RegressionPredictors::Cell>& cells,
                                Element element, std::map<std::string, size_t>& repeats)
{
    std::vector<std::string> factors;
    factors.reserve(cells.size());
    for (const auto& cell : cells) factors.push_back(cell.predictor + "\n" + cell.value);
    std::sort(factors.begin(), factors.end());
    std::string key = fmt::format("{}", fmt::join(factors, "\n"));
    key += fmt::format("\n{}", repeats[key]++);
    const auto known = parameterOf_.find(key);
    if (known != parameterOf_.end()) return known->second;

    std::string name;
    for (const auto& cell : cells) {
        name += (name.empty() ? "" : " * ") + cell.predictor;
        if (cell.isFactor) {
            name += fmt::format("[{}]", cell.value);
        } else if (cell.value != "1") {
            name += "^" + cell.value;
        }
    }
    while (!parameterNames_.insert(name).second) name += "'";
    parameters_.push_back({name, element, cells});
    parameterOf_.emplace(key, parameters_.size() - 1);
    return parameters_.size() - 1;
}

void Translation::WriteLists(const RegressionPredictors& predictors)
{
    const Element list = Add(model_, Tags::XML_ELE_PARAM_LIST, old_);
    for (const Parameter& parameter : parameters_) {
        Add(list, Tags::XML_ELE_PARAM, parameter.element)
            .SetText(Tags::XML_ATT_PARAM_NAME, parameter.name);
    }
    const auto write = [&](const std::string& tag, const auto& names) {
        if (names.empty()) return;
        const Element predictorList = Add(model_, tag, old_);
        for (const RegressionPredictors::Predictor& predictor : names) {
            Add(predictorList, Tags::XML_ELE_PREDICTOR, predictor.element)
                .SetText(Tags::XML_ATT_PRED_NAME, predictor.name);
        }
    };
    write(Tags::XML_ELE_FAC_LIST, predictors.Factors());
    write(Tags::XML_ELE_COV_LIST, predictors.Covariates());
    const Element matrix = Add(model_, Tags::XML_ELE_PP_MATRIX, old_);
    for (const Parameter& parameter : parameters_) {
        for (const auto& [predictor, value, isFactor] : parameter.cells) {
            const Element cell = Add(matrix, Tags::XML_ELE_PP_CELL, parameter.element);
            cell.SetText(Tags::XML_ATT_PPC_VALUE, value);
            cell.SetText(Tags::XML_ATT_PPC_PREDNAME, predictor);
            cell.SetText(Tags::XML_ATT_PPC_PARAMNAME, parameter.name);
        }
    }
}

void Translation::WriteBetas()
{
    matrix_ = Add(model_, Tags::XML_ELE_PARAM_MATRIX, old_);
    for (const RegressionTable& table : tables_) {
        WriteBeta(parameters_.front(), table.intercept, table.element, table.category);
    }
    if (form_->counts == Counts::SharedSlopes) {
        WriteSlopes(0, "");  // one beta serves all categories
        return;
    }
    for (size_t i = 0; i < tables_.size(); ++i) WriteSlopes(i, tables_[i].category);
}

void Translation::WriteSlopes(size_t table, const std::string& category)
{
    std::vector<bool> isWritten(parameters_.size(), false);
    isWritten.front() = true;
    for (const Beta& beta : betas_[table]) {
        WriteBeta(parameters_[beta.parameter], beta.term->coefficient, beta.term->element,
                  category);
        isWritten[beta.parameter] = true;
    }
    // Terms of other tables have no part here, which is said as long as it doesn't take more than
    // the tables themselves.
    if (parameters_.size() > kMostCells / tables_.size()) return;
    for (size_t p = 0; p < parameters_.size(); ++p) {
        if (isWritten[p]) continue;
        WriteBeta(parameters_[p], "0", tables_[table].element, category)
            .SetText(Tags::XML_ATT_PC_DF, "0");
    }
}

Element Translation::WriteBeta(const Parameter& parameter, const std::string& beta, Element source,
                               const std::string& category)
{
    const Element cell = Add(matrix_, Tags::XML_ELE_PCELL, source);
    if (form_->shape != Shape::Number && !category.empty()) {
        cell.SetText(Tags::XML_ATT_PC_TARGET_CAT, TargetText(category));
    }
    cell.SetText(Tags::XML_ATT_PC_PARAMNAME, parameter.name);
    cell.SetText(Tags::XML_ATT_PC_BETA, beta);
    return cell;
}

// The reader compares numbers in their own spelling.
std::string Translation::TargetText(const std::string& category) const
{
    if (!IsNumericType(target_.Text(kDataType))) return category;
    return NumericValue(category).GetString();
}

}  // namespace

std::optional<Change> TranslateRegressionModel(Element root)
{
    const Element model = root.Child(kRegressionModel);
    if (!model || ModelElement(root)) return std::nullopt;
    for (const Element child : root.Children()) {
        if (child == model || !IsOtherModel(child.Tag())) continue;
        RefuseAt(child.Dom(), kModelBeside, child.Tag().c_str());
    }
    return Translation(root, model).Translate();
}

}  // namespace MCVelscore_850
