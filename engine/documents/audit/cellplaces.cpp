// Cells that have to go together: for one place, in the two triangles, on the diagonal.

#include <algorithm>
#include <string>
#include <vector>

#include "engine/documents/audit/cellchecks.h"
#include "engine/documents/audit/nearnames.h"
#include "engine/documents/treefields.h"
#include "host/documents/pmmlmodeltags.h"
#include "host/documents/zeltmodeltags.h"

namespace MCVelscore_850 {

namespace {

using Tags = PMMLModelTags;
using Old = ZELTModelTags;

constexpr uint32_t kNone = NameIndex::kNone;

const std::string& NameOf(const NameIndex& names, uint32_t number)
{
    static const std::string kUnknown;
    return number == kNone ? kUnknown : names.NameAt(number);
}

// Which place a cell stands for, and the attribute with its number.
struct Spoken {
    std::string place;
    const std::string& attribute;
    std::string advice{};  // beside that of the rule
};

Spoken SpokenDesign(const DocumentFacts& facts, uint32_t number)
{
    const DocumentFacts::Design& cell = facts.designs[number];
    const bool isFactor = facts.predictors[cell.predictor].isFactor;
    return {"parameter " + Quoted(facts.parameterNames.NameAt(cell.parameter)) + " and predictor " +
                Quoted(facts.predictorNames.NameAt(cell.predictor)),
            Tags::XML_ATT_PPC_VALUE,
            isFactor ? "" : " A square of a covariate is one cell with the value 2."};
}

Spoken SpokenEstimate(const DocumentFacts& facts, uint32_t number)
{
    const DocumentFacts::Estimate& cell = facts.estimates[number];
    std::string place = "parameter " + Quoted(facts.parameterNames.NameAt(cell.parameter));
    if (!cell.targetCategory.empty()) place += " and category " + Quoted(cell.targetCategory);
    return {place, Tags::XML_ATT_PC_BETA};
}

Spoken SpokenCovariance(const DocumentFacts& facts, uint32_t number)
{
    const DocumentFacts::Covariance& cell = facts.covariances[number];
    const auto side = [&](uint32_t parameter, uint32_t category) {
        std::string text = Quoted(facts.parameterNames.NameAt(parameter));
        if (category == kNone) return text;
        return text + " of " + Quoted(NameOf(facts.covarianceCategories, category));
    };
    return {"parameters " + side(cell.row, cell.rowCategory) + " and " +
                side(cell.column, cell.columnCategory),
            Tags::XML_ATT_PCC_VALUE};
}

struct Section {
    std::vector<RepeatedCell> DocumentFacts::*repeated;
    Element (*element)(const DocumentFacts& facts, uint32_t number);
    Spoken (*spoken)(const DocumentFacts& facts, uint32_t number);
};

const Section kDesigns{
    &DocumentFacts::repeatedDesigns,
    [](const DocumentFacts& facts, uint32_t number) { return facts.designs[number].element; },
    SpokenDesign};
const Section kEstimates{
    &DocumentFacts::repeatedEstimates,
    [](const DocumentFacts& facts, uint32_t number) { return facts.estimates[number].element; },
    SpokenEstimate};
const Section kCovariances{
    &DocumentFacts::repeatedCovariances,
    [](const DocumentFacts& facts, uint32_t number) { return facts.covariances[number].element; },
    SpokenCovariance};

// Tells the cells of a section that repeat an earlier one in such a way.
void TellRepeated(const DocumentFacts& facts, const Section& section, bool agrees, bool mirrored,
                  RuleReport& report)
{
    size_t told = 0;
    for (const RepeatedCell& cell : facts.*section.repeated) {
        if (cell.agrees != agrees || cell.mirrored != mirrored) continue;
        Detail detail{.element = section.element(facts, cell.again)};
        if (agrees) detail.mend.action = Mend::Action::EraseElement;
        if (++told <= Findings::kKeptOfRule) {
            const Spoken spoken = section.spoken(facts, cell.again);
            detail.attribute = spoken.attribute;
            detail.found = detail.element.Text(spoken.attribute);
            detail.expected = Quoted(section.element(facts, cell.first).Text(spoken.attribute));
            detail.what = spoken.place;
            detail.note = spoken.advice;
        }
        report(detail);
    }
}

}  // namespace

void FindContradictingCells(const DocumentFacts& facts, RuleReport& report)
{
    for (const Section& section : {kDesigns, kEstimates, kCovariances}) {
        TellRepeated(facts, section, false, false, report);
    }
}

void FindRepeatedCells(const DocumentFacts& facts, RuleReport& report)
{
    for (const Section& section : {kDesigns, kEstimates, kCovariances}) {
        TellRepeated(facts, section, true, false, report);
    }
}

void FindAsymmetricCovariances(const DocumentFacts& facts, RuleReport& report)
{
    TellRepeated(facts, kCovariances, false, true, report);
}

void FindNegativeVariances(const DocumentFacts& facts, RuleReport& report)
{
    for (const DocumentFacts::Covariance& cell : facts.covariances) {
        if (cell.row == kNone || cell.row != cell.column ||
            cell.rowCategory != cell.columnCategory || !cell.value || !(*cell.value < 0.0)) {
            continue;
        }
        report({.element = cell.element,
                .attribute = Tags::XML_ATT_PCC_VALUE,
                .found = cell.element.Text(Tags::XML_ATT_PCC_VALUE),
                .what = Quoted(facts.parameterNames.NameAt(cell.row))});
    }
}

// Where covariances are by category a document may give some of them alone: no score depends on
// them.
void FindCovariancesWithoutVariance(const DocumentFacts& facts, RuleReport& report)
{
    if (facts.IsMultinomial() || facts.IsOrdinal()) return;
    std::vector<bool> isSettled(facts.parameters.size(), false);
    for (const DocumentFacts::Covariance& cell : facts.covariances) {
        // A stranger's name, told as such, may be that of the variance.
        if (cell.row == kNone || cell.column == kNone) return;
        if (cell.row == cell.column) isSettled[cell.row] = true;
    }
    const std::string& row = facts.older ? Old::XML_ATT_PCOV_P_ROW : Tags::XML_ATT_PCC_PROW;
    const std::string& column = facts.older ? Old::XML_ATT_PCOV_P_COL : Tags::XML_ATT_PCC_PCOL;
    for (const DocumentFacts::Covariance& cell : facts.covariances) {
        // A covariance of 0 is what a parameter without error has.
        if (cell.value == 0.0) continue;
        const auto tell = [&](uint32_t parameter, const std::string& attribute) {
            if (isSettled[parameter]) return;
            isSettled[parameter] = true;  // told once
            report({.element = cell.element,
                    .attribute = attribute,
                    .found = facts.parameterNames.NameAt(parameter)});
        };
        tell(cell.row, row);
        tell(cell.column, column);
    }
}

void FindBetasOfReference(const DocumentFacts& facts, RuleReport& report)
{
    if (!facts.HasEquations() || facts.Is(kConditional) || facts.target == nullptr) return;
    const std::string reference = facts.OptionText(Tags::XML_ATT_TARGETREFCATEGORY);
    if (reference.empty()) return;
    const std::string key = CategoryKey(facts.target->dataType, reference);
    const auto isOfReference = [&](const DocumentFacts::Estimate& cell) {
        return CategoryKey(facts.target->dataType, cell.targetCategory) == key;
    };
    // In a model with one equation the attribute may name the very category of that equation.
    if (!facts.IsMultinomial() &&
        std::none_of(facts.estimates.begin(), facts.estimates.end(), [&](const auto& cell) {
            return !isOfReference(cell) && facts.target->HasCategory(cell.targetCategory);
        })) {
        return;
    }
    for (const DocumentFacts::Estimate& cell : facts.estimates) {
        if (!cell.beta || *cell.beta == 0.0 || !isOfReference(cell)) continue;
        report({.element = cell.element,
                .attribute = Tags::XML_ATT_PC_BETA,
                .found = cell.element.Text(Tags::XML_ATT_PC_BETA),
                .what = Quoted(cell.targetCategory)});
    }
}

}  // namespace MCVelscore_850
