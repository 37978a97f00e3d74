// Questions, one row each; every row's model predicts from 10 numeric predictors and the result
// object is reused:
//   glr10_predict  GLRModel, SetPredictionOnly(true); meant to stay under 150 ns and 10 plain loops
//   glr10_full     the same with standard error and limits: what the double loop over V costs
//   lr10_predict   LRModel, SetPredictionOnly(true)
//   lr10_full      the same with standard error and limits
//
// Beside each stands a plain loop over flat arrays that computes the same linear predictor, and for
// the full rows the same quadratic form; the ratio is the figure to keep. Times are of batches of
// 100 cases: the median, and the 99th percentile, which is meant to stay under 300 ns. The values
// of the case change with every call. Each row first checks one score against the plain loop.
//
//   score_bench [BATCHES]

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
#include "models/glrmodel.h"
#include "models/lrmodel.h"
#include "models/lrresult.h"

using namespace MCVelscore_850;
using namespace MCVelscore_850::bench;

namespace {

constexpr size_t kPredictors = 10;
constexpr size_t kParameters = kPredictors + 1;

// The numbers of every model: betas with the intercept last, and a covariance matrix.
struct Numbers {
    std::array<double, kParameters> betas;
    std::array<std::array<double, kParameters>, kParameters> covariances;
    Numbers()
    {
        for (size_t i = 0; i < kParameters; ++i) {
            betas[i] = 0.37 * static_cast<double>(i) - 1.1;
            for (size_t j = 0; j < kParameters; ++j) {
                const double distance = std::fabs(static_cast<double>(i) - static_cast<double>(j));
                covariances[i][j] = i == j ? 2.0 : 0.01 * distance;
            }
        }
    }
};

const Numbers kNumbers;

// What a score is compared with: the same numbers in flat arrays, nothing else.
double PlainPrediction(const std::array<double, kPredictors>& x)
{
    double lp = kNumbers.betas[kPredictors];
    for (size_t i = 0; i < kPredictors; ++i) lp += kNumbers.betas[i] * x[i];
    return lp;
}

double PlainError(const std::array<double, kPredictors>& x)
{
    std::array<double, kParameters> d{};
    std::copy(x.begin(), x.end(), d.begin());
    d[kPredictors] = 1.0;
    double v = 0.0;
    for (size_t i = 0; i < kParameters; ++i) {
        for (size_t j = 0; j < kParameters; ++j) v += kNumbers.covariances[i][j] * d[i] * d[j];
    }
    return std::sqrt(v);
}

std::string NameOf(const char* kind, size_t i) { return fmt::format("{}{}", kind, i); }

template <class Model>
class Fixture {
public:
    explicit Fixture(bool predictionOnly)
    {
        auto* dictionary = new BaseDictionary;  // the model's
        model.SetScoreDictionary(dictionary);
        const auto add = [&](const std::string& name) {
            DictVarType type;
            type.name = name;
            auto* var = new DictVar(type);
            dictionary->AddVar(name, var);
            return var;
        };
        model.SetTargetVar(add("y"));
        std::vector<std::string> names;
        for (size_t i = 0; i < kPredictors; ++i) {
            names.push_back(NameOf("x", i));
            model.SetVarRole(add(names.back()), ScoreModel::ROLE_COVARIATE);
            model.AddPredictor(names.back());
        }
        for (size_t i = 0; i < kParameters; ++i) model.AddParameter(NameOf("b", i), "");
        model.SetDF(89.0);
        if (!model.Setup()) std::abort();
        PCovMatrix& covariances = *model.CreatePCovMatrix();
        for (size_t i = 0; i < kParameters; ++i) {
            model.GetParamTable()->SetCell(model.GetDummyCategory(), NameOf("b", i),
                                           ParamTableCell(kNumbers.betas[i], 1));
            for (size_t j = 0; j <= i; ++j) {
                covariances.SetCell(NameOf("b", i), NameOf("b", j), kNumbers.covariances[i][j]);
            }
            if (i == kPredictors || model.GetNumericPPMatrix().empty()) continue;
            model.GetNumericPPMatrix()[i][i] = 1.0;
        }
        model.FinishSetup();
        model.SetPredictionOnly(predictionOnly);
        record = std::make_unique<CaseRecord>(names);
        for (size_t i = 0; i < kPredictors; ++i) {
            auto value = std::make_unique<NumericValue>(0.0);
            values[i] = value.get();
            record->Own(static_cast<int>(i), std::move(value));
        }
    }
    ~Fixture() { delete result; }

    void Give(const std::array<double, kPredictors>& x)
    {
        for (size_t i = 0; i < kPredictors; ++i) values[i]->SetDoubleValue(x[i]);
    }
    double Score()
    {
        if (!model.GetScore(record.get(), result, true).IsOK()) std::abort();
        return result->GetPrediction()->GetDouble();
    }

    Model model;
    std::unique_ptr<CaseRecord> record;
    std::array<NumericValue*, kPredictors> values{};
    ScoreResult* result = nullptr;
};

template <class Model>
void Run(const char* name, bool predictionOnly, int batches)
{
    Fixture<Model> fixture(predictionOnly);
    std::array<double, kPredictors> x{};
    for (size_t i = 0; i < kPredictors; ++i) x[i] = 1.5 + 0.25 * static_cast<double>(i);

    fixture.Give(x);
    const double wrong = std::fabs(fixture.Score() - PlainPrediction(x));
    const auto& answer = static_cast<const LRResult&>(*fixture.result);
    const double wrongError = predictionOnly ? 0.0 : std::fabs(answer.GetStdDev() - PlainError(x));
    if (wrong > 1e-12 || wrongError > 1e-12) {
        std::fprintf(stderr, "%s: the score isn't the plain loop's\n", name);
        std::exit(1);
    }

    const std::vector<double> plain = Batches(batches, [&](int i) {
        x[0] = 1.5 + i;
        asm volatile("" : : "r"(x.data()) : "memory");  // the arrays are read anew in every case
        return PlainPrediction(x) + (predictionOnly ? 0.0 : PlainError(x));
    });
    const std::vector<double> scored = Batches(batches, [&](int i) {
        fixture.values[0]->SetDoubleValue(1.5 + i);
        return fixture.Score();
    });
    PrintRow(name, scored, plain);
}

}  // namespace

int main(int argc, char** argv)
{
    const int batches = Begin(argc, argv);
    if (batches < 1) return 1;
    Run<GLRModel>("glr10_predict", true, batches);
    Run<GLRModel>("glr10_full", false, batches);
    Run<LRModel>("lr10_predict", true, batches);
    Run<LRModel>("lr10_full", false, batches);
    return 0;
}
