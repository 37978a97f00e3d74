// Questions: what one GetScore of a GZLRModel costs under each link, from 10 numeric predictors
// with a reused result; rows NAME_predict with SetPredictionOnly(true), rows NAME_full with the
// standard error of the linear predictor and both limits.
//
// Beside each stands a plain loop over flat arrays with the same inverse link (for the full rows
// the same quadratic form and the inverse at both ends too); the ratio is the figure to keep. Times
// are of batches of 100 cases: the median, and the 99th percentile. The values of the case change
// with every call. Each row first checks one score against the plain loop.
//
//   link_bench [BATCHES]

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
#include "models/gzlrmodel.h"
#include "models/lrresult.h"

using namespace MCVelscore_850;
using namespace MCVelscore_850::bench;

namespace {

constexpr size_t kPredictors = 10;
constexpr size_t kParameters = kPredictors + 1;  // the last one is the intercept
constexpr double kZ = 1.959963984540054;
constexpr double kLinkParameter = 0.3;

using Values = std::array<double, kPredictors>;

double Beta(size_t p) { return p == kPredictors ? 0.0 : 0.01 * static_cast<double>(p) + 0.01; }
double Covariance(size_t i, size_t j) { return i == j ? 0.002 : 0.0001; }

// The same numbers in flat arrays.
struct Plain {
    std::array<double, kParameters> betas;
    std::array<std::array<double, kParameters>, kParameters> covariances;
    Plain()
    {
        for (size_t i = 0; i < kParameters; ++i) {
            betas[i] = Beta(i);
            for (size_t j = 0; j < kParameters; ++j) covariances[i][j] = Covariance(i, j);
        }
    }
    double LinearPredictor(const Values& x) const
    {
        double lp = betas[kPredictors];
        for (size_t i = 0; i < kPredictors; ++i) lp += betas[i] * x[i];
        return lp;
    }
    double Error(const Values& x) const
    {
        std::array<double, kParameters> d{};
        std::copy(x.begin(), x.end(), d.begin());
        d[kPredictors] = 1.0;
        double v = 0.0;
        for (size_t i = 0; i < kParameters; ++i) {
            for (size_t j = 0; j < kParameters; ++j) v += covariances[i][j] * d[i] * d[j];
        }
        return std::sqrt(v);
    }
};

const Plain kPlain;

// The inverse links as one would write them in a line. The linear predictors of the bench have the
// sign that gives every link a mean.
double Odds(double t) { return t / (1.0 + t); }
struct Link {
    const char* name;
    GZLRModel::LinkFunction link;
    double sign;
    double (*inverse)(double eta);
};
const Link kLinks[] = {
    {"identity", GZLRModel::LINK_IDENTITY, 1.0, [](double eta) { return eta; }},
    {"cloglog", GZLRModel::LINK_CLOGLOG, 1.0,
     [](double eta) { return 1.0 - std::exp(-std::exp(eta)); }},
    {"log", GZLRModel::LINK_LOG, 1.0, [](double eta) { return std::exp(eta); }},
    {"logc", GZLRModel::LINK_LOGC, -1.0, [](double eta) { return 1.0 - std::exp(eta); }},
    {"logit", GZLRModel::LINK_LOGIT, 1.0, [](double eta) { return Odds(std::exp(eta)); }},
    {"negbin", GZLRModel::LINK_NEGBIN, -1.0,
     [](double eta) { return std::exp(eta) / (1.0 - std::exp(eta)) / kLinkParameter; }},
    {"nloglog", GZLRModel::LINK_NLOGLOG, 1.0, [](double eta) { return std::exp(-std::exp(-eta)); }},
    {"oddspower", GZLRModel::LINK_ODDSPOWER, 1.0,
     [](double eta) { return Odds(std::pow(1.0 + eta * kLinkParameter, 1.0 / kLinkParameter)); }},
    {"power", GZLRModel::LINK_POWER, 1.0,
     [](double eta) { return std::pow(eta, 1.0 / kLinkParameter); }},
    {"probit", GZLRModel::LINK_PROBIT, 1.0,
     [](double eta) { return 0.5 * std::erfc(-eta / std::sqrt(2.0)); }},
};

class Fixture {
public:
    Fixture(const Link& link, bool predictionOnly)
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
            names.push_back(fmt::format("x{}", i));
            model.SetVarRole(add(names.back()), ScoreModel::ROLE_COVARIATE);
            model.AddPredictor(names.back());
        }
        const auto parameter = [](size_t i) { return fmt::format("b{}", i); };
        for (size_t i = 0; i < kParameters; ++i) model.AddParameter(parameter(i), "");
        model.SetLinkFunction(link.link);
        model.SetLinkParameter(kLinkParameter);
        if (!model.Setup()) std::abort();
        PCovMatrix& covariances = *model.CreatePCovMatrix();
        for (size_t i = 0; i < kParameters; ++i) {
            model.GetParamTable()->SetCell(model.GetDummyCategory(), parameter(i),
                                           ParamTableCell(link.sign * Beta(i), 1));
            for (size_t j = 0; j <= i; ++j) {
                covariances.SetCell(parameter(i), parameter(j), Covariance(i, j));
            }
            if (i == kPredictors) continue;
            model.GetPPCMatrix()->SetCell(parameter(i), names[i], new NumericValue(1.0));
        }
        // The intercept of 0 would be passed over; a tiny one isn't, and changes no score.
        model.GetParamTable()->SetCell(model.GetDummyCategory(), parameter(kPredictors),
                                       ParamTableCell(1e-300, 1));
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

    void Give(const Values& x)
    {
        for (size_t i = 0; i < kPredictors; ++i) values[i]->SetDoubleValue(x[i]);
    }
    double Score()
    {
        if (!model.GetScore(record.get(), result, true).IsOK()) std::abort();
        return result->GetPrediction()->GetDouble();
    }
    const LRResult& Answer() const { return static_cast<const LRResult&>(*result); }

    GZLRModel model;
    std::unique_ptr<CaseRecord> record;
    std::array<NumericValue*, kPredictors> values{};
    ScoreResult* result = nullptr;
};

struct Scores {
    double mean;
    double lower;
    double upper;
};

Scores PlainScores(const Link& link, const Values& x, bool predictionOnly)
{
    const double eta = link.sign * kPlain.LinearPredictor(x);
    if (predictionOnly) return {link.inverse(eta), 0.0, 0.0};
    const double margin = kZ * kPlain.Error(x);
    return {link.inverse(eta), link.inverse(eta - margin), link.inverse(eta + margin)};
}

bool Agree(double a, double b) { return std::fabs(a - b) <= 1e-12 * std::fabs(b) + 1e-15; }

void Run(const Link& link, bool predictionOnly, int batches)
{
    const std::string name = fmt::format("{}_{}", link.name, predictionOnly ? "predict" : "full");
    Fixture fixture(link, predictionOnly);
    Values x{};
    for (size_t i = 0; i < kPredictors; ++i) x[i] = 1.5 + 0.25 * static_cast<double>(i);
    fixture.Give(x);
    const double mean = fixture.Score();
    const Scores wanted = PlainScores(link, x, predictionOnly);
    if (!Agree(mean, wanted.mean) ||
        (!predictionOnly && (!Agree(fixture.Answer().GetCIBottom(), wanted.lower) ||
                             !Agree(fixture.Answer().GetCITop(), wanted.upper)))) {
        std::fprintf(stderr, "%s: the score isn't the plain loop's\n", name.c_str());
        std::exit(1);
    }

    const auto plain = Batches(batches, [&](int i) {
        x[0] = 1.5 + 0.01 * i;
        asm volatile("" : : "r"(x.data()) : "memory");  // the array is read anew in every case
        const Scores scores = PlainScores(link, x, predictionOnly);
        return scores.mean + scores.lower + scores.upper;
    });
    const auto scored = Batches(batches, [&](int i) {
        fixture.values[0]->SetDoubleValue(1.5 + 0.01 * i);
        return fixture.Score();
    });
    PrintRow(name.c_str(), scored, plain);
}

}  // namespace

int main(int argc, char** argv)
{
    const int batches = Begin(argc, argv);
    if (batches < 1) return 1;
    for (const bool predictionOnly : {true, false}) {
        for (const Link& link : kLinks) Run(link, predictionOnly, batches);
    }
    return 0;
}
