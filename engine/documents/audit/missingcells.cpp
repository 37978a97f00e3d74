// What no cell says: parameters and predictors that are listed and nowhere used.

#include <algorithm>
#include <map>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "engine/documents/audit/cellchecks.h"
#include "engine/documents/audit/nearnames.h"
#include "engine/documents/names.h"
#include "engine/documents/treefields.h"
#include "host/documents/pmmlmodeltags.h"
#include "host/documents/zeltmodeltags.h"

namespace MCVelscore_850 {

namespace {

using Tags = PMMLModelTags;
using Old = ZELTModelTags;
using Field = DocumentFacts::Field;
using Parameter = DocumentFacts::Parameter;
using Predictor = DocumentFacts::Predictor;

constexpr uint32_t kNone = NameIndex::kNone;
const std::string kConstant = "(Constant)";

std::string Lower(std::string text)
{
    std::transform(text.begin(), text.end(), text.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; });
    return text;
}

// A linear regression pairs parameters with predictors by position: the older form always, the
// published one where no cell says otherwise.
bool IsPairedByPosition(const DocumentFacts& facts)
{
    return facts.Is(kLinear) && (facts.older || facts.designs.empty());
}

bool NamesConstant(const std::string& text)
{
    std::string word = Lower(text);
    if (word.size() > 1 && word.front() == '(' && word.back() == ')') {
        word = word.substr(1, word.size() - 2);
    }
    return word == "constant" || word == "intercept";
}

bool IsNamedConstant(const Parameter& parameter)
{
    return NamesConstant(parameter.name) || NamesConstant(parameter.label);
}

// The uses of variables that the model element names: such a one may be listed as a predictor too.
std::unordered_set<std::string> VariablesOfOptions(const DocumentFacts& facts)
{
    const std::string* const kOptions[] = {
        &Tags::XML_VAL_RM_EXT_NAME_OFFSETVAR,        &Tags::XML_VAL_RM_EXT_NAME_TRIALVAR,
        &Tags::XML_EXT_NAME_COXREG_ENDTIMEVARIABLE,  &Tags::XML_EXT_NAME_COXREG_STARTTIMEVARIABLE,
        &Tags::XML_EXT_NAME_COXREG_SUBJECT_VARIABLE, &Tags::XML_ATT_BASELINESTRATAVARIABLE};
    std::unordered_set<std::string> variables;
    for (const std::string* option : kOptions) variables.insert(facts.OptionText(*option));
    variables.insert(facts.OptionText("statusVariable"));
    return variables;
}

// What belongs to what, as far as cells and names tell.
class Terms {
public:
    explicit Terms(const DocumentFacts& facts)
        : facts_(facts),
          isUsed_(facts.predictors.size(), false),
          hasBeta_(facts.parameters.size(), false)
    {
        for (const DocumentFacts::Design& cell : facts.designs) {
            if (cell.predictor != kNone) isUsed_[cell.predictor] = true;
        }
        for (const DocumentFacts::Estimate& cell : facts.estimates) {
            if (cell.parameter != kNone && cell.beta && *cell.beta != 0.0) {
                hasBeta_[cell.parameter] = true;
            }
        }
        const auto elsewhere = VariablesOfOptions(facts);
        for (uint32_t i = 0; i < facts.predictors.size(); ++i) {
            if (elsewhere.contains(facts.predictors[i].name)) isUsed_[i] = true;
        }
    }

    bool IsUsed(uint32_t predictor) const { return isUsed_[predictor]; }

    // Parameters that count in every case alike, the constant not among them.
    std::vector<uint32_t> WithoutCell() const
    {
        std::vector<uint32_t> without;
        for (uint32_t i = 0; i < facts_.parameters.size(); ++i) {
            if (hasBeta_[i] && !facts_.HasDesign(i)) without.push_back(i);
        }
        const auto constant = Constant(without);
        if (constant != without.end()) without.erase(constant);
        return without;
    }

    // The predictor that a parameter is the truth of: "smoker" of "smokerTRUE". None where it has
    // cells.
    uint32_t LogicalOf(const Parameter& parameter) const
    {
        for (const std::string* text : {&parameter.name, &parameter.label}) {
            const uint32_t predictor = Splitting(*text, [&](uint32_t i, const std::string& ending) {
                return !isUsed_[i] && (IsTruth(ending) || IsOneOfTwo(i, ending));
            });
            if (predictor != kNone) return predictor;
        }
        return kNone;
    }

    // Predictors that LogicalOf() answers for some parameter without cell.
    std::vector<bool> LogicalPredictors() const
    {
        std::vector<bool> logical(facts_.predictors.size(), false);
        for (const uint32_t i : WithoutCell()) {
            const uint32_t predictor = LogicalOf(facts_.parameters[i]);
            if (predictor != kNone) logical[predictor] = true;
        }
        return logical;
    }

private:
    using Numbers = std::vector<uint32_t>;

    // The one that is named so; else, where there is one and its name is that of no term, the
    // first. A Cox model has none.
    Numbers::const_iterator Constant(const Numbers& without) const
    {
        const auto named = std::find_if(without.begin(), without.end(), [&](uint32_t i) {
            return IsNamedConstant(facts_.parameters[i]);
        });
        if (named != without.end()) return named;
        for (uint32_t i = 0; i < facts_.parameters.size(); ++i) {
            // There is one, with a beta of 0.
            if (!facts_.HasDesign(i) && IsNamedConstant(facts_.parameters[i])) return named;
        }
        if (facts_.IsCox()) return without.end();
        return std::find_if(without.begin(), without.end(), [&](uint32_t i) {
            const Parameter& parameter = facts_.parameters[i];
            return LogicalOf(parameter) == kNone && !NamesTerm(parameter.name) &&
                   !NamesTerm(parameter.label);
        });
    }

    // The predictor with whose name a text begins, where it and the rest are of the kind asked for.
    template <class Kind>
    uint32_t Splitting(const std::string& text, Kind isOfKind) const
    {
        constexpr size_t kLongestEnding = 64;  // names may be as long as a tag
        for (size_t ending = 0; ending < std::min(text.size(), kLongestEnding); ++ending) {
            const size_t length = text.size() - ending;
            const uint32_t predictor =
                facts_.predictorNames.Find(std::string_view(text).substr(0, length));
            if (predictor != kNone && isOfKind(predictor, text.substr(length))) return predictor;
        }
        return kNone;
    }

    // As exporters call a term: its predictor, and of a factor the category behind it.
    bool NamesTerm(const std::string& text) const
    {
        return Splitting(text, [&](uint32_t predictor, const std::string& ending) {
                   return ending.empty() || HasCategory(predictor, ending);
               }) != kNone;
    }

    static bool IsTruth(const std::string& ending)
    {
        return Lower(ending) == "true" || ending == "T";
    }

    bool HasCategory(uint32_t predictor, const std::string& text) const
    {
        const Field* field = facts_.FieldOf(facts_.predictors[predictor]);
        return field != nullptr && field->HasCategory(text);
    }

    bool IsOneOfTwo(uint32_t predictor, const std::string& ending) const
    {
        const Field* field = facts_.FieldOf(facts_.predictors[predictor]);
        return field != nullptr && field->categories.size() == 2 && HasCategory(predictor, ending);
    }

    const DocumentFacts& facts_;
    std::vector<bool> isUsed_;
    std::vector<bool> hasBeta_;
};

// Whether a name says that its values are an offset.
bool SaysOffset(const DocumentFacts& facts, const Predictor& predictor)
{
    const auto says = [](const std::string& text) {
        return Lower(text).find("offset") != std::string::npos;
    };
    const Field* field = facts.FieldOf(predictor);
    return says(predictor.name) || (field != nullptr && says(field->label));
}

bool HasOffset(const DocumentFacts& facts)
{
    return !facts.OptionText(Tags::XML_VAL_RM_EXT_NAME_OFFSETVAR).empty() ||
           !facts.OptionText(Tags::XML_ATT_RM_EXT_NAME_OFFSET_VALUE).empty();
}

// Whether cells say which terms there are. Where one names a stranger, which is told as such, a
// term that seems to have no cell is most likely its own.
bool TellsTerms(const DocumentFacts& facts)
{
    return !IsPairedByPosition(facts) && !facts.designs.empty() &&
           std::none_of(facts.designs.begin(), facts.designs.end(), [](const auto& cell) {
               return cell.parameter == kNone || cell.predictor == kNone;
           });
}

// The predictors that no cell uses and that aren't told as logical ones.
std::vector<uint32_t> UnusedPredictors(const DocumentFacts& facts)
{
    std::vector<uint32_t> unused;
    if (!TellsTerms(facts)) return unused;
    const Terms terms(facts);
    const std::vector<bool> logical = terms.LogicalPredictors();
    for (uint32_t i = 0; i < facts.predictors.size(); ++i) {
        if (!terms.IsUsed(i) && !logical[i]) unused.push_back(i);
    }
    return unused;
}

bool IsOffset(const DocumentFacts& facts, uint32_t predictor)
{
    return !HasOffset(facts) && SaysOffset(facts, facts.predictors[predictor]);
}

std::string KindOf(const Predictor& predictor)
{
    return predictor.isFactor ? "factor" : "covariate";
}

// What a parameter has of betas.
struct Estimated {
    size_t cells = 0;
    bool isAliased = false;  ///< some cell has a df of 0
};

std::vector<Estimated> EstimatesOf(const DocumentFacts& facts)
{
    std::vector<Estimated> estimates(facts.parameters.size());
    for (const DocumentFacts::Estimate& cell : facts.estimates) {
        if (cell.parameter == kNone) continue;
        ++estimates[cell.parameter].cells;
        if (cell.df == 0.0) estimates[cell.parameter].isAliased = true;
    }
    return estimates;
}

// Factors of which some parameter has a beta: another of their levels may do without.
std::vector<bool> EstimatedFactors(const DocumentFacts& facts,
                                   const std::vector<Estimated>& estimates)
{
    std::vector<bool> estimated(facts.predictors.size(), false);
    for (const DocumentFacts::Design& cell : facts.designs) {
        if (cell.parameter == kNone || cell.predictor == kNone) continue;
        if (facts.predictors[cell.predictor].isFactor && estimates[cell.parameter].cells > 0) {
            estimated[cell.predictor] = true;
        }
    }
    return estimated;
}

// The levels of a factor that have no beta of their own: one is the reference, of several some beta
// is missing.
class ReferenceLevels {
public:
    ReferenceLevels(const DocumentFacts& facts, const std::vector<Estimated>& estimates)
        : factorOf_(facts.parameters.size(), kNone), without_(facts.predictors.size(), 0)
    {
        std::vector<size_t> cells(facts.parameters.size(), 0);
        for (const DocumentFacts::Design& cell : facts.designs) {
            if (cell.parameter == kNone || cell.predictor == kNone) continue;
            const bool isOnlyOne = ++cells[cell.parameter] == 1;
            const bool isLevel = isOnlyOne && facts.predictors[cell.predictor].isFactor;
            factorOf_[cell.parameter] = isLevel ? cell.predictor : kNone;
        }
        // Levels that the field lists and no parameter has count too.
        for (size_t i = 0; i < without_.size(); ++i) {
            const Field* field = facts.FieldOf(facts.predictors[i]);
            if (field != nullptr) without_[i] = field->categories.size();
        }
        for (size_t p = 0; p < factorOf_.size(); ++p) {
            if (factorOf_[p] == kNone) continue;
            const Field* field = facts.FieldOf(facts.predictors[factorOf_[p]]);
            size_t& without = without_[factorOf_[p]];
            if (field == nullptr || !field->IsClosed()) {
                if (estimates[p].cells == 0) ++without;
            } else if (estimates[p].cells > 0 && without > 0) {
                --without;
            }
        }
    }

    // True for a parameter of one level alone whose factor has several such levels.
    bool AreSeveral(uint32_t parameter) const
    {
        return factorOf_[parameter] != kNone && without_[factorOf_[parameter]] > 1;
    }

private:
    std::vector<uint32_t> factorOf_;  // of a parameter that is one level of one factor
    std::vector<size_t> without_;     // by predictor
};

// In a multinomial model, the categories for which a parameter has no beta while it has one for
// others; a category whose betas are all 0 is the reference.
class Gaps {
public:
    explicit Gaps(const DocumentFacts& facts) : byParameter_(facts.parameters.size())
    {
        if (!facts.IsMultinomial() || facts.target == nullptr) return;
        const auto keyOf = [&](const DocumentFacts::Estimate& cell) {
            return CategoryKey(facts.target->dataType, cell.targetCategory);
        };
        const std::unordered_set<std::string> known(facts.target->categoryKeys.begin(),
                                                    facts.target->categoryKeys.end());
        for (const DocumentFacts::Estimate& cell : facts.estimates) {
            if (!cell.beta || *cell.beta == 0.0) continue;
            // A category that isn't there is told as such.
            if (!known.empty() && !known.contains(keyOf(cell))) continue;
            if (numbers_.emplace(keyOf(cell), categories_.size()).second) {
                categories_.push_back(cell.targetCategory);
            }
        }
        for (const DocumentFacts::Estimate& cell : facts.estimates) {
            const auto number = numbers_.find(keyOf(cell));
            if (number == numbers_.end() || cell.parameter == kNone) continue;
            byParameter_[cell.parameter].insert(number->second);
        }
    }

    bool Has(uint32_t parameter) const
    {
        return byParameter_[parameter].size() < categories_.size();
    }
    std::vector<std::string> Of(uint32_t parameter) const
    {
        std::vector<std::string> gaps;
        for (size_t i = 0; i < categories_.size(); ++i) {
            if (!byParameter_[parameter].contains(i)) gaps.push_back(categories_[i]);
        }
        return gaps;
    }

private:
    std::unordered_map<std::string, size_t> numbers_;
    std::vector<std::string> categories_;
    std::vector<std::unordered_set<size_t>> byParameter_;
};

// The parameter whose cells are the thresholds: the one without predictors.
uint32_t ThresholdParameter(const DocumentFacts& facts)
{
    for (uint32_t i = 0; i < facts.parameters.size(); ++i) {
        if (!facts.HasDesign(i)) return i;
    }
    return kNone;
}

// A section that has to hold cells, or the model where it isn't there at all.
void TellEmpty(const DocumentFacts& facts, const std::string& section, const std::string& what,
               RuleReport& report)
{
    const Element element = facts.model.Child(section);
    report({.element = element ? element : facts.model,
            .expected = section,
            .what = (element ? "holds no cell: " : "is missing: ") + what});
}

}  // namespace

void FindEmptyMatrices(const DocumentFacts& facts, RuleReport& report)
{
    if (!facts.model || facts.predictors.empty()) return;
    if (facts.designs.empty() && !facts.Is(kLinear)) {
        TellEmpty(facts, facts.older ? Old::XML_ELE_PP_MATRIX : Tags::XML_ELE_PP_MATRIX,
                  "no parameter would depend on a predictor", report);
    }
    if (facts.estimates.empty()) {
        TellEmpty(facts, facts.older ? Old::XML_ELE_P_TABLE : Tags::XML_ELE_PARAM_MATRIX,
                  "every beta would be 0", report);
    }
}

void FindUnpairedParameters(const DocumentFacts& facts, RuleReport& report)
{
    if (!IsPairedByPosition(facts)) return;
    const bool hasConstant = facts.parameterNames.Has(kConstant);
    const size_t slopes = facts.parameters.size() - (hasConstant ? 1 : 0);
    const size_t predictors = facts.predictors.size();
    // In the older form one parameter behind the slopes is the constant, whatever its name.
    if (slopes == predictors || (facts.older && !hasConstant && slopes == predictors + 1)) return;
    const std::string& list = facts.older ? Old::XML_ELE_PARAM_LIST : Tags::XML_ELE_PARAM_LIST;
    report({.element = facts.model.Child(list),
            .expected = std::to_string(predictors),
            .what = std::to_string(slopes)});
}

void FindCellsAgainstPosition(const DocumentFacts& facts, RuleReport& report)
{
    if (!facts.older || !facts.Is(kLinear)) return;
    // The constant counts as the last one wherever it stands.
    const uint32_t constant = facts.parameterNames.Find(kConstant);
    for (const DocumentFacts::Design& cell : facts.designs) {
        if (cell.parameter == kNone || cell.predictor == kNone) continue;
        const bool isConstant = cell.parameter == constant;
        const uint32_t position = cell.parameter - (cell.parameter > constant ? 1 : 0);
        if (!isConstant && position == cell.predictor &&
            cell.element.Number(Old::XML_ATT_VALUE) == 1.0) {
            continue;
        }
        report({.element = cell.element,
                .attribute = Old::XML_ATT_PP_PREDICTOR,
                .found = facts.predictorNames.NameAt(cell.predictor),
                .what = Quoted(facts.parameterNames.NameAt(cell.parameter))});
    }
}

void FindLogicalCovariates(const DocumentFacts& facts, RuleReport& report)
{
    if (!TellsTerms(facts)) return;
    const Terms terms(facts);
    for (const uint32_t i : terms.WithoutCell()) {
        const Parameter& parameter = facts.parameters[i];
        const uint32_t predictor = terms.LogicalOf(parameter);
        if (predictor == kNone) continue;
        report({.element = parameter.element,
                .attribute = Tags::XML_ATT_PARAM_NAME,
                .found = parameter.name,
                .what = Quoted(facts.predictors[predictor].name)});
    }
}

void FindParametersWithoutCell(const DocumentFacts& facts, RuleReport& report)
{
    if (!TellsTerms(facts)) return;
    const Terms terms(facts);
    for (const uint32_t i : terms.WithoutCell()) {
        const Parameter& parameter = facts.parameters[i];
        if (terms.LogicalOf(parameter) != kNone) continue;
        report({.element = parameter.element,
                .attribute = Tags::XML_ATT_PARAM_NAME,
                .found = parameter.name});
    }
}

void FindOffsetsAsCovariates(const DocumentFacts& facts, RuleReport& report)
{
    for (const uint32_t i : UnusedPredictors(facts)) {
        if (!IsOffset(facts, i)) continue;
        report({.element = facts.predictors[i].element,
                .attribute = Tags::XML_ATT_PRED_NAME,
                .found = facts.predictors[i].name,
                .what = KindOf(facts.predictors[i])});
    }
}

void FindUnusedPredictors(const DocumentFacts& facts, RuleReport& report)
{
    for (const uint32_t i : UnusedPredictors(facts)) {
        if (IsOffset(facts, i)) continue;
        report({.element = facts.predictors[i].element,
                .attribute = Tags::XML_ATT_PRED_NAME,
                .found = facts.predictors[i].name,
                .what = KindOf(facts.predictors[i]),
                .note = facts.older ? ""
                                    : " Should it be an offset, name it as offsetVariable of "
                                      "the model."});
    }
}

void FindParametersWithoutBeta(const DocumentFacts& facts, RuleReport& report)
{
    if (facts.estimates.empty()) return;
    const std::vector<Estimated> estimates = EstimatesOf(facts);
    const std::vector<bool> factors = EstimatedFactors(facts, estimates);
    std::vector<bool> isLevel(facts.parameters.size(), false);
    for (const DocumentFacts::Design& cell : facts.designs) {
        if (cell.parameter == kNone || cell.predictor == kNone) continue;
        if (factors[cell.predictor]) isLevel[cell.parameter] = true;
    }
    const ReferenceLevels references(facts, estimates);
    const Gaps gaps(facts);
    size_t told = 0;
    for (uint32_t i = 0; i < facts.parameters.size(); ++i) {
        const Parameter& parameter = facts.parameters[i];
        if (parameter.implied || estimates[i].isAliased) continue;
        const bool hasNone = estimates[i].cells == 0;
        const bool mayLackIt = facts.IsOrdinal() || (isLevel[i] && !references.AreSeveral(i));
        if (hasNone ? mayLackIt : !gaps.Has(i)) continue;
        Detail detail{.element = parameter.element,
                      .attribute = Tags::XML_ATT_PARAM_NAME,
                      .found = parameter.name};
        if (!hasNone && ++told <= Findings::kKeptOfRule) {
            detail.what = " for category " + Listed(gaps.Of(i));
        }
        report(detail);
    }
}

// Betas of 0 may be left out, all but the constant's: a category with that one alone is as it
// should be, unless another one lacks just it.
void FindStrayBetas(const DocumentFacts& facts, RuleReport& report)
{
    // Where the reference category is named, its betas are told as such.
    if (!facts.IsMultinomial() || facts.target == nullptr ||
        !facts.OptionText(Tags::XML_ATT_TARGETREFCATEGORY).empty()) {
        return;
    }
    std::map<std::string, std::vector<const DocumentFacts::Estimate*>> byCategory;
    for (const DocumentFacts::Estimate& cell : facts.estimates) {
        if (cell.parameter == kNone || !facts.target->HasCategory(cell.targetCategory)) continue;
        byCategory[CategoryKey(facts.target->dataType, cell.targetCategory)].push_back(&cell);
    }
    size_t most = 0;
    for (const auto& [category, cells] : byCategory) most = std::max(most, cells.size());
    const auto lacks = [](const auto& cells, uint32_t parameter) {
        return std::none_of(cells.begin(), cells.end(),
                            [&](const auto* cell) { return cell->parameter == parameter; });
    };
    for (const auto& [category, cells] : byCategory) {
        const DocumentFacts::Estimate& only = *cells.front();
        if (cells.size() != 1 || most < 2 || !only.beta || *only.beta == 0.0) continue;
        const bool isMissedElsewhere =
            std::any_of(byCategory.begin(), byCategory.end(), [&](const auto& other) {
                return other.second.size() > 1 && lacks(other.second, only.parameter);
            });
        if (!facts.HasDesign(only.parameter) && !isMissedElsewhere) continue;
        report({.element = only.element,
                .attribute = Tags::XML_ATT_PC_TARGET_CAT,
                .found = only.targetCategory,
                .what = Quoted(facts.parameters[only.parameter].name)});
    }
}

void FindThresholdsWithoutBeta(const DocumentFacts& facts, RuleReport& report)
{
    if (!facts.IsOrdinal() || facts.target == nullptr || !facts.target->IsClosed() ||
        facts.estimates.empty()) {
        return;
    }
    const uint32_t threshold = ThresholdParameter(facts);
    const std::unordered_set<std::string> known(facts.target->categoryKeys.begin(),
                                                facts.target->categoryKeys.end());
    std::unordered_set<std::string> given;
    for (const DocumentFacts::Estimate& cell : facts.estimates) {
        if (threshold == kNone || cell.parameter != threshold) continue;
        const std::string key = CategoryKey(facts.target->dataType, cell.targetCategory);
        if (!known.contains(key)) return;  // told as such, and most likely the one that lacks
        given.insert(key);
    }
    const Element matrix = facts.model.Child(Tags::XML_ELE_PARAM_MATRIX);
    const std::string name = threshold == kNone ? std::string() : facts.parameters[threshold].name;
    // The last category has none: its cumulative probability is 1.
    for (size_t i = 0; i + 1 < facts.target->categories.size(); ++i) {
        if (given.contains(facts.target->categoryKeys[i])) continue;
        report({.element = matrix, .found = name, .what = Quoted(facts.target->categories[i])});
    }
}

}  // namespace MCVelscore_850
