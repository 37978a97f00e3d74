#include "engine/scoring/casescorer.h"

#include "engine/documents/loadedmodel.h"
#include "engine/documents/outputfield.h"
#include "engine/scoring/curveshaper.h"
#include "host/model/scoremodel.h"
#include "host/model/scoreresult.h"
#include "host/model/scoringstate.h"
#include "host/variables/scoredictvar.h"

namespace MCVelscore_850 {

CaseScorer::CaseScorer(LoadedModel& model, std::span<const std::string> header,
                       const std::string& tableName, char decimal,
                       const std::vector<std::string>& missingTexts, Answer answer)
    : CaseScorer(
          model.Model(),
          answer == Answer::Curve ? CurveShaper::Needs(model.Description()) : model.Description(),
          model.Treatments(), header, tableName,
          CaseOptions{
              decimal, model.Substitutes(), missingTexts,
              model.Output() == nullptr ? std::vector<std::string>() : model.Output()->inputs,
              model.ListedByCells()})
{}

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

CaseStatus CaseScorer::Score(std::span<const std::string_view> fields)
{
    const CaseStatus prepared = Prepare(fields);
    if (!prepared.IsOK()) return prepared;
    // The model may replace the result by one of its own making.
    ScoreResult* result = result_.release();
    MCScore::MCStatus status;
    try {
        status = model_.ScoreRow(*state_, &Record(), result, true);
    } catch (...) {
        result_.reset(result);
        throw;
    }
    result_.reset(result);
    if (result_ == nullptr && status.IsOK()) {  // a plug-in's slip: nothing to show
        return {MCScore::kCaseNotScorable};
    }
    return StatusOf(status, fields);
}

CaseStatus CaseScorer::DrawCurve(std::span<const std::string_view> fields)
{
    const CaseStatus prepared = Prepare(fields);
    if (!prepared.IsOK()) return prepared;
    return StatusOf(model_.CurveRow(*state_, &Record(), true, curve_), fields);
}

CaseStatus CaseScorer::Prepare(std::span<const std::string_view> fields)
{
    const CaseStatus prepared = preparer_.Prepare(fields);
    if (!prepared.IsOK() || uncheckedOffset_ == nullptr) return prepared;
    if (uncheckedOffset_->Accepts(Record().GetValue(offsetPosition_))) return prepared;
    return preparer_.Refusal(MCScore::kCaseNotScorable, uncheckedOffset_, fields);
}

CaseStatus CaseScorer::StatusOf(const MCScore::MCStatus& status,
                                std::span<const std::string_view> fields) const
{
    if (status.IsOK()) return {};
    return preparer_.Refusal(status.GetErrorCode(), state_->failedVar, fields);
}

}  // namespace MCVelscore_850
