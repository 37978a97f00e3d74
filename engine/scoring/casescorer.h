#ifndef VELSCORE_ENGINE_SCORING_CASESCORER_H
#define VELSCORE_ENGINE_SCORING_CASESCORER_H

#include <memory>
#include <span>
#include <string>
#include <vector>

#include "engine/scoring/casepreparer.h"
#include "host/model/caseexplanation.h"
#include "host/model/mcstatus.h"
#include "host/model/survivalpoint.h"

namespace MCVelscore_850 {

class ScoreResult;
class ScoringState;

/// Takes rows of a table through a model one by one: each becomes a case, then a score or a curve,
/// or the reason why it has none. The part of a TableScorer that any row may take. The result
/// object is kept from case to case.
///
/// Errors  what CasePreparer refuses, from the constructor. A row that can't be scored answers its
///         code with the field at fault and what stood in it, as far as a single field is.
/// Owner   the model outlives the scorer.
/// Threads one; the model is only read.
class CaseScorer {
public:
    CaseScorer(const ScoreModel& model, const ModelDescription& description,
               const std::vector<MiningFieldTreatment>& treatments,
               std::span<const std::string> header, const std::string& tableName,
               CaseOptions options);
    ~CaseScorer();

    /// Result() is the row's when this answers OK.
    CaseStatus Score(const ColumnBlock& block, size_t row);
    /// Score(), and Explained() is the row's when this answers OK.
    CaseStatus Explain(const ColumnBlock& block, size_t row);
    /// Curve() is the row's when this answers OK.
    CaseStatus DrawCurve(const ColumnBlock& block, size_t row);

    /// Takes over what the other's first case settled.
    void SettleAs(const CaseScorer& other);
    /// The next case is a first one again. Throws nothing.
    void Unsettle();

    const ScoreResult& Result() const { return *result_; }
    /// What scoring writes from row to row, beside the results.
    const ScoringState& State() const { return *state_; }
    /// Asks for ScoringState::linearPredictorError of the rows to come.
    void WantLinearPredictorError();
    /// The same of ScoringState::probabilityErrors.
    void WantProbabilityErrors();
    /// Asks for ScoringState::survival of the rows to come, and of a curve for its times.
    void Ask(const SurvivalQuestions& questions);
    const std::vector<SurvivalPoint>& Curve() const { return curve_; }
    const CaseExplanation& Explained() const { return explained_; }
    const CaseRecord& Record() const { return preparer_.Record(); }
    CasePreparer& Preparer() { return preparer_; }
    const CasePreparer& Preparer() const { return preparer_; }

private:
    /// Prepares a row, and takes what scoreCase(result) makes of it.
    template <class ScoreCase>
    CaseStatus ScorePrepared(const ColumnBlock& block, size_t row, ScoreCase scoreCase);
    CaseStatus Prepare(const ColumnBlock& block, size_t row);
    /// What the model answered, as the row's status.
    CaseStatus StatusOf(const MCScore::MCStatus& status, const ColumnBlock& block, size_t row);

    const ScoreModel& model_;
    std::unique_ptr<ScoringState> state_;
    CasePreparer preparer_;
    const ScoreDictVar* uncheckedOffset_ = nullptr;
    int offsetPosition_ = -1;  ///< in the record
    std::unique_ptr<ScoreResult> result_;
    std::vector<SurvivalPoint> curve_;
    CaseExplanation explained_;
};

}  // namespace MCVelscore_850

#endif
