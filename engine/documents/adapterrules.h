#ifndef VELSCORE_ENGINE_DOCUMENTS_ADAPTERRULES_H
#define VELSCORE_ENGINE_DOCUMENTS_ADAPTERRULES_H

#include <optional>
#include <string>
#include <vector>

#include <xercesc/util/XercesDefs.hpp>

#include "host/messages/vsexception.h"

XERCES_CPP_NAMESPACE_BEGIN
class DOMElement;
XERCES_CPP_NAMESPACE_END

namespace MCVelscore_850 {

/// What a rule did: the first element concerned, and one line for people.
struct Change {
    DocumentPlace place;
    std::string text;
    /// The target's first category was declared last.
    bool rotatedTarget = false;
    /// Fields that got the categories of their cells as their list.
    std::vector<std::string> listedByCells{};
    /// The family of a RegressionModel, in the field's words.
    std::string family{};
};

/// A rule looks at a PMML document from its root and changes it where it applies; nothing is
/// answered where it doesn't.
using AdapterRule = std::optional<Change> (*)(xercesc::DOMElement* root);

// The document's names and version (adapterrules_document.cpp).

/// A namespace prefix on PMML elements is dropped: the reader knows the plain names alone.
std::optional<Change> DropNamespacePrefix(xercesc::DOMElement* root);
/// A root without version gets the one that its namespace names.
std::optional<Change> TakeVersionFromNamespace(xercesc::DOMElement* root);
/// A version of more than two parts is cut to two: the reader reads a number.
std::optional<Change> ShortenVersion(xercesc::DOMElement* root);

// The family (adapterrules_family.cpp).

/// A generalizedLinear model whose algorithm and model name select no family gets the selector of
/// the generalized linear model: it would be read as general linear, and its link ignored.
std::optional<Change> SelectGeneralizedLinear(xercesc::DOMElement* root);

/// The link of an ordinal model that gives it as cumulativeLink alone goes to linkFunction, where
/// the reader looks.
std::optional<Change> TakeLinkFromCumulativeLink(xercesc::DOMElement* root);
/// A multinomialLogistic model of two categories, with contrasts and without a selector, becomes
/// contrastLogistic: the multinomial model knows no contrasts and would ignore them.
std::optional<Change> SelectContrastLogistic(xercesc::DOMElement* root);
/// A contrastLogistic model whose cells name the target's first category gets that category
/// declared last: the row of betas that its first case uses is then the one of every case.
std::optional<Change> DeclareBetaCategoryLast(xercesc::DOMElement* root);

/// Covariances of a multinomial model that name no categories have no place in it and are dropped:
/// no score depends on them.
std::optional<Change> DropCovariancesWithoutCategories(xercesc::DOMElement* root);

/// A binomial generalizedLinear model whose target has two categories is a classification, also
/// where functionName says regression or nothing.
std::optional<Change> ClassifyCategoricalTarget(xercesc::DOMElement* root);
/// Betas of a model of two categories whose cells name neither are those of the category that
/// isn't the model's targetReferenceCategory.
std::optional<Change> NameCategoryOfBetas(xercesc::DOMElement* root);

// Ordinal models (adapterrules_ordinal.cpp).

/// The thresholds of an ordinal model, the cells of the one parameter without predictors, go before
/// the betas in the order of the target's categories, and their parameter before the others: the
/// reader knows them by their place. A beta that is given for several categories counts once.
/// Refuses with kSeveralSlopes one that differs between them.
std::optional<Change> PutThresholdsFirst(xercesc::DOMElement* root);

// Contrasts (adapterrules_contrasts.cpp).

/// In a family that knows no contrast matrices a factor with one becomes covariates, derived from
/// it by a table, one for each column: the family would read its cells as plain categories. A
/// matrix whose columns mark their own categories says the same, and stays.
std::optional<Change> SpreadContrasts(xercesc::DOMElement* root);

// Fields (adapterrules_fields.cpp).

/// A mining field that is given again with the same attributes counts once.
std::optional<Change> DropRepeatedMiningFields(xercesc::DOMElement* root);
/// A covariate whose data field is categorical but holds numbers becomes continuous.
std::optional<Change> MakeNumericCovariatesContinuous(xercesc::DOMElement* root);
/// A field with invalidValueTreatment "asIs" loses its intervals, and a factor of texts accepts
/// values that it doesn't list: the document wants such values scored, not refused.
std::optional<Change> AcceptValuesAsIs(xercesc::DOMElement* root);
/// A factor of texts that lists no values and has no contrasts gets those of its cells, and any
/// other value is accepted: the exporter left out its reference category at least.
std::optional<Change> ListCategoriesOfCells(xercesc::DOMElement* root);
/// A missingValueReplacement that is no number is dropped from a continuous field.
std::optional<Change> DropReplacementsThatAreNoNumbers(xercesc::DOMElement* root);
/// Changes nothing, but says that a factor's missing or invalid values are replaced by a text that
/// is none of its categories: the exporter means that no indicator is met.
std::optional<Change> NoteUnlistedReplacements(xercesc::DOMElement* root);

// Transformations (adapterrules_transformations.cpp).

/// Where a model has transformations of its own, the document's go before them, but for those of
/// the same name: the reader keeps one of the two sections alone.
std::optional<Change> MergeTransformations(xercesc::DOMElement* root);

// Parameters (adapterrules_parameters.cpp).

/// Changes nothing, but says that a model without a ParamMatrix has no estimates: the reader takes
/// it, and every beta counts as 0.
std::optional<Change> NoteMissingEstimates(xercesc::DOMElement* root);

/// A modelType "regression" pairs parameters with predictors by position. Where the cells of the
/// PPMatrix say otherwise the model becomes "generalLinear", which reads the cells.
std::optional<Change> MakeUnorderedRegressionGeneralLinear(xercesc::DOMElement* root);
/// In a Cox model where some parameters have a referencePoint, the others get the schema's
/// default, 0: the reader wants all or none.
std::optional<Change> CompleteReferencePoints(xercesc::DOMElement* root);

}  // namespace MCVelscore_850

#endif
