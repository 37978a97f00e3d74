#ifndef VELSCORE_MODELS_MLRRESULT_H
#define VELSCORE_MODELS_MLRRESULT_H

#include <string>
#include <vector>

#include "host/model/scoreresult.h"
#include "models/ownedvalue.h"

namespace MCVelscore_850 {

/// The result of a model that predicts a category: the category and each category's probability.
///
/// Owner  the prediction and the values of the percents; a copy has values of its own.
class MLRResult : public ScoreClsResult {
public:
    explicit MLRResult(const ScoreDictVar* target) : target_(target) {}
    MLRResult(const MLRResult& other);
    MLRResult& operator=(const MLRResult& other);
    ~MLRResult() override;

    void SetPrediction(ScoreValue* value) override;
    ScoreValue* GetPrediction() const override { return prediction_.Get(); }
    const ScoreDictVar* GetTarget() const override { return target_; }
    void SetConfidence(double) override {}
    /// The percent of the prediction, -1.0 when it has none.
    double GetConfidence() const override { return GetPercent(prediction_.Get()); }
    int GetScoreResultType() const override { return MLR_RESULT; }

    /// Appends an entry and takes `value` over; a value that the target calls invalid or missing
    /// is released, and the answer is false. No search for an equal entry is made.
    bool AddValuePercent(ScoreValue* value, double percent) override;
    /// The percent of the first entry whose value equals `value`, -1.0 without one.
    double GetPercent(const ScoreValue* value) const override;
    const ValuePercents& GetAllValuePercent() const override { return valuePercents_; }

    /// Overwrites the percent of the first entry whose value reads `key`; false without one.
    bool SetPercent(const std::string& key, double percent);
    /// The same where the entries read differently all, and the wanted one likely stands at
    /// `place`: time doesn't grow with the entries before it.
    bool SetPercentAt(size_t place, const std::string& key, double percent);

private:
    /// Lets the entries, after a copy of both lists, name their own values.
    void NameOwnValues();

    const ScoreDictVar* target_;
    OwnedValue prediction_;
    ValuePercents valuePercents_;     ///< what hosts see; the values lie in `values_`
    std::vector<OwnedValue> values_;  ///< entry by entry
};

}  // namespace MCVelscore_850

#endif
