#ifndef VELSCORE_ENGINE_SCORING_CASESCORER_H
#define VELSCORE_ENGINE_SCORING_CASESCORER_H

#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "engine/scoring/casepreparer.h"
#include "host/model/mcstatus.h"
#include "host/model/survivalpoint.h"

namespace MCVelscore_850 {

class LoadedModel;
class ScoreResult;
class ScoringState;

/// Takes the rows of a table through a model: each becomes a case, then a score or a curve, or the
/// reason why it has none. Whatever scores, verifies or draws curves does it here. The result
/// object is kept from case to case.
///
/// Errors  what CasePreparer refuses, from the constructor. A row that can't be scored answers its
///         code with the field at fault and what stood in it, as far as a single field is.
/// Owner   the model outlives the scorer.
class CaseScorer {
public:
    enum class Answer { Score, Curve };

    /// The case options but for the table's own, `decimal` and `missingTexts`, follow from the
    /// model and its policy. A table for curves needs no end time.
    CaseScorer(LoadedModel& model, std::span<const std::string> header,
               const std::string& tableName, char decimal = '.',
               const std::vector<std::string>& missingTexts = {}, Answer answer = Answer::Score);
    CaseScorer(const ScoreModel& model, const ModelDescription& description,
               const std::vector<MiningFieldTreatment>& treatments,
               std::span<const std::string> header, const std::string& tableName,
               CaseOptions options);
    ~CaseScorer();

    /// Result() is the row's when this answers OK.
    CaseStatus Score(std::span<const std::string_view> fields);
    /// Curve() is the row's when this answers OK.
    CaseStatus DrawCurve(std::span<const std::string_view> fields);

    const ScoreResult& Result() const { return *result_; }
    const std::vector<SurvivalPoint>& Curve() const { return curve_; }
    const CaseRecord& Record() const { return preparer_.Record(); }
    const CasePreparer& Preparer() const { return preparer_; }

private:
    CaseStatus Prepare(std::span<const std::string_view> fields);
    /// What the model answered, as the row's status.
    CaseStatus StatusOf(const MCScore::MCStatus& status,
                        std::span<const std::string_view> fields) const;

    const ScoreModel& model_;
    std::unique_ptr<ScoringState> state_;
    CasePreparer preparer_;
    const ScoreDictVar* uncheckedOffset_ = nullptr;
    int offsetPosition_ = -1;  ///< in the record
    std::unique_ptr<ScoreResult> result_;
    std::vector<SurvivalPoint> curve_;
};

}  // namespace MCVelscore_850

#endif
