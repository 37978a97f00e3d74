#ifndef VELSCORE_MODELS_TERMPLAN_H
#define VELSCORE_MODELS_TERMPLAN_H

#include <deque>
#include <span>
#include <vector>

#include "kernels/terms.h"
#include "models/categorycodes.h"

namespace MCVelscore_850 {

class PPCMatrix;
class ScoreDictVar;

/// What stands in a contrast's column for a category that has no place in the matrix.
inline constexpr double kNoContrast = -std::numeric_limits<double>::max();

/// The terms of a model's parameters, as the arithmetic reads them: made from the cells once, by
/// FinishSetup(), and never changed.
struct TermPlan {
    /// What the arithmetic reads of a predictor's value.
    enum class Reading : char {
        Number,        ///< the number, from its variable's origin
        FactorNumber,  ///< the number; of a value that is none, NaN, which equals no category
        Code           ///< the code of its category
    };

    std::vector<Reading> readings;  ///< by predictor
    std::vector<CategoryCodes>
        codes;  ///< by predictor; of one read by code, unless its number is it
    /// By predictor, how many codes the terms look up: those from 0 to below it.
    std::vector<int32_t> codeCounts;
    std::vector<kernels::TermPart> parts;
    std::vector<uint32_t> begin{0};  ///< where each parameter's parts begin, and the last ones' end
    std::deque<std::vector<double>> columns;  ///< of contrasts, by code

    kernels::Terms View() const { return {parts.data(), begin.data(), begin.size() - 1}; }

    /// The parts that follow belong to the next parameter.
    void EndParameter() { begin.push_back(static_cast<uint32_t>(parts.size())); }
    /// x to the power of an exponent; one of 0 or below leaves the term as it is.
    void AddPower(size_t predictor, double exponent);
    /// The same by repeated multiplication, up to the next whole number: 2 gives x x, 2.5 gives
    /// x x x, 0.5 gives x. An exponent that no model has takes pow all the same.
    void AddRepeatedProduct(size_t predictor, double exponent);
    void AddCategory(size_t predictor, int32_t code);
    /// A factor's number, compared exactly (TermPart::Equal) or nearly (TermPart::Near).
    void AddNumber(size_t predictor, kernels::TermPart::Kind kind, double number);
    /// A contrast by the code of the case's category; kNoContrast where it has no place.
    void AddContrast(size_t predictor, std::vector<double> column);
};

/// The predictors whose roles say that they are factors, and their variables.
struct PlannedPredictors {
    std::span<const ScoreDictVar* const> variables;
    std::span<const int> roles;

    bool IsFactor(size_t predictor) const;
    bool HasTexts(size_t predictor) const;
};

/// A plan that reads numbers of every predictor and has no term yet.
TermPlan EmptyPlan(const PlannedPredictors& predictors);

/// The terms of cells that hold categories and exponents as values, each of one of the predictors.
TermPlan TermsOfCells(const PPCMatrix& cells, size_t parameters,
                      const PlannedPredictors& predictors);

}  // namespace MCVelscore_850

#endif
