#ifndef VELSCORE_MODELS_CASEROAD_H
#define VELSCORE_MODELS_CASEROAD_H

#include <string>
#include <type_traits>

#include "host/model/mcstatus.h"
#include "host/values/datetimevalue.h"
#include "host/variables/scorecaserecord.h"
#include "host/variables/scoredictvar.h"
#include "models/mlrresult.h"
#include "models/regressionmodel.h"

namespace MCVelscore_850 {

/// How a family writes the prediction of a case that has none.
enum class MissingPrediction {
    /// A new number, also into a reused result.
    FreshNumber,
    /// A number; a reused result keeps its object.
    Number,
    /// By the target's type: a number, or for a text "" in a fresh result and "NULL" in a reused
    /// one. The difference is on purpose.
    TargetTyped
};

/// What stands in for a bad covariate under MV_SUBSTITUTE, in the value family.
enum class Substitute {
    /// The field's replacement, else its mean; the system-missing number stands in for nothing.
    /// The role is the one of Setup().
    ReplacementOrMean,
    /// The field's replacement alone, whatever number it is. The role is asked for by the
    /// variable's name, as it is at that case.
    ReplacementAlone,
    /// The field's replacement alone, unless that is missing itself.
    KnownReplacement
};

/// The line that a failed case leaves in the trace, where its family traces.
inline constexpr char kStatusLine[] = "MCStatus error code is :%ld";

/// What a family does its own way on the road of a case. Everything else is one piece of code,
/// CaseWalk, so a family is a row of these, its walk's order, and its own computation.
struct CaseRoad {
    /// A null record leaves a line in the trace.
    bool tracesNullRecord;
    /// The derived values come as a record of their own, before the predictors are gathered.
    bool fetchesDerivedRecord;
    /// Under MV_STATUS_ONLY a bad value fails the case.
    bool failsUnderStatusOnly;
    /// The status carries the index of the last bad predictor.
    bool namesBadPredictor;
    /// Number family: a value that gives no number counts as 0.0; else the number of the case
    /// before stands.
    bool clearsNumbers;
    MissingPrediction missingPrediction;
    /// Value family: before validation each predictor is asked for by name once more, and that
    /// answer replaces what was found, also by nothing.
    bool rereadsByName = false;
    Substitute substitute = Substitute::ReplacementOrMean;
    /// The line that a null record leaves in the trace.
    const char* nullRecordLine = kStatusLine;
};

/// One case on its way through a model. The steps, in the order in which GetScore takes them:
///
///     1  Start             case check; then index binding (2)
///     3  PrepareResult     make or reuse the result
///     4  FetchDerived      the record of derived values
///     5  GatherValues      for each predictor: find its value, validate it (6), and decide what
///        or GatherNumbers  a bad one means (7)
///     8  the family leaves when Status() isn't OK
///     9  its design values, 10 its result: WritePrediction and the rest
///
/// The value family keeps pointers to the case's values, in the state's valueRefs, and reads them
/// once they are judged (ReadValues); the number family turns each value at once into a number.
class CaseWalk {
public:
    CaseWalk(const RegressionModel& model, CaseState& state, const CaseRoad& road,
             const ScoreCaseRecord* record, bool derivedInRecord)
        : model_(model),
          state_(state),
          road_(road),
          record_(record),
          derivedInRecord_(derivedInRecord)
    {}

    /// False for a null record, whose status is then set; nothing else of the call runs.
    bool Start();

    /// Keeps `result` when it has the wanted type, else releases it and makes a new one.
    template <class Result>
    Result& PrepareResult(ScoreResult*& result, int type)
    {
        if (result == nullptr || result->GetScoreResultType() != type) {
            delete result;
            result = nullptr;
            result = new Result(model_.targetVar);
            fresh_ = true;
        }
        result_ = result;
        if constexpr (std::is_base_of_v<ScoreClsResult, Result>) {
            percents_ = static_cast<Result*>(result);
            appendsPercents_ = percents_->GetAllValuePercent().empty();
        }
        return static_cast<Result&>(*result);
    }

    void FetchDerived();

    /// Steps 5 to 7 of the value family, for the first `count` of the model's predictorVars.
    void GatherValues(size_t count);

    /// Steps 5 to 7 of the number family. `find(i, var)` answers the value of predictor i or null:
    /// FindValue unless the family looks for it its own way.
    template <class Find>
    void GatherNumbers(Find find);

    /// Step 5: the value of a predictor, from the record by position, else by name; then from the
    /// derived record by name.
    ScoreValue* FindValue(size_t predictor, const ScoreDictVar* var) const;
    /// The record's value at the predictor's position, null when the position holds none or isn't
    /// known; `bound` tells which.
    ScoreValue* ValueAtPosition(size_t predictor, bool& bound) const;

    /// The value at the predictor's position in the record; where that holds none, the derived
    /// record's, which knows names alone. The main record is not asked by name.
    const ScoreValue* FindByPosition(size_t predictor) const;

    /// A value that is absent although validation is off leaves nothing to compute with: the case
    /// then fails like a null record. True when the first `count` values are all there.
    bool HasEveryValue(size_t count);

    /// Begins step 9 of the value family: the numbers and codes that the terms read of the first
    /// `count` values. An absent value is the number 0, and no category.
    void ReadValues(size_t count);

    bool IsFresh() const { return fresh_; }
    const MCScore::MCStatus& Status() const { return status_; }

    /// Step 10: the prediction as a number. A result that has no prediction yet is filled as a
    /// fresh one.
    void WritePrediction(double value);
    /// The prediction of a case that has none, in the family's way.
    void WriteMissingPrediction();
    /// The prediction as a category of the target, by its name.
    void WriteCategory(const std::string& name);
    /// The probability of a category. Into a result that had some when it was prepared the new one
    /// is written in place; any other gets it appended.
    void WritePercent(const std::string& name, double percent);
    /// Both for a family that predicts one category of all: walks the categories by the order of
    /// their names, percent(i) being the probability of category i. Under predictionOnly no
    /// probability is written.
    template <class Percent>
    void WriteCategories(int predicted, Percent percent);
    /// What the family itself finds wrong with a case, and with which variable's value.
    void SetStatus(long code, const ScoreDictVar* failed = nullptr)
    {
        status_ = MCScore::MCStatus(code, false);
        state_.failedVar = failed;
    }
    /// Leaves the status in the trace.
    void TraceStatus(const char* line = kStatusLine) const;

private:
    /// True for a value that is missing or not valid.
    static bool IsBad(const ScoreValue* value, const ScoreDictVar& var)
    {
        if (value != nullptr && value->Kind() == ScoreValue::NUMERIC &&
            var.SurelyAccepts(static_cast<const NumericValue*>(value)->GetDouble())) {
            return false;
        }
        return !var.Accepts(value);
    }
    /// What nearly every value is: a number in its position that its variable is sure to accept.
    /// Null for anything else, which takes the long way. Needs positions_.
    const NumericValue* SureNumber(size_t predictor) const;
    /// Steps 5 (its end) to 7 of the number family for one value.
    void JudgeNumber(size_t predictor, const ScoreValue* value);
    /// Hands a new prediction over; a text gets room for the name of each category.
    void SetNewPrediction(ScoreValue* value);
    bool SubstituteValue(size_t predictor, const ScoreDictVar* var, ScoreValue* value);
    bool IsCovariate(size_t predictor, const ScoreDictVar* var) const;
    /// Step 7 for a value that isn't substituted.
    void FailCase(size_t predictor);

    const RegressionModel& model_;
    CaseState& state_;
    const CaseRoad& road_;
    const ScoreCaseRecord* record_;
    bool derivedInRecord_;
    const std::vector<ScoreValue*>* values_ = nullptr;  // the record's array, when it is indexed
    // The same and the model's positions as plain arrays; null where a predictor may lie elsewhere.
    const int* positions_ = nullptr;
    ScoreValue* const* valueArray_ = nullptr;
    size_t valueCount_ = 0;
    const ScoreDictVar* const* variables_ = nullptr;
    bool fresh_ = false;
    const ScoreCaseRecord* derivedRecord_ = nullptr;
    ScoreResult* result_ = nullptr;
    MLRResult* percents_ = nullptr;  // the same, of a family that predicts a category
    bool appendsPercents_ = false;
    size_t nextPercent_ = 0;  // where the next category likely stands
    MCScore::MCStatus status_;
};

/// The number of a case's value: a date or time from its variable's own origin, any other as it
/// is. Texts are not read here.
inline double NumericReading(const ScoreValue& value, const ScoreDictVar& var)
{
    if (value.Kind() == ScoreValue::NUMERIC) {
        return static_cast<const NumericValue&>(value).GetDouble();
    }
    return value.Kind() == ScoreValue::DATETIME
               ? static_cast<const DateTimeValue&>(value).GetDoubleValue(var.GetDateTimeType())
               : value.GetDouble();
}

inline ScoreValue* CaseWalk::ValueAtPosition(size_t predictor, bool& bound) const
{
    bound = false;
    if (values_ == nullptr || predictor >= state_.positions.size()) return nullptr;
    const int position = state_.positions[predictor];
    if (position < 0) return nullptr;
    bound = true;
    const auto p = static_cast<size_t>(position);
    return p < values_->size() ? (*values_)[p] : nullptr;
}

inline const NumericValue* CaseWalk::SureNumber(size_t predictor) const
{
    const int position = positions_[predictor];
    if (position < 0 || static_cast<size_t>(position) >= valueCount_) return nullptr;
    const ScoreValue* value = valueArray_[position];
    if (value == nullptr || value->Kind() != ScoreValue::NUMERIC) return nullptr;
    const auto* number = static_cast<const NumericValue*>(value);
    return variables_[predictor]->SurelyAccepts(number->GetDouble()) ? number : nullptr;
}

template <class Find>
void CaseWalk::GatherNumbers(Find find)
{
    const size_t count = model_.predictorVars.size();
    double* const numbers = state_.numbers.data();
    for (size_t i = 0; i < count; ++i) {
        if (positions_ != nullptr) {
            if (const NumericValue* sure = SureNumber(i)) {
                numbers[i] = sure->GetDouble();
                continue;
            }
        }
        JudgeNumber(i, find(i, model_.predictorVars[i]));
    }
}

template <class Percent>
void CaseWalk::WriteCategories(int predicted, Percent percent)
{
    for (const auto& [name, index] : model_.categoryMap) {
        if (!state_.predictionOnly) WritePercent(name, percent(static_cast<size_t>(index)));
        if (index == predicted) WriteCategory(name);
    }
}

}  // namespace MCVelscore_850

#endif
