#ifndef VELSCORE_MODELS_CLRRESULT_H
#define VELSCORE_MODELS_CLRRESULT_H

#include "host/model/scoreresult.h"
#include "models/ownedvalue.h"

namespace MCVelscore_850 {

/// The result of the conditional logistic model: a probability, and neither error nor limits.
///
/// Owner  the prediction; a copy has a prediction object of its own.
class CLRResult : public ScoreRegResult {
public:
    explicit CLRResult(const ScoreDictVar* target) : target_(target) {}
    CLRResult(const CLRResult& other) = default;
    CLRResult& operator=(const CLRResult& other) = default;
    ~CLRResult() override;

    void SetPrediction(ScoreValue* value) override;
    ScoreValue* GetPrediction() const override { return prediction_.Get(); }
    const ScoreDictVar* GetTarget() const override { return target_; }
    void SetConfidence(double) override {}
    double GetConfidence() const override { return 1.0; }
    int GetScoreResultType() const override { return CLR_RESULT; }
    void SetStdDev(double) override {}
    double GetStdDev() const override { return -1.0; }

private:
    const ScoreDictVar* target_;
    OwnedValue prediction_;
};

}  // namespace MCVelscore_850

#endif
