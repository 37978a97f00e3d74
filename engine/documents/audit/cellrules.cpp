#include "engine/documents/audit/cellchecks.h"
#include "engine/documents/audit/documentaudit.h"

namespace MCVelscore_850 {

namespace {

constexpr bool kStrict = true;
constexpr bool kLenient = false;
constexpr bool kNoticeInOlderForm = true;

constexpr AuditRule kRules[] = {
    // Names.
    {{"unknown-parameter", Answer::Fault, kStrict, "a cell of a parameter that isn't there",
      "{element} {attribute} {found} is no parameter of the model, which has {expected}{meant}",
      "Write the parameter's name as the list of parameters has it, or add it there; remove the "
      "cell "
      "where it is of another model."},
     FindUnknownParameters,
     nullptr,
     kNoticeInOlderForm},
    {{"unknown-predictor", Answer::Fault, kStrict, "a cell of a predictor that isn't there",
      "{element} {attribute} {found} is no predictor of the model, which has {expected}{meant}",
      "Write the predictor's name as the list of factors or covariates has it, or add it there."},
     FindUnknownPredictors},
    {{"unknown-category", Answer::Fault, kStrict, "a cell of a category that isn't there",
      "{element} {attribute} {found} is no category of {what}, which has {expected}{meant}",
      "Write the category as the field lists it, upper and lower case alike; add it to the field "
      "where it is one."},
     FindUnknownCategories,
     nullptr,
     kNoticeInOlderForm},
    {{"contrasts-as-categories", Answer::Fault, kStrict,
      "cells that name columns of a contrast matrix as if they were categories",
      "{element} {attribute} {found} is no category of factor {what} but seems to be a column of "
      "its contrast matrix: the factor has {expected}, and no case would meet its cells",
      "The model was fitted with sum, Helmert or polynomial contrasts, of which the export wrote "
      "the columns as if they were categories. Fit it with treatment contrasts (contr.treatment) "
      "and export it again, or give the factor its contrast matrix."},
     FindContrastsAsCategories},
    {{"design-of-category", Answer::Fault, kStrict,
      "a design of one category's own that can't be read",
      "{element} {attribute} {found} gives that category a design of its own, which can't be read: "
      "{what}",
      "Give each parameter its cells without targetCategory, and parameters of its own to a "
      "category whose terms differ."},
     FindDesignsOfCategories},
    // Cells that go together.
    {{"contradicting-cells", Answer::Fault, kStrict, "two cells for one place that differ",
      "{element} {attribute} {found} contradicts {expected} of an earlier cell for {what}",
      "Keep the cell that is right and remove the other."},
     FindContradictingCells},
    {{"repeated-cell", Answer::Notice, kLenient, "two cells for one place that agree",
      "{element} {attribute} {found} says again what an earlier cell says for {what}: it counts "
      "once",
      "Remove one of the two.{note}"},
     FindRepeatedCells},
    {{"asymmetric-covariances", Answer::Fault, kStrict,
      "the two triangles of the covariances differ",
      "{element} {attribute} {found} differs from {expected} in the other triangle for {what}",
      "A covariance is the same in both directions: put the wrong triangle right, or give one of "
      "them alone."},
     FindAsymmetricCovariances},
    {{"negative-variance", Answer::Fault, kStrict, "a variance below 0",
      "{element} {attribute} {found} is a variance of parameter {what} below 0",
      "Look the covariance matrix up where the model was fitted: no standard error can be had of "
      "it."},
     FindNegativeVariances},
    {{"covariance-without-variance", Answer::Fault, kStrict,
      "a covariance of a parameter without a variance",
      "{element} {attribute} {found} has a covariance but no variance",
      "Add the cell of that parameter with itself, or leave all covariances out: the model then "
      "has no standard errors."},
     FindCovariancesWithoutVariance},
    {{"beta-of-reference", Answer::Fault, kStrict, "a beta of the reference category",
      "{element} {attribute} {found} belongs to {what}, which the model names as its reference "
      "category: that one has no betas",
      "Correct targetReferenceCategory of the model or targetCategory of the cell."},
     FindBetasOfReference},
    // What no cell says.
    {{"empty-matrix", Answer::Fault, kStrict, "no cells where the lists name predictors",
      "{expected} {what}",
      "Give it the cells of the predictors that the lists name; a model without predictors lists "
      "none."},
     FindEmptyMatrices},
    {{"unpaired-parameters", Answer::Fault, kStrict,
      "more or fewer parameters than predictors, where they pair by position",
      "{element} has {what} parameters beside the constant for {expected} predictors, which are "
      "paired by position",
      "List one parameter for each predictor, in their order, and the constant as \"(Constant)\"; "
      "or say by cells (PPMatrix) which belong together."},
     FindUnpairedParameters},
    {{"cell-against-position", Answer::Notice, kStrict,
      "a cell that says otherwise than the positions that count",
      "{element} ties parameter {what} to {attribute} {found} in another way than their positions "
      "do, by which a linear regression goes in this form",
      "Bring parameters and predictors into the same order."},
     FindCellsAgainstPosition},
    {{"logical-covariate", Answer::Fault, kStrict,
      "a parameter and a covariate, both without a cell: a truth value as a covariate",
      "{element} {attribute} {found} has a beta and no cell, and predictor {what} has none either: "
      "the beta would count in every case, whether {what} is true or not",
      "The export left out the cell of a logical predictor. List {what} as a factor and add its "
      "PPCell for this parameter, with the value that stands for true; or make the predictor a "
      "number or factor before fitting."},
     FindLogicalCovariates},
    {{"parameter-without-cell", Answer::Fault, kStrict, "a beta without a cell beside the constant",
      "{element} {attribute} {found} has a beta and no cell: it would count in every case, as a "
      "second constant",
      "Add the PPCells that tie the parameter to its predictors, or remove its beta."},
     FindParametersWithoutCell},
    {{"offset-as-covariate", Answer::Fault, kStrict,
      "a predictor that no cell uses and that is called an offset",
      "{element} {attribute} {found} is listed as a {what} that no cell uses, and its name says "
      "that it is an offset: it would count as 0",
      "The export wrote the model's offset term as a predictor without a parameter. Name the field "
      "with its values, on the scale of the linear predictor, as offsetVariable of the model, and "
      "take it out of the list."},
     FindOffsetsAsCovariates},
    {{"unused-predictor", Answer::Notice, kStrict, "any other predictor that no cell uses",
      "{element} {attribute} {found} is listed as a {what} that no cell uses: it has no effect on "
      "the scores",
      "Take it out of the list.{note}"},
     FindUnusedPredictors},
    {{"parameter-without-beta", Answer::Notice, kStrict,
      "a parameter without a beta, which counts as 0",
      "{element} {attribute} {found} has no beta{what}: it counts as 0",
      "Add its cell with the beta, or one with a beta of 0 and a df of 0."},
     FindParametersWithoutBeta},
    {{"stray-beta", Answer::Fault, kStrict,
      "the only beta of a category of a multinomial model that most likely belongs to another",
      "{element} {attribute} {found} has the only beta of that category, for parameter {what}: it "
      "most likely belongs to another one",
      "Correct the targetCategory of the cell, or give the category all of its betas."},
     FindStrayBetas},
    {{"threshold-without-beta", Answer::Fault, kStrict,
      "an ordinal model without one of its thresholds",
      "{element} has no threshold for category {what} (parameter {found})",
      "Give the parameter without predictors a cell with beta for each category of the target but "
      "the last."},
     FindThresholdsWithoutBeta},
};

}  // namespace

std::span<const AuditRule> CellRules() { return kRules; }

}  // namespace MCVelscore_850
