#ifndef VELSCORE_TESTS_MODELS_MODELFIXTURE_H
#define VELSCORE_TESTS_MODELS_MODELFIXTURE_H

#include <map>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "host/expressions/expression.h"
#include "host/expressions/transformvar.h"
#include "host/model/mcstatus.h"
#include "host/model/scoreresult.h"
#include "host/values/numericvalue.h"
#include "host/values/stringvalue.h"
#include "host/variables/caserecord.h"
#include "host/variables/dictvar.h"
#include "host/variables/transformationdictionary.h"
#include "host/variables/varstats.h"
#include "models/regressionmodel.h"

namespace MCVelscore_850::testing {

inline constexpr double kSysmis = NumericValue::GetSysmisValue();

inline std::unique_ptr<DictVar> Continuous(const std::string& name)
{
    DictVarType type;
    type.name = name;
    return std::make_unique<DictVar>(type);
}

inline std::unique_ptr<DictVar> Categorical(
    const std::string& name, const std::vector<std::string>& categories,
    ScoreDictVar::ValueType valueType = ScoreDictVar::STRING)
{
    DictVarType type;
    type.name = name;
    type.level = ScoreDictVar::CATEGORICAL;
    type.valueType = valueType;
    auto var = std::make_unique<DictVar>(type);
    for (const std::string& text : categories) var->AddCategory(var->MakeValue(text), text);
    var->SetUpCatEncoder();
    return var;
}

inline void Replace(ScoreDictVar& var, double replacement)
{
    auto stats = std::make_unique<VarStats>();
    const NumericValue value(replacement);
    stats->SetMissingReplacement(&value);
    var.SetVarStats(stats.release());
}

/// An expression that yields the same number for every case.
class FixedNumber final : public Expression {
public:
    explicit FixedNumber(double number) : number_(number) {}
    void Evaluate(const ExpressionCase&, ExpressionValue& value) const override
    {
        value.SetNumber(number_);
    }
    void CollectInputs(std::vector<const ScoreDictVar*>&) const override {}
    int Height() const override { return 1; }

private:
    double number_;
};

/// A derived continuous variable of that number.
inline std::unique_ptr<TransformVar> Derived(const std::string& name, double number = 0.0)
{
    DictVarType type;
    type.name = name;
    return std::make_unique<TransformVar>(type, std::make_shared<FixedNumber>(number));
}

/// A family that scores nothing, for tests of what all families have.
class BareFamily : public RegressionModel {
public:
    MCScore::MCStatus ScoreCase(CaseState&, const ScoreCaseRecord*, ScoreResult*&,
                                bool) const override
    {
        return {};
    }
    std::unique_ptr<BatchScorer> MakeBlockScorer(const kernels::BlockKernels&) const override
    {
        return nullptr;
    }
    void ExplainCase(const CaseState&, CaseExplanation&) const override {}
    int GetModelType() const override { return TYPE_GLR; }
    bool Setup() override { return true; }
    void Describe(ModelDescription&) const override {}
};

/// A model with its dictionary, built in the order that readers keep.
template <class Model>
class Built {
public:
    Model model;

    explicit Built(const std::string& target = "y") { AddTarget(Continuous(target)); }
    explicit Built(std::unique_ptr<DictVar> target) { AddTarget(std::move(target)); }

    DictVar& Covariate(const std::string& name)
    {
        return Add(Continuous(name), RegressionModel::ROLE_COVARIATE);
    }
    DictVar& Factor(const std::string& name, const std::vector<std::string>& categories,
                    ScoreDictVar::ValueType type = ScoreDictVar::STRING)
    {
        return Add(Categorical(name, categories, type), RegressionModel::ROLE_FACTOR);
    }
    DictVar& Add(std::unique_ptr<DictVar> var, ScoreModel::VarRole role)
    {
        DictVar& added = *var;
        const std::string name = added.GetName();
        dictionary_->AddVar(name, var.release());
        model.SetVarRole(&added, role);
        model.AddPredictor(added.GetName());
        return added;
    }
    Built& Parameters(const std::vector<std::string>& names)
    {
        for (const std::string& name : names) model.AddParameter(name, name);
        return *this;
    }
    bool SetUp() { return model.Setup(); }
    /// A cell of the predictor-to-parameter matrix, in both forms.
    void Cell(const std::string& parameter, const std::string& predictor, const std::string& text)
    {
        const auto& var = static_cast<const DictVar&>(*dictionary_->GetVar(predictor));
        const bool string = var.GetValueType() == ScoreDictVar::STRING;
        std::unique_ptr<ScoreValue> value(var.MakeValue(text));
        const double number = string ? var.FindCategoryText(text) : value->GetDouble();
        model.GetPPCMatrix()->SetCell(parameter, predictor, value.release());
        auto& numbers = model.GetNumericPPMatrix();
        if (!numbers.empty()) {
            numbers[static_cast<size_t>(model.GetParameterIndex(parameter))]
                   [static_cast<size_t>(model.GetPredictorIndex(predictor))] = number;
        }
    }
    /// A covariate that the transformations derive: this number in each case.
    const TransformVar& DerivedCovariate(const std::string& name, double number)
    {
        auto* derived = new TransformationDictionary;  // the model's
        auto var = Derived(name, number);
        const TransformVar& made = *var;
        model.SetVarRole(var.get(), ScoreModel::ROLE_COVARIATE);
        derived->AddVar(name, var.release());
        derived->SetUpDerivedCaseRecord();
        model.SetTransformationScoreDictionary(derived);
        model.AddPredictor(name);
        model.SetNeedDerivedPredictor(true);
        return made;
    }
    void Beta(const std::string& parameter, double beta)
    {
        Beta(model.GetCategoryVector().at(0).first, parameter, beta);
    }
    /// The beta in the row of a target category.
    void Beta(const std::string& category, const std::string& parameter, double beta)
    {
        model.GetParamTable()->SetCell(category, parameter, ParamTableCell(beta, 1));
    }
    BaseDictionary& Dictionary() { return *dictionary_; }

private:
    void AddTarget(std::unique_ptr<DictVar> target)
    {
        dictionary_ = new BaseDictionary;
        model.SetScoreDictionary(dictionary_);
        const DictVar* var = target.get();
        const std::string name = target->GetName();
        dictionary_->AddVar(name, target.release());
        model.SetTargetVar(var);
    }
    BaseDictionary* dictionary_;  // the model's
};

/// One value of a case: a number, a text, or nothing.
struct Given {
    Given(double number) : value(std::make_unique<NumericValue>(number)) {}
    Given(int number) : Given(static_cast<double>(number)) {}
    Given(const char* text) : value(std::make_unique<StringValue>(text)) {}
    Given(std::nullptr_t) {}
    Given(std::unique_ptr<ScoreValue> v) : value(std::move(v)) {}
    std::unique_ptr<ScoreValue> value;
};

/// A record of named values.
class Case {
public:
    explicit Case(bool indexed = true) : indexed_(indexed) {}
    Case& With(const std::string& name, Given given)
    {
        names_.push_back(name);
        values_.push_back(std::move(given.value));
        return *this;
    }
    CaseRecord& Record()
    {
        if (!record_) {
            record_ = std::make_unique<CaseRecord>(names_, indexed_);
            for (size_t i = 0; i < values_.size(); ++i) {
                record_->Own(static_cast<int>(i), std::move(values_[i]));
            }
        }
        return *record_;
    }

private:
    bool indexed_;
    std::vector<std::string> names_;
    std::vector<std::unique_ptr<ScoreValue>> values_;
    std::unique_ptr<CaseRecord> record_;
};

/// A record of one variable whose position holds nothing while its name answers a number.
class TornRecord final : public ScoreCaseRecord {
public:
    TornRecord(const std::string& name, double number) : name_(name), number_(number) {}
    ScoreValue* GetValue(const std::string& name) const override
    {
        return name == name_ ? &number_ : nullptr;
    }
    ScoreValue* GetValue(int) const override { return nullptr; }
    bool HasIndexedAccess() const override { return true; }
    int GetVarIndex(const std::string& name) const override { return name == name_ ? 0 : -1; }
    const std::vector<ScoreValue*>* GetValues() const override { return &values_; }

private:
    std::string name_;
    mutable NumericValue number_;
    std::vector<ScoreValue*> values_{nullptr};
};

/// A result slot that releases what it holds.
class Slot {
public:
    ~Slot() { delete result; }
    ScoreResult* result = nullptr;
    template <class Result>
    Result& As()
    {
        return static_cast<Result&>(*result);
    }
    double Number() const { return result->GetPrediction()->GetDouble(); }
    std::string Text() const { return result->GetPrediction()->GetString(); }
    size_t PercentCount() const { return Percents().size(); }
    /// The probability of a category, by its text; -1 without one.
    double Percent(const std::string& category) const
    {
        for (const auto& [value, percent] : Percents()) {
            if (value->GetString() == category) return percent;
        }
        return -1.0;
    }

private:
    const ScoreClsResult::ValuePercents& Percents() const
    {
        return static_cast<const ScoreClsResult&>(*result).GetAllValuePercent();
    }
};

/// The standard error of the linear predictor of one case, in a run that asks for it.
inline double LinearPredictorError(const RegressionModel& model, Case c)
{
    const auto state = model.MakeState();
    state->wantsLinearPredictorError = true;
    Slot slot;
    EXPECT_TRUE(model.ScoreRow(*state, &c.Record(), slot.result, true).IsOK());
    return state->linearPredictorError;
}

}  // namespace MCVelscore_850::testing

#endif
