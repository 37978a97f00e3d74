#include "engine/documents/documentadapter.h"

#include <utility>

#include "engine/documents/adapterrules.h"
#include "engine/documents/documenttree.h"
#include "engine/documents/regressiontranslation.h"
#include "engine/documents/treetext.h"

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
    return {name, answer, doubt, "{what}", ""};
}

// In this order: names first, since the others look for plain ones; then the version, which
// decides what a selector means; then another kind of model, which the later rules read in the
// general form; then the fields, whose measure the later rules read.
constexpr RuleRow kRules[] = {
    {Row("namespace-prefix", kNoDoubt), DropNamespacePrefix},
    {Row("version-from-namespace", kNoDoubt), TakeVersionFromNamespace},
    {Row("short-version", kNoDoubt), ShortenVersion},
    {Row("regression-model", kNoDoubt), TranslateRegressionModel},
    {Row("generalized-linear", kNoDoubt), SelectGeneralizedLinear},
    {Row("cumulative-link", kNoDoubt), TakeLinkFromCumulativeLink},
    {Row("thresholds-first", kNoDoubt), PutThresholdsFirst},
    {Row("classification-target", kNoDoubt), ClassifyCategoricalTarget},
    {Row("category-of-betas", kDoubt), NameCategoryOfBetas},
    {Row("contrast-logistic", kDoubt), SelectContrastLogistic},
    {Row("beta-category-last", kNoDoubt), DeclareBetaCategoryLast},
    {Row("repeated-mining-field", kNoDoubt), DropRepeatedMiningFields},
    {Row("numeric-covariate", kNoDoubt), MakeNumericCovariatesContinuous},
    {Row("replacement-no-number", kDoubt), DropReplacementsThatAreNoNumbers},
    {Row("categories-of-cells", kDoubt), ListCategoriesOfCells},
    {Row("values-as-is", kNoDoubt), AcceptValuesAsIs},
    {Row("contrast-columns", kNoDoubt), SpreadContrasts},
    {Row("replacement-unlisted", kNoDoubt, Answer::Notice), NoteUnlistedReplacements},
    {Row("merged-transformations", kNoDoubt), MergeTransformations},
    {Row("covariance-categories", kDoubt), DropCovariancesWithoutCategories},
    {Row("regression-order", kDoubt), MakeUnorderedRegressionGeneralLinear},
    {Row("reference-points", kDoubt), CompleteReferencePoints},
    {Row("no-estimates", kDoubt, Answer::Notice), NoteMissingEstimates},
};

}  // namespace

std::vector<Adaptation> AdaptDocument(Document& document)
{
    std::vector<Adaptation> adaptations;
    xercesc::DOMElement* root = document.GetTree().dom->getDocumentElement();
    if (!IsPmmlRoot(root)) return adaptations;
    for (const RuleRow& row : kRules) {
        if (auto change = row.apply(root)) {
            adaptations.push_back({&row.rule, std::move(change->text), std::move(change->place),
                                   change->rotatedTarget, std::move(change->listedByCells),
                                   std::move(change->family)});
        }
    }
    return adaptations;
}

std::vector<const Rule*> AdapterRules()
{
    std::vector<const Rule*> rules;
    for (const RuleRow& row : kRules) rules.push_back(&row.rule);
    return rules;
}

}  // namespace MCVelscore_850
