#ifndef VELSCORE_ENGINE_DOCUMENTS_AUDIT_CELLCHECKS_H
#define VELSCORE_ENGINE_DOCUMENTS_AUDIT_CELLCHECKS_H

#include "engine/documents/audit/documentfacts.h"
#include "engine/documents/audit/finding.h"

namespace MCVelscore_850 {

// The checks of parameters and cells; what each means for the numbers stands in its rule
// (cellrules.cpp).

// Names in cells (cellnames.cpp).

void FindUnknownParameters(const DocumentFacts& facts, RuleReport& report);
void FindUnknownPredictors(const DocumentFacts& facts, RuleReport& report);
/// Of factors and of the target; not those that FindContrastsAsCategories() tells.
void FindUnknownCategories(const DocumentFacts& facts, RuleReport& report);
/// Cells of a factor that name columns of a contrast matrix, by number or as ".L".
void FindContrastsAsCategories(const DocumentFacts& facts, RuleReport& report);
void FindDesignsOfCategories(const DocumentFacts& facts, RuleReport& report);

// Cells that go together (cellplaces.cpp).

void FindContradictingCells(const DocumentFacts& facts, RuleReport& report);
void FindRepeatedCells(const DocumentFacts& facts, RuleReport& report);
void FindAsymmetricCovariances(const DocumentFacts& facts, RuleReport& report);
void FindNegativeVariances(const DocumentFacts& facts, RuleReport& report);
void FindCovariancesWithoutVariance(const DocumentFacts& facts, RuleReport& report);
void FindBetasOfReference(const DocumentFacts& facts, RuleReport& report);

// What no cell says (missingcells.cpp).

void FindEmptyMatrices(const DocumentFacts& facts, RuleReport& report);
void FindUnpairedParameters(const DocumentFacts& facts, RuleReport& report);
void FindCellsAgainstPosition(const DocumentFacts& facts, RuleReport& report);
void FindLogicalCovariates(const DocumentFacts& facts, RuleReport& report);
void FindParametersWithoutCell(const DocumentFacts& facts, RuleReport& report);
void FindOffsetsAsCovariates(const DocumentFacts& facts, RuleReport& report);
void FindUnusedPredictors(const DocumentFacts& facts, RuleReport& report);
void FindParametersWithoutBeta(const DocumentFacts& facts, RuleReport& report);
/// The only beta of a category, which most likely belongs to another.
void FindStrayBetas(const DocumentFacts& facts, RuleReport& report);
void FindThresholdsWithoutBeta(const DocumentFacts& facts, RuleReport& report);

}  // namespace MCVelscore_850

#endif
