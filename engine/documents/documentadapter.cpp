#include "engine/documents/documentadapter.h"

#include <span>
#include <utility>

#include "engine/documents/adapterrules.h"
#include "engine/documents/documentloader.h"
#include "engine/documents/modelelement.h"
#include "engine/documents/regressiontranslation.h"

namespace MCVelscore_850 {

namespace {

struct RuleRow {
    Rule rule;
    AdapterRule apply;
};

// Whether one of these rules may leave a doubt, so that it counts where strictness is asked for.
constexpr bool kNoDoubt = false;
constexpr bool kDoubt = true;

// The change itself is told by the rule that made it.
constexpr Rule Row(std::string_view name, bool doubt, Answer answer = Answer::Adapted)
{
    return {name, answer, doubt, "velscore check tells what was found, and where", "{what}", ""};
}

// How many of the rules put right what elements are called, the version, and what stands twice
// alike: a look at the names then tells what the author wrote.
constexpr size_t kRulesOfNames = 4;

// In this order: names first, since the others look for plain ones; then the version, which
// decides what a selector means; then another kind of model, which the later rules read in the
// general form; then the fields, whose measure the later rules read.
constexpr RuleRow kRules[] = {
    {Row("namespace-prefix", kNoDoubt), DropNamespacePrefix},
    {Row("version-from-namespace", kNoDoubt), TakeVersionFromNamespace},
    {Row("short-version", kNoDoubt), ShortenVersion},
    {Row("repeated-mining-field", kNoDoubt), DropRepeatedMiningFields},
    {Row("missing-normalization", kDoubt, Answer::Notice), NoteMissingNormalization},
    {Row("repeated-term", kDoubt, Answer::Notice), NoteRepeatedTerms},
    {Row("regression-of-categories", kDoubt, Answer::Notice), NoteRegressionOfCategories},
    {Row("regression-model", kNoDoubt), TranslateRegressionModel},
    {Row("generalized-linear", kNoDoubt), SelectGeneralizedLinear},
    {Row("foreign-extension", kDoubt), TakeOutForeignExtensions},
    {Row("cumulative-link", kNoDoubt), TakeLinkFromCumulativeLink},
    {Row("thresholds-first", kNoDoubt), PutThresholdsFirst},
    {Row("classification-target", kNoDoubt), ClassifyCategoricalTarget},
    {Row("unbounded-probabilities", kNoDoubt, Answer::Notice), NoteUnboundedProbabilities},
    {Row("category-of-betas", kDoubt), NameCategoryOfBetas},
    {Row("category-spelling", kNoDoubt), SpellCategoriesOfBetas},
    {Row("contrast-logistic", kDoubt), SelectContrastLogistic},
    {Row("beta-category-last", kNoDoubt), DeclareBetaCategoryLast},
    {Row("category-design", kNoDoubt), ReadDesignsOfCategories},
    {Row("numeric-covariate", kNoDoubt), MakeNumericCovariatesContinuous},
    {Row("replacement-no-number", kDoubt), DropReplacementsThatAreNoNumbers},
    // A value that the list lacks is counted at the end of a run.
    {Row("categories-of-cells", kNoDoubt), ListCategoriesOfCells},
    {Row("values-as-is", kNoDoubt), AcceptValuesAsIs},
    {Row("contrast-columns", kNoDoubt), SpreadContrasts},
    {Row("replacement-unlisted", kNoDoubt, Answer::Notice), NoteUnlistedReplacements},
    {Row("merged-transformations", kNoDoubt), MergeTransformations},
    {Row("covariance-categories", kDoubt), DropCovariancesWithoutCategories},
    {Row("regression-order", kDoubt), MakeUnorderedRegressionGeneralLinear},
    {Row("reference-points", kDoubt), CompleteReferencePoints},
    {Row("no-estimates", kDoubt, Answer::Notice), NoteMissingEstimates},
};

std::vector<Adaptation> Adapt(Document& document, std::span<const RuleRow> rules)
{
    std::vector<Adaptation> adaptations;
    const Element root = document.Root();
    if (!IsPmmlRoot(root)) return adaptations;
    for (const RuleRow& row : rules) {
        if (auto change = row.apply(root)) {
            adaptations.push_back({&row.rule, std::move(change->text), std::move(change->place),
                                   change->rotatedTarget, std::move(change->listedByCells),
                                   std::move(change->family)});
        }
    }
    return adaptations;
}

}  // namespace

std::vector<Adaptation> AdaptNames(Document& document)
{
    return Adapt(document, std::span(kRules).first(kRulesOfNames));
}

std::vector<Adaptation> AdaptDocument(Document& document) { return Adapt(document, kRules); }

std::vector<const Rule*> AdapterRules()
{
    std::vector<const Rule*> rules;
    for (const RuleRow& row : kRules) rules.push_back(&row.rule);
    return rules;
}

}  // namespace MCVelscore_850
