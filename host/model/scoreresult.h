#ifndef VELSCORE_HOST_MODEL_SCORERESULT_H
#define VELSCORE_HOST_MODEL_SCORERESULT_H

#include <utility>
#include <vector>

#include "host/export.h"

namespace MCVelscore_850 {

class ScoreDictVar;
class ScoreValue;

/// What a model answers for one case. The caller keeps it from case to case, so that a model can
/// write into the prediction object that is there already.
///
/// Slots   the order of the virtual operations is part of the plug-in's interface.
/// Owner   the result owns its prediction; SetPrediction() takes it over in every outcome.
class VELHOST_API ScoreResult {
public:
    /// What GetScoreResultType() answers, by concrete class.
    enum ResultType { MLR_RESULT = 3, CLR_RESULT = 4, LR_RESULT = 5, COXREG_RESULT = 17 };

    virtual ~ScoreResult();
    virtual void SetPrediction(ScoreValue* value) = 0;
    virtual ScoreValue* GetPrediction() const = 0;
    virtual const ScoreDictVar* GetTarget() const = 0;
    virtual void SetConfidence(double confidence) = 0;
    virtual double GetConfidence() const = 0;
    virtual int GetScoreResultType() const = 0;
};

/// The result of a model that predicts a number.
class VELHOST_API ScoreRegResult : public ScoreResult {
public:
    ~ScoreRegResult() override;
    virtual void SetStdDev(double stdDev) = 0;
    virtual double GetStdDev() const = 0;
};

/// The result of a model that predicts a category.
class VELHOST_API ScoreClsResult : public ScoreResult {
public:
    using ValuePercents = std::vector<std::pair<ScoreValue*, double>>;

    ~ScoreClsResult() override;
    /// Takes `value` over, also when it answers false.
    virtual bool AddValuePercent(ScoreValue* value, double percent) = 0;
    virtual double GetPercent(const ScoreValue* value) const = 0;
    virtual const ValuePercents& GetAllValuePercent() const = 0;
};

}  // namespace MCVelscore_850

#endif
