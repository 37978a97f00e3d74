#ifndef VELSCORE_MODELS_CASESTATE_H
#define VELSCORE_MODELS_CASESTATE_H

#include <cstdint>
#include <vector>

#include "host/model/scoringstate.h"
#include "host/values/numericvalue.h"
#include "host/variables/transformationdictionary.h"

namespace MCVelscore_850 {

/// The state of a run of cases through any regression model.
struct CaseState final : ScoringState {
    void SettleAs(const ScoringState& other) override;
    void Unsettle() override;

    // By the first indexed record.
    bool isBound = false;
    std::vector<int> positions;  ///< per predictor its position in the record, -1 when unknown

    // By the first case.
    int betaRow = -1;                ///< of a family that chooses among them; -1 before
    std::vector<double> references;  ///< per parameter, of a model that is centred
    bool hasReferences = false;

    /// Of the confidence limits: the model's RegressionModel::LimitQuantile().
    double limitQuantile = NumericValue::GetSysmisValue();

    // Of the case, by predictor.
    std::vector<const ScoreValue*> valueRefs;  ///< of the value family
    std::vector<NumericValue> substitutes;     ///< what it puts in place of absent values
    std::vector<double> numbers;
    std::vector<int32_t> codes;
    std::vector<double> plainNumbers;  ///< each value's own number, dates unread

    // Of the case, by parameter.
    std::vector<double> design;
    std::vector<uint32_t> met;  ///< parameters whose design value isn't 0

    // Of the case, by category.
    std::vector<double> linearPredictors;
    std::vector<double> probabilities;

    double offset = 0.0;  ///< of the case, where its family keeps it
    TransformationDictionary::Derivation derivation;
};

}  // namespace MCVelscore_850

#endif
