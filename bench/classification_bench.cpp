// Questions, one row each; every row's model has 20 parameters in 10 numeric predictors (ten
// covariates, nine products of neighbours, an intercept), writes its probabilities, and the result
// object is reused:
//   mlr3    MLRModel, 3 categories; meant to stay under 8 plain loops
//   blr2    BLRModel, 2 categories
//   clr     CLRModel
//   or3     ORModel, logit, 3 categories
//   ogzlr3  OGZLRModel, logit, 3 categories
//
// Beside each stands a plain loop over flat arrays that computes the same probabilities; the ratio
// is the figure to keep. Times are of batches of 100 cases: the median, and the 99th percentile.
// The values of the case change with every call. Each row first checks one score against the plain
// loop.
//
//   classification_bench [BATCHES]

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include <fmt/format.h>

#include "bench/timing.h"
#include "host/model/scoreresult.h"
#include "host/values/numericvalue.h"
#include "host/variables/caserecord.h"
#include "host/variables/dictvar.h"
#include "models/blrmodel.h"
#include "models/clrmodel.h"
#include "models/mlrmodel.h"
#include "models/ogzlrmodel.h"
#include "models/ormodel.h"

using namespace MCVelscore_850;
using namespace MCVelscore_850::bench;

namespace {

constexpr size_t kPredictors = 10;
constexpr size_t kParameters = 20;  // the first one is the intercept
constexpr size_t kCategories = 3;
constexpr double kThresholds[] = {-0.4, 0.9};

using Case = std::array<double, kPredictors>;
using Probabilities = std::array<double, kCategories>;

// The beta of a category's row; the first category is the reference.
double Beta(size_t category, size_t parameter)
{
    const auto p = static_cast<double>(parameter);
    return category == 0 ? 0.0 : (0.031 * p - 0.27) * (category == 1 ? 1.0 : -0.6);
}

struct Betas {
    std::array<std::array<double, kParameters>, kCategories> rows;
    Betas()
    {
        for (size_t c = 0; c < kCategories; ++c) {
            for (size_t p = 0; p < kParameters; ++p) rows[c][p] = Beta(c, p);
        }
    }
};
const Betas kBetas;

// The predictors of a parameter: none, one, or two neighbours.
std::vector<size_t> PredictorsOf(size_t parameter)
{
    if (parameter == 0) return {};
    if (parameter <= kPredictors) return {parameter - 1};
    return {parameter - kPredictors - 1, parameter - kPredictors};
}

std::array<double, kParameters> PlainDesign(const Case& x)
{
    std::array<double, kParameters> d{};
    d[0] = 1.0;
    for (size_t i = 0; i < kPredictors; ++i) d[i + 1] = x[i];
    for (size_t i = 0; i + 1 < kPredictors; ++i) d[kPredictors + 1 + i] = x[i] * x[i + 1];
    return d;
}

template <size_t categories>
Probabilities PlainSoftmax(const Case& x)
{
    const auto d = PlainDesign(x);
    Probabilities p{};
    double sum = 0.0;
    for (size_t c = 0; c < categories; ++c) {
        double lp = 0.0;
        for (size_t j = 0; j < kParameters; ++j) lp += kBetas.rows[c][j] * d[j];
        p[c] = std::exp(lp);
        sum += p[c];
    }
    for (size_t c = 0; c < categories; ++c) p[c] /= sum;
    return p;
}

template <int sign>
Probabilities PlainOrdinal(const Case& x)
{
    const auto d = PlainDesign(x);
    double lp = 0.0;
    for (size_t j = 1; j < kParameters; ++j) lp += kBetas.rows[1][j] * d[j];
    const auto logistic = [](double eta) { return 1.0 / (1.0 + std::exp(-eta)); };
    const double f0 = logistic(kThresholds[0] + sign * lp);
    const double f1 = logistic(kThresholds[1] + sign * lp);
    return {f0, f1 - f0, 1.0 - f1};
}

std::string PredictorName(size_t i) { return fmt::format("x{}", i); }
std::string ParameterName(size_t p) { return fmt::format("b{}", p); }
std::string CategoryName(size_t c) { return fmt::format("category {}", c); }

template <class Model>
class Fixture {
public:
    explicit Fixture(size_t categories)
    {
        auto* dictionary = new BaseDictionary;  // the model's
        model.SetScoreDictionary(dictionary);
        DictVarType targetType;
        targetType.name = "y";
        targetType.level = ScoreDictVar::CATEGORICAL;
        targetType.valueType = ScoreDictVar::STRING;
        auto* target = new DictVar(targetType);
        for (size_t c = 0; c < categories; ++c) {
            const std::string name = CategoryName(c);
            target->AddCategory(target->MakeValue(name), name);
        }
        dictionary->AddVar("y", target);
        model.SetTargetVar(target);
        std::vector<std::string> names;
        for (size_t i = 0; i < kPredictors; ++i) {
            names.push_back(PredictorName(i));
            DictVarType type;
            type.name = names.back();
            auto* var = new DictVar(type);
            dictionary->AddVar(names.back(), var);
            model.SetVarRole(var, ScoreModel::ROLE_COVARIATE);
            model.AddPredictor(names.back());
        }
        for (size_t p = 0; p < kParameters; ++p) model.AddParameter(ParameterName(p), "");
        if (!model.Setup()) std::abort();
        for (size_t p = 0; p < kParameters; ++p) {
            for (const size_t k : PredictorsOf(p)) {
                model.GetPPCMatrix()->SetCell(ParameterName(p), PredictorName(k),
                                              new NumericValue(1.0));
                if (!model.GetNumericPPMatrix().empty()) model.GetNumericPPMatrix()[p][k] = 1.0;
            }
        }
        record = std::make_unique<CaseRecord>(names);
        for (size_t i = 0; i < kPredictors; ++i) {
            auto value = std::make_unique<NumericValue>(0.0);
            values[i] = value.get();
            record->Own(static_cast<int>(i), std::move(value));
        }
    }
    ~Fixture() { delete result; }

    void SetBeta(size_t category, size_t parameter, double beta)
    {
        const std::string name = CategoryName(category);
        model.GetParamTable()->SetCell(name, ParameterName(parameter), ParamTableCell(beta, 1));
    }
    void Give(const Case& x)
    {
        for (size_t i = 0; i < kPredictors; ++i) values[i]->SetDoubleValue(x[i]);
    }
    // The probability of the second category, or what the model predicts in its place.
    double Score()
    {
        if (!model.GetScore(record.get(), result, true).IsOK()) std::abort();
        if (result->GetScoreResultType() != ScoreResult::MLR_RESULT) {
            return result->GetPrediction()->GetDouble();
        }
        return static_cast<ScoreClsResult*>(result)->GetAllValuePercent()[1].second;
    }

    Model model;
    std::unique_ptr<CaseRecord> record;
    std::array<NumericValue*, kPredictors> values{};
    ScoreResult* result = nullptr;
};

template <class Model, class Plain>
void Run(const char* name, Fixture<Model>& fixture, Plain plainProbability, int batches)
{
    fixture.model.FinishSetup();
    Case x{};
    for (size_t i = 0; i < kPredictors; ++i) x[i] = 0.4 + 0.05 * static_cast<double>(i);
    fixture.Give(x);
    for (int twice = 0; twice < 2; ++twice) {  // the first case may take another way
        if (std::fabs(fixture.Score() - plainProbability(x)) > 1e-12) {
            std::fprintf(stderr, "%s: the score isn't the plain loop's\n", name);
            std::exit(1);
        }
    }
    const auto plain = Batches(batches, [&](int i) {
        x[0] = 0.01 * i + 0.2;
        asm volatile("" : : "r"(x.data()) : "memory");  // the array is read anew in every case
        return plainProbability(x);
    });
    const auto scored = Batches(batches, [&](int i) {
        fixture.values[0]->SetDoubleValue(0.01 * i + 0.2);
        return fixture.Score();
    });
    PrintRow(name, scored, plain);
}

template <class Model>
void SetOrdinalBetas(Fixture<Model>& fixture)
{
    for (size_t c = 0; c < std::size(kThresholds); ++c) fixture.SetBeta(c, 0, kThresholds[c]);
    for (size_t p = 1; p < kParameters; ++p) fixture.SetBeta(1, p, kBetas.rows[1][p]);
}

}  // namespace

int main(int argc, char** argv)
{
    const int batches = Begin(argc, argv);
    if (batches < 1) return 1;

    Fixture<MLRModel> multinomial(kCategories);
    for (size_t c = 1; c < kCategories; ++c) {
        for (size_t p = 0; p < kParameters; ++p) multinomial.SetBeta(c, p, kBetas.rows[c][p]);
    }
    Run(
        "mlr3", multinomial, [](const Case& x) { return PlainSoftmax<3>(x)[1]; }, batches);

    Fixture<BLRModel> binary(2);
    for (size_t p = 0; p < kParameters; ++p) binary.SetBeta(1, p, kBetas.rows[1][p]);
    Run(
        "blr2", binary, [](const Case& x) { return PlainSoftmax<2>(x)[1]; }, batches);

    Fixture<CLRModel> conditional(2);
    for (size_t p = 0; p < kParameters; ++p) conditional.SetBeta(0, p, kBetas.rows[1][p]);
    Run(
        "clr", conditional, [](const Case& x) { return PlainSoftmax<2>(x)[1]; }, batches);

    Fixture<ORModel> ordinal(kCategories);
    SetOrdinalBetas(ordinal);
    Run(
        "or3", ordinal, [](const Case& x) { return PlainOrdinal<1>(x)[1]; }, batches);

    Fixture<OGZLRModel> generalized(kCategories);
    SetOrdinalBetas(generalized);
    Run(
        "ogzlr3", generalized, [](const Case& x) { return PlainOrdinal<-1>(x)[1]; }, batches);
    return 0;
}
