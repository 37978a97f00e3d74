#ifndef VELSCORE_ENGINE_DOCUMENTS_ADAPTERRULES_H
#define VELSCORE_ENGINE_DOCUMENTS_ADAPTERRULES_H

#include <optional>
#include <string>
#include <vector>

#include "engine/documents/element.h"

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
using AdapterRule = std::optional<Change> (*)(Element root);

// The document's names and version (adapterrules_document.cpp).

/// A namespace prefix on PMML elements is dropped: the reader knows the plain names alone.
std::optional<Change> DropNamespacePrefix(Element root);
/// A root without version gets the one that its namespace names.
std::optional<Change> TakeVersionFromNamespace(Element root);
/// A version of more than two parts is cut to two: the reader reads a number.
std::optional<Change> ShortenVersion(Element root);

// Extensions (adapterrules_extensions.cpp).

/// Extensions of other makers are taken out where the reader would take them for something else:
/// where it counts children or looks at the first one alone, and where it would obey one for its
/// name whoever signed it. Those of the latter kind are told.
std::optional<Change> TakeOutForeignExtensions(Element root);

// The family (adapterrules_family.cpp).

/// A generalizedLinear model whose algorithm and model name select no family gets the selector of
/// the generalized linear model: it would be read as general linear, and its link ignored.
std::optional<Change> SelectGeneralizedLinear(Element root);

/// The link of an ordinal model that gives it as cumulativeLink alone goes to linkFunction, where
/// the reader looks.
std::optional<Change> TakeLinkFromCumulativeLink(Element root);
/// A multinomialLogistic model of two categories, with contrasts and without a selector, becomes
/// contrastLogistic: the multinomial model knows no contrasts and would ignore them.
std::optional<Change> SelectContrastLogistic(Element root);
/// A contrastLogistic model whose cells name the target's first category gets that category
/// declared last: the row of betas that its first case uses is then the one of every case.
std::optional<Change> DeclareBetaCategoryLast(Element root);

/// Covariances of a multinomial model that name no categories have no place in it and are dropped:
/// no score depends on them.
std::optional<Change> DropCovariancesWithoutCategories(Element root);

/// A binomial generalizedLinear model whose target has two categories is a classification, also
/// where functionName says regression or nothing.
std::optional<Change> ClassifyCategoricalTarget(Element root);
/// Betas of a model of two categories whose cells name neither are those of the category that
/// isn't the model's targetReferenceCategory.
std::optional<Change> NameCategoryOfBetas(Element root);
/// Cells of a generalized linear model name a category of numbers as the reader writes it, 1 for
/// 1.0: it compares texts, and a beta whose text is no category's would not count.
std::optional<Change> SpellCategoriesOfBetas(Element root);

// Ordinal models (adapterrules_ordinal.cpp).

/// The thresholds of an ordinal model, the cells of the one parameter without predictors, go before
/// the betas in the order of the target's categories, and their parameter before the others: the
/// reader knows them by their place. A beta that is given for several categories counts once.
/// Refuses with kSeveralSlopes one that differs between them.
std::optional<Change> PutThresholdsFirst(Element root);

// Designs of single categories (adapterrules_categorydesign.cpp).

/// A PPCell with a targetCategory counts in that category's equation alone, which the reader passes
/// over. A parameter with such cells is read as several, one for each design that categories with a
/// beta have. Where cells contradict each other, name an unknown category or leave a beta without
/// any term the document stays as it is.
std::optional<Change> ReadDesignsOfCategories(Element root);

// Contrasts (adapterrules_contrasts.cpp).

/// In a family that knows no contrast matrices a factor with one becomes covariates, derived from
/// it by a table, one for each column: the family would read its cells as plain categories. A
/// matrix whose columns mark their own categories says the same, and stays.
std::optional<Change> SpreadContrasts(Element root);

// Fields (adapterrules_fields.cpp).

/// A mining field that is given again with the same attributes counts once.
std::optional<Change> DropRepeatedMiningFields(Element root);
/// A covariate whose data field is categorical but holds numbers becomes continuous.
std::optional<Change> MakeNumericCovariatesContinuous(Element root);
/// A field with invalidValueTreatment "asIs" loses its intervals, and a factor of texts accepts
/// values that it doesn't list: the document wants such values scored, not refused.
std::optional<Change> AcceptValuesAsIs(Element root);
/// A factor of texts that lists no values and has no contrasts gets those of its cells, and any
/// other value is accepted: the exporter left out its reference category at least.
std::optional<Change> ListCategoriesOfCells(Element root);
/// A missingValueReplacement that is no number is dropped from a continuous field, and such an
/// invalidValueReplacement with its treatment.
std::optional<Change> DropReplacementsThatAreNoNumbers(Element root);
/// Changes nothing, but says that a factor's missing or invalid values are replaced by a text that
/// is none of its categories: the exporter means that no indicator is met.
std::optional<Change> NoteUnlistedReplacements(Element root);

// Transformations (adapterrules_transformations.cpp).

/// Where a model has transformations of its own, the document's go before them, but for those of
/// the same name: the reader keeps one of the two sections alone.
std::optional<Change> MergeTransformations(Element root);

// Parameters (adapterrules_parameters.cpp).

/// Changes nothing, but says that a model without predictors and ParamMatrix has no estimates: the
/// reader takes it, and every beta counts as 0.
std::optional<Change> NoteMissingEstimates(Element root);

/// A modelType "regression" pairs parameters with predictors by position. Where the cells of the
/// PPMatrix say otherwise the model becomes "generalLinear", which reads the cells.
std::optional<Change> MakeUnorderedRegressionGeneralLinear(Element root);
/// In a Cox model where some parameters have a referencePoint, the others get the schema's
/// default, 0: the reader wants all or none.
std::optional<Change> CompleteReferencePoints(Element root);

// RegressionModel documents (adapterrules_regression.cpp), all but the last before they are
// translated.

/// Changes nothing, but says that the algorithm's name speaks of a link where the model has none.
std::optional<Change> NoteMissingNormalization(Element root);
/// Changes nothing, but says that a table has a term twice.
std::optional<Change> NoteRepeatedTerms(Element root);
/// Changes nothing, but says what a regression of one table predicts whose method gives
/// probabilities and whose target is categorical: exporters write quasi-binomial models so.
std::optional<Change> NoteRegressionOfCategories(Element root);
/// Changes nothing, but says that nothing keeps a model's probabilities between 0 and 1, and why.
std::optional<Change> NoteUnboundedProbabilities(Element root);

}  // namespace MCVelscore_850

#endif
