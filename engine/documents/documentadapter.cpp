#include "engine/documents/documentadapter.h"

#include <utility>

#include "engine/documents/adapterrules.h"
#include "engine/documents/documenttree.h"
#include "engine/documents/treetext.h"

namespace MCVelscore_850 {

namespace {

struct RuleRow {
    const char* name;
    AdapterRule apply;
};

// In this order: names first, since the others look for plain ones; then the version, which
// decides what a selector means; then the fields, whose measure the later rules read.
constexpr RuleRow kRules[] = {
    {"namespace-prefix", DropNamespacePrefix},
    {"version-from-namespace", TakeVersionFromNamespace},
    {"short-version", ShortenVersion},
    {"generalized-linear", SelectGeneralizedLinear},
    {"cumulative-link", TakeLinkFromCumulativeLink},
    {"thresholds-first", PutThresholdsFirst},
    {"classification-target", ClassifyCategoricalTarget},
    {"category-of-betas", NameCategoryOfBetas},
    {"contrast-logistic", SelectContrastLogistic},
    {"beta-category-last", DeclareBetaCategoryLast},
    {"repeated-mining-field", DropRepeatedMiningFields},
    {"numeric-covariate", MakeNumericCovariatesContinuous},
    {"replacement-no-number", DropReplacementsThatAreNoNumbers},
    {"categories-of-cells", ListCategoriesOfCells},
    {"values-as-is", AcceptValuesAsIs},
    {"contrast-columns", SpreadContrasts},
    {"replacement-unlisted", NoteUnlistedReplacements},
    {"merged-transformations", MergeTransformations},
    {"covariance-categories", DropCovariancesWithoutCategories},
    {"regression-order", MakeUnorderedRegressionGeneralLinear},
    {"reference-points", CompleteReferencePoints},
    {"no-estimates", NoteMissingEstimates},
};

}  // namespace

std::string Adaptation::ToString() const
{
    std::string text;
    if (place.line > 0) {
        text = "line " + std::to_string(place.line) + ", column " + std::to_string(place.column) +
               ": ";
    }
    return text + change + " [" + rule + "]";
}

std::vector<Adaptation> AdaptDocument(Document& document)
{
    std::vector<Adaptation> adaptations;
    xercesc::DOMElement* root = document.GetTree().dom->getDocumentElement();
    if (!IsPmmlRoot(root)) return adaptations;
    for (const RuleRow& row : kRules) {
        if (auto change = row.apply(root)) {
            adaptations.push_back({row.name, std::move(change->text), std::move(change->place),
                                   change->rotatedTarget, std::move(change->listedByCells)});
        }
    }
    return adaptations;
}

}  // namespace MCVelscore_850
