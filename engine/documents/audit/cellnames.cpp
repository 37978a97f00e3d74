// Names that cells use: of parameters, predictors and categories.

#include <string>
#include <unordered_set>
#include <vector>

#include "engine/documents/audit/cellchecks.h"
#include "engine/documents/audit/nearnames.h"
#include "engine/documents/treefields.h"
#include "host/documents/pmmlmodeltags.h"
#include "host/documents/zeltmodeltags.h"
#include "host/values/numbertext.h"

namespace MCVelscore_850 {

namespace {

using Tags = PMMLModelTags;
using Old = ZELTModelTags;
using Field = DocumentFacts::Field;
using Design = DocumentFacts::Design;

constexpr uint32_t kNone = NameIndex::kNone;

const std::string& Word(const DocumentFacts& facts, const std::string& published,
                        const std::string& older)
{
    return facts.older ? older : published;
}

// A name that isn't there at all is the reader's to refuse, which knows what is required; in the
// older form it is the empty one.
bool IsGiven(const DocumentFacts& facts, Element element, const std::string& attribute)
{
    return facts.older || element.Has(attribute);
}

// The categories of fields, each with a table once it is asked for.
class Categories {
public:
    explicit Categories(const DocumentFacts& facts) : facts_(facts), tables_(facts.fields.size()) {}

    bool Has(const Field& field, const std::string& text)
    {
        Table& keys = tables_[static_cast<size_t>(&field - facts_.fields.data())];
        if (keys.empty()) keys.insert(field.categoryKeys.begin(), field.categoryKeys.end());
        return keys.contains(CategoryKey(field.dataType, text));
    }

private:
    using Table = std::unordered_set<std::string>;
    const DocumentFacts& facts_;
    std::vector<Table> tables_;
};

// The field of a factor's cell, where it says which categories there are.
const Field* ClosedFactor(const DocumentFacts& facts, const Design& cell)
{
    if (cell.predictor == kNone || !facts.predictors[cell.predictor].isFactor) return nullptr;
    const Field* field = facts.FieldOf(facts.predictors[cell.predictor]);
    return field != nullptr && field->IsClosed() ? field : nullptr;
}

// Whether a text names the column of a contrast matrix as exporters call them: a number from 1, or
// the power of a polynomial.
bool NamesColumn(const std::string& text, size_t columns)
{
    if (text == ".L" || text == ".Q" || text == ".C") return true;
    if (text.size() > 1 && text.front() == '^') return NamesColumn(text.substr(1), columns);
    int number = 0;
    return ReadInteger(text, number) == NumberText::Number && number >= 1 &&
           static_cast<size_t>(number) <= columns;
}

// The factors that list categories of which no cell names one, while all cells name columns: by
// number of the predictor.
std::vector<bool> FactorsOfColumns(const DocumentFacts& facts, Categories& categories)
{
    std::vector<bool> hasColumns(facts.predictors.size(), false);
    std::vector<bool> hasOthers(facts.predictors.size(), false);
    for (const Design& cell : facts.designs) {
        const Field* field = ClosedFactor(facts, cell);
        if (field == nullptr) continue;
        const bool isColumn = field->dataType != "boolean" && !categories.Has(*field, cell.value) &&
                              NamesColumn(cell.value, field->categories.size() - 1);
        (isColumn ? hasColumns : hasOthers)[cell.predictor] = true;
    }
    for (size_t i = 0; i < hasColumns.size(); ++i) {
        if (hasOthers[i]) hasColumns[i] = false;
    }
    return hasColumns;
}

void TellUnknownDesignCategories(const DocumentFacts& facts, RuleReport& report)
{
    NearNames names(report);
    Categories categories(facts);
    const std::vector<bool> ofColumns = FactorsOfColumns(facts, categories);
    const std::string& attribute = Word(facts, Tags::XML_ATT_PPC_VALUE, Old::XML_ATT_VALUE);
    for (const Design& cell : facts.designs) {
        const Field* field = ClosedFactor(facts, cell);
        if (field == nullptr || ofColumns[cell.predictor] ||
            !IsGiven(facts, cell.element, attribute) || categories.Has(*field, cell.value)) {
            continue;
        }
        names.Tell({.element = cell.element,
                    .attribute = attribute,
                    .found = cell.value,
                    .what = Quoted(field->name)},
                   field->categories);
    }
}

void TellUnknownTargetCategories(const DocumentFacts& facts, RuleReport& report)
{
    if (facts.target == nullptr || !facts.target->IsClosed()) return;
    Categories categories(facts);
    NearNames names(report);
    const auto tellUnknown = [&](Element cell, const std::string& attribute,
                                 const std::string& text) {
        names.Tell({.element = cell,
                    .attribute = attribute,
                    .found = text,
                    .what = Quoted(facts.target->name)},
                   facts.target->categories);
    };
    if (facts.HasEquations() || facts.IsOrdinal()) {
        const std::string& attribute =
            Word(facts, Tags::XML_ATT_PC_TARGET_CAT, Old::XML_ATT_PC_TARGET_CAT);
        for (const Design& cell : facts.designs) {
            const std::string& text = cell.targetCategory;
            if (text.empty() || categories.Has(*facts.target, text)) continue;
            tellUnknown(cell.element, attribute, text);
        }
        for (const DocumentFacts::Estimate& cell : facts.estimates) {
            const std::string& text = cell.targetCategory;
            if (text.empty() || categories.Has(*facts.target, text)) continue;
            tellUnknown(cell.element, attribute, text);
        }
    }
    if (!facts.IsMultinomial() && !facts.IsOrdinal()) return;
    std::vector<bool> isUnknown;
    for (const std::string& name : facts.covarianceCategories.Names()) {
        isUnknown.push_back(!categories.Has(*facts.target, name));
    }
    for (const DocumentFacts::Covariance& cell : facts.covariances) {
        const auto tell = [&](uint32_t category, const std::string& attribute) {
            if (category == kNone || !isUnknown[category]) return;
            tellUnknown(cell.element, attribute, facts.covarianceCategories.NameAt(category));
        };
        tell(cell.rowCategory, Tags::XML_ATT_PCC_TROW);
        tell(cell.columnCategory, Tags::XML_ATT_PCC_TCol);
    }
}

// Of the target where betas belong to categories: told as such.
bool NamesNoCategory(const DocumentFacts& facts, const std::string& category)
{
    return (facts.HasEquations() || facts.IsOrdinal()) && facts.target != nullptr &&
           facts.target->IsClosed() && !facts.target->HasCategory(category);
}

}  // namespace

void FindUnknownParameters(const DocumentFacts& facts, RuleReport& report)
{
    if (facts.parameters.empty()) return;  // their list is what the reader asks for
    NearNames names(report);
    const auto tell = [&](uint32_t parameter, Element cell, const std::string& attribute) {
        if (parameter != kNone || !IsGiven(facts, cell, attribute)) return;
        names.Tell({.element = cell, .attribute = attribute, .found = cell.Text(attribute)},
                   facts.parameterNames.Names());
    };
    const std::string& name = Word(facts, Tags::XML_ATT_PPC_PARAMNAME, Old::XML_ATT_PARAMETER_NAME);
    const std::string& row = Word(facts, Tags::XML_ATT_PCC_PROW, Old::XML_ATT_PCOV_P_ROW);
    const std::string& column = Word(facts, Tags::XML_ATT_PCC_PCOL, Old::XML_ATT_PCOV_P_COL);
    for (const auto& cell : facts.designs) tell(cell.parameter, cell.element, name);
    for (const auto& cell : facts.estimates) tell(cell.parameter, cell.element, name);
    for (const auto& cell : facts.covariances) {
        tell(cell.row, cell.element, row);
        tell(cell.column, cell.element, column);
    }
}

void FindUnknownPredictors(const DocumentFacts& facts, RuleReport& report)
{
    NearNames names(report);
    const std::string& name = Word(facts, Tags::XML_ATT_PPC_PREDNAME, Old::XML_ATT_PP_PREDICTOR);
    for (const Design& cell : facts.designs) {
        if (cell.predictor != kNone || !IsGiven(facts, cell.element, name)) continue;
        names.Tell({.element = cell.element, .attribute = name, .found = cell.element.Text(name)},
                   facts.predictorNames.Names());
    }
}

void FindUnknownCategories(const DocumentFacts& facts, RuleReport& report)
{
    TellUnknownDesignCategories(facts, report);
    TellUnknownTargetCategories(facts, report);
}

void FindContrastsAsCategories(const DocumentFacts& facts, RuleReport& report)
{
    NearNames names(report);
    Categories categories(facts);
    std::vector<bool> ofColumns = FactorsOfColumns(facts, categories);
    const std::string& attribute = Word(facts, Tags::XML_ATT_PPC_VALUE, Old::XML_ATT_VALUE);
    for (const Design& cell : facts.designs) {
        if (cell.predictor == kNone || !ofColumns[cell.predictor]) continue;
        ofColumns[cell.predictor] = false;  // told once
        names.Tell({.element = cell.element,
                    .attribute = attribute,
                    .found = cell.value,
                    .what = Quoted(facts.predictors[cell.predictor].name)},
                   ClosedFactor(facts, cell)->categories);
    }
}

void FindDesignsOfCategories(const DocumentFacts& facts, RuleReport& report)
{
    const std::string why =
        facts.HasEquations() ? "cells of one equation differ, or leave one of its betas without any"
                             : "categories have no equations of their own in this family";
    for (const Design& cell : facts.designs) {
        if (cell.targetCategory.empty() || NamesNoCategory(facts, cell.targetCategory)) continue;
        report({.element = cell.element,
                .attribute = Tags::XML_ATT_PC_TARGET_CAT,
                .found = cell.targetCategory,
                .what = why});
    }
}

}  // namespace MCVelscore_850
