#ifndef VELSCORE_MODELS_COXREGRESULT_H
#define VELSCORE_MODELS_COXREGRESULT_H

#include <string>

#include "host/model/scoreresult.h"
#include "host/values/numericvalue.h"
#include "models/ownedvalue.h"

namespace MCVelscore_850 {

/// The result of the Cox model: the survival probability, the cumulative hazard, and the status
/// values that mean the event happened, each followed by a comma.
///
/// Owner  the prediction; a copy has a prediction object of its own.
/// Copies A copy takes the dead string but not the cumulative hazard, which is system-missing in
///        it; an assignment keeps both as they were. On purpose: callers rely on no more.
class CoxRegResult : public ScoreResult {
public:
    explicit CoxRegResult(const ScoreDictVar* target) : target_(target) {}
    CoxRegResult(const CoxRegResult& other);
    CoxRegResult& operator=(const CoxRegResult& other);
    ~CoxRegResult() override;

    void SetPrediction(ScoreValue* value) override;
    ScoreValue* GetPrediction() const override { return prediction_.Get(); }
    const ScoreDictVar* GetTarget() const override { return target_; }
    void SetConfidence(double) override {}
    double GetConfidence() const override { return -1.0; }
    int GetScoreResultType() const override { return COXREG_RESULT; }

    void SetCumHazardValue(double value) { cumHazardValue_ = value; }
    double GetCumHazardValue() const { return cumHazardValue_; }
    void SetDeadString(const std::string& text) { deadString_ = text; }
    const std::string& GetDeadString() const { return deadString_; }

private:
    const ScoreDictVar* target_;
    OwnedValue prediction_;
    std::string deadString_;
    double cumHazardValue_ = NumericValue::GetSysmisValue();
};

}  // namespace MCVelscore_850

#endif
