#include "engine/scoring/casescorer.h"

#include "host/model/scoremodel.h"
#include "host/model/scoreresult.h"
#include "host/model/scoringstate.h"
#include "host/variables/scoredictvar.h"

namespace MCVelscore_850 {

CaseScorer::CaseScorer(const ScoreModel& model, const ModelDescription& description,
                       const std::vector<MiningFieldTreatment>& treatments,
                       std::span<const std::string> header, const std::string& tableName,
                       CaseOptions options)
    : model_(model),
      state_(model.MakeState()),
      preparer_(model, description, treatments, header, tableName, std::move(options))
{
    const std::string& offset = description.uncheckedOffset;
    if (offset.empty()) return;
    uncheckedOffset_ = preparer_.FindVar(offset);
    offsetPosition_ = Record().GetVarIndex(offset);
}

CaseScorer::~CaseScorer() = default;

CaseStatus CaseScorer::Score(const ColumnBlock& block, size_t row)
{
    return ScorePrepared(block, row, [this](ScoreResult*& result) {
        return model_.ScoreRow(*state_, &Record(), result, true);
    });
}

CaseStatus CaseScorer::Explain(const ColumnBlock& block, size_t row)
{
    explained_.Clear();
    return ScorePrepared(block, row, [this](ScoreResult*& result) {
        return model_.ExplainRow(*state_, &Record(), result, true, explained_);
    });
}

template <class ScoreCase>
CaseStatus CaseScorer::ScorePrepared(const ColumnBlock& block, size_t row, ScoreCase scoreCase)
{
    const CaseStatus prepared = Prepare(block, row);
    if (!prepared.IsOK()) return prepared;
    // The model may replace the result by one of its own making.
    ScoreResult* result = result_.release();
    MCScore::MCStatus status;
    try {
        status = scoreCase(result);
    } catch (...) {
        result_.reset(result);
        throw;
    }
    result_.reset(result);
    if (result_ == nullptr && status.IsOK()) {  // a plug-in's slip: nothing to show
        return {MCScore::kCaseNotScorable};
    }
    return StatusOf(status, block, row);
}

CaseStatus CaseScorer::DrawCurve(const ColumnBlock& block, size_t row)
{
    const CaseStatus prepared = Prepare(block, row);
    if (!prepared.IsOK()) return prepared;
    return StatusOf(model_.CurveRow(*state_, &Record(), true, curve_), block, row);
}

void CaseScorer::SettleAs(const CaseScorer& other) { state_->SettleAs(*other.state_); }
void CaseScorer::Unsettle() { state_->Unsettle(); }

void CaseScorer::WantLinearPredictorError() { state_->wantsLinearPredictorError = true; }

void CaseScorer::Ask(const SurvivalQuestions& questions) { state_->survivalAsked = questions; }
void CaseScorer::WantProbabilityErrors() { state_->wantsProbabilityErrors = true; }

CaseStatus CaseScorer::Prepare(const ColumnBlock& block, size_t row)
{
    const CaseStatus prepared = preparer_.Prepare(block, row);
    if (!prepared.IsOK() || uncheckedOffset_ == nullptr) return prepared;
    if (uncheckedOffset_->Accepts(Record().GetValue(offsetPosition_))) return prepared;
    return preparer_.Refusal(MCScore::kCaseNotScorable, uncheckedOffset_, block, row);
}

CaseStatus CaseScorer::StatusOf(const MCScore::MCStatus& status, const ColumnBlock& block,
                                size_t row)
{
    if (status.IsOK()) return {};
    return preparer_.Refusal(status.GetErrorCode(), state_->failedVar, block, row);
}

}  // namespace MCVelscore_850
