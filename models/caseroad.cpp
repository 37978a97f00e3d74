#include "models/caseroad.h"

#include <algorithm>
#include <limits>

#include "host/messages/scoringlog.h"
#include "host/values/stringvalue.h"
#include "host/variables/catencoder.h"
#include "host/variables/varstats.h"

namespace MCVelscore_850 {

using MCScore::MCStatus;

bool CaseWalk::Start()
{
    state_.failedVar = nullptr;
    state_.linearPredictor = NumericValue::GetSysmisValue();
    state_.linearPredictorError = NumericValue::GetSysmisValue();
    state_.probabilityErrors.clear();
    if (record_ == nullptr) {
        status_ = MCStatus(MCScore::kCaseNotScorable, false);
        if (road_.tracesNullRecord) TraceStatus(road_.nullRecordLine);
        return false;
    }
    if (record_->HasIndexedAccess()) {
        values_ = record_->GetValues();
        if (!state_.isBound) model_.Bind(state_, *record_, derivedInRecord_);
        if (values_ != nullptr && (derivedInRecord_ || !model_.needDerivedPredictor)) {
            positions_ = state_.positions.data();
            valueArray_ = values_->data();
            valueCount_ = values_->size();
            variables_ = model_.predictorVars.data();
        }
    }
    return true;
}

void CaseWalk::TraceStatus(const char* line) const
{
    // The lines are this room's own literals.
    ScoringLog::GetInstance()->TraceText(1, line, status_.GetErrorCode());
}

void CaseWalk::FetchDerived()
{
    if (road_.fetchesDerivedRecord && model_.needDerivedPredictor &&
        model_.transformationDictionary != nullptr && !derivedInRecord_) {
        derivedRecord_ = model_.transformationDictionary->GetValuesForDerivedVars(
            record_, model_.dictionary, state_.derivation);
    }
}

ScoreValue* CaseWalk::FindValue(size_t predictor, const ScoreDictVar* var) const
{
    ScoreValue* value = nullptr;
    if (derivedInRecord_ || !model_.predictorIsDerived[predictor]) {
        bool bound = false;
        value = ValueAtPosition(predictor, bound);
        if (value == nullptr) value = record_->GetValue(var->GetName());
    }
    // The derived record has no positions.
    if (value == nullptr && derivedRecord_ != nullptr) {
        value = derivedRecord_->GetValue(var->GetName());
    }
    return value;
}

const ScoreValue* CaseWalk::FindByPosition(size_t predictor) const
{
    const ScoreValue* value = nullptr;
    if (derivedInRecord_ || !model_.predictorIsDerived[predictor]) {
        bool bound = false;
        value = ValueAtPosition(predictor, bound);
    }
    if (value == nullptr && derivedRecord_ != nullptr) {
        value = derivedRecord_->GetValue(model_.predictorVars[predictor]->GetName());
    }
    return value;
}

void CaseWalk::GatherValues(size_t count)
{
    const ScoreValue** const refs = state_.valueRefs.data();
    for (size_t i = 0; i < count; ++i) {
        if (positions_ != nullptr && !road_.rereadsByName && (refs[i] = SureNumber(i)) != nullptr) {
            continue;
        }
        const ScoreDictVar* var = model_.predictorVars[i];
        ScoreValue* value = FindValue(i, var);
        if (road_.rereadsByName && model_.scoreCaseValidationCheck) {
            value = record_->GetValue(var->GetName());
        }
        state_.valueRefs[i] = value;
        if (!model_.scoreCaseValidationCheck || !IsBad(value, *var)) continue;
        if (state_.policy == ScoreModel::MV_SUBSTITUTE && SubstituteValue(i, var, value)) {
            continue;
        }
        FailCase(i);
    }
}

void CaseWalk::JudgeNumber(size_t predictor, const ScoreValue* value)
{
    const ScoreDictVar* var = model_.predictorVars[predictor];
    double& number = state_.numbers[predictor];
    if (road_.clearsNumbers) number = 0.0;
    bool bad = value == nullptr;
    bool judged = false;
    if (value != nullptr) {
        switch (value->Kind()) {
            case ScoreValue::NUMERIC:
            case ScoreValue::DATETIME: number = NumericReading(*value, *var); break;
            case ScoreValue::STRING: {
                const CatEncoder* encoder = var->GetCatEncoder();
                const int position = encoder == nullptr ? -1 : encoder->EncodeValue(value);
                number = position;
                bad = position == -1;
                judged = true;  // a text is judged by its position alone
                break;
            }
        }
    }
    if (!model_.scoreCaseValidationCheck) return;
    if (!bad && !judged) bad = IsBad(value, *var);
    if (!bad) return;
    if (state_.policy == ScoreModel::MV_SUBSTITUTE && !model_.predictorSubstitutes.empty() &&
        !NumericValue::IsSystemMissingValue(model_.predictorSubstitutes[predictor])) {
        number = model_.predictorSubstitutes[predictor];
        return;
    }
    FailCase(predictor);
}

bool CaseWalk::HasEveryValue(size_t count)
{
    for (size_t i = 0; i < count; ++i) {
        if (state_.valueRefs[i] != nullptr) continue;
        SetStatus(MCScore::kCaseNotScorable, model_.predictorVars[i]);
        return false;
    }
    return true;
}

bool CaseWalk::IsCovariate(size_t predictor, const ScoreDictVar* var) const
{
    if (road_.substitute == Substitute::ReplacementAlone) {
        return model_.GetVarRole(var->GetName()) == ScoreModel::ROLE_COVARIATE;
    }
    return model_.predictorRoles[predictor] == ScoreModel::ROLE_COVARIATE;
}

bool CaseWalk::SubstituteValue(size_t predictor, const ScoreDictVar* var, ScoreValue* value)
{
    const VarStats* stats = var->GetVarStats();
    if (stats == nullptr || !IsCovariate(predictor, var)) return false;
    const ScoreValue* replacement = stats->GetMissingReplacement();
    double number = 0.0;
    if (road_.substitute != Substitute::ReplacementOrMean) {
        if (replacement == nullptr) return false;
        if (road_.substitute == Substitute::KnownReplacement && replacement->IsMissingValue()) {
            return false;
        }
        number = replacement->GetDouble();
    } else {
        number = replacement != nullptr ? replacement->GetDouble() : stats->GetMean();
        if (NumericValue::IsSystemMissingValue(number)) return false;
    }
    if (value != nullptr && value->Kind() == ScoreValue::NUMERIC) {
        // The record's own object is overwritten, on purpose: the caller sees what was scored.
        static_cast<NumericValue*>(value)->SetDoubleValue(number);
    } else {
        // No number to overwrite: the model's own stands in.
        state_.substitutes[predictor].SetDoubleValue(number);
        state_.valueRefs[predictor] = &state_.substitutes[predictor];
    }
    return true;
}

void CaseWalk::FailCase(size_t predictor)
{
    switch (state_.policy) {
        case ScoreModel::MV_SUBSTITUTE:
        case ScoreModel::MV_SYSMIS_RESULT: WriteMissingPrediction(); break;
        case ScoreModel::MV_STATUS_ONLY:
            if (!road_.failsUnderStatusOnly) return;
            break;
        default: return;  // any other policy lets the value stand
    }
    SetStatus(MCScore::kCaseNotScorable, model_.predictorVars[predictor]);
    // The walk goes on after a bad value, so the last one is the one that is named.
    if (road_.namesBadPredictor) status_.SetDiscreteDatum(0, static_cast<long>(predictor));
}

void CaseWalk::ReadValues(size_t count)
{
    using Reading = TermPlan::Reading;
    for (size_t k = 0; k < count; ++k) {
        const ScoreValue* value = state_.valueRefs[k];
        switch (model_.plan.readings[k]) {
            case Reading::Number:
                state_.numbers[k] =
                    value == nullptr ? 0.0 : NumericReading(*value, *model_.predictorVars[k]);
                break;
            case Reading::FactorNumber:
                state_.numbers[k] = value != nullptr && value->Kind() == ScoreValue::NUMERIC
                                        ? static_cast<const NumericValue*>(value)->GetDouble()
                                        : std::numeric_limits<double>::quiet_NaN();
                break;
            case Reading::Code: state_.codes[k] = model_.plan.codes[k].Find(value); break;
        }
    }
}

void CaseWalk::WritePrediction(double value)
{
    ScoreValue* prediction = fresh_ ? nullptr : result_->GetPrediction();
    if (prediction != nullptr && prediction->Kind() == ScoreValue::NUMERIC) {
        static_cast<NumericValue*>(prediction)->SetDoubleValue(value);
    } else {
        result_->SetPrediction(new NumericValue(value));
    }
}

void CaseWalk::WriteMissingPrediction()
{
    constexpr double kMissing = NumericValue::GetSysmisValue();
    switch (road_.missingPrediction) {
        case MissingPrediction::FreshNumber:
            result_->SetPrediction(new NumericValue(kMissing));
            return;
        case MissingPrediction::Number: WritePrediction(kMissing); return;
        case MissingPrediction::TargetTyped: break;
    }
    ScoreValue* prediction = fresh_ ? nullptr : result_->GetPrediction();
    if (prediction != nullptr) {
        if (prediction->Kind() == ScoreValue::NUMERIC) {
            static_cast<NumericValue*>(prediction)->SetDoubleValue(kMissing);
        } else if (prediction->Kind() == ScoreValue::STRING) {
            static_cast<StringValue*>(prediction)->SetString("NULL");
        }
    } else if (model_.targetVar != nullptr &&
               model_.targetVar->GetValueType() == ScoreDictVar::NUMERIC) {
        result_->SetPrediction(new NumericValue(kMissing));
    } else {
        SetNewPrediction(new StringValue(""));
    }
}

void CaseWalk::WriteCategory(const std::string& name)
{
    ScoreValue* prediction = fresh_ ? nullptr : result_->GetPrediction();
    if (prediction != nullptr && prediction->Kind() == ScoreValue::NUMERIC) {
        static_cast<NumericValue*>(prediction)->SetDoubleValue(NumericValue(name).GetDouble());
    } else if (prediction != nullptr && prediction->Kind() == ScoreValue::STRING) {
        static_cast<StringValue*>(prediction)->SetString(name);
    } else {
        SetNewPrediction(model_.targetVar->MakeValue(name));
    }
}

void CaseWalk::SetNewPrediction(ScoreValue* value)
{
    if (value->Kind() == ScoreValue::STRING) {
        size_t longest = 0;
        for (const auto& [name, row] : model_.categoryMap) longest = std::max(longest, name.size());
        static_cast<StringValue*>(value)->Reserve(longest);
    }
    result_->SetPrediction(value);
}

void CaseWalk::WritePercent(const std::string& name, double percent)
{
    if (appendsPercents_) {
        percents_->AddValuePercent(model_.targetVar->MakeValue(name), percent);
    } else {
        // The categories come in the order in which they were appended.
        percents_->SetPercentAt(nextPercent_++, name, percent);
    }
}

}  // namespace MCVelscore_850
