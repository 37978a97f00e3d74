#ifndef VELSCORE_MODELS_LRRESULT_H
#define VELSCORE_MODELS_LRRESULT_H

#include "host/model/scoreresult.h"
#include "host/values/numericvalue.h"
#include "models/ownedvalue.h"

namespace MCVelscore_850 {

/// The result of a model that predicts a number with a standard error and limits.
///
/// Units  prediction, error and limits as the model that writes them tells; the limits are
///        system-missing where there are none, the error is -1.0 on a fresh result.
/// Owner  the prediction; a copy has a prediction object of its own.
class LRResult : public ScoreRegResult {
public:
    explicit LRResult(const ScoreDictVar* target) : target_(target) {}
    LRResult(const LRResult& other) = default;
    LRResult& operator=(const LRResult& other) = default;
    ~LRResult() override;

    void SetPrediction(ScoreValue* value) override;
    ScoreValue* GetPrediction() const override { return prediction_.Get(); }
    const ScoreDictVar* GetTarget() const override { return target_; }
    void SetConfidence(double) override {}
    double GetConfidence() const override { return -1.0; }
    int GetScoreResultType() const override { return LR_RESULT; }
    void SetStdDev(double stdDev) override { stdDev_ = stdDev; }
    double GetStdDev() const override { return stdDev_; }

    void SetCIBottom(double limit) { ciBottom_ = limit; }
    double GetCIBottom() const { return ciBottom_; }
    void SetCITop(double limit) { ciTop_ = limit; }
    double GetCITop() const { return ciTop_; }

private:
    const ScoreDictVar* target_;
    OwnedValue prediction_;
    double stdDev_ = -1.0;
    double ciBottom_ = NumericValue::GetSysmisValue();
    double ciTop_ = NumericValue::GetSysmisValue();
};

}  // namespace MCVelscore_850

#endif
