// Questions, one row each; every row's model is a Cox model centred by a base point, with 10
// covariates, and the result object is reused:
//   cells10 .. cells100k  one baseline of 10 to 100,000 cells, the end times spread over all of it:
//                         the time of a case must not grow with the cells
//   strata1k              1,000 strata of 100 cells, named by text, each case in another one
//
// Beside each stands a plain loop over flat arrays that computes the same survival, its look-up a
// bisection; the ratio is the figure to keep. Times are of batches of 100 cases: the median, and
// the 99th percentile. Each row first checks one score against the plain loop.
//
// Then, once each, what a document costs from its text to the finished model, in milliseconds, the
// XML library's tree included:
//   read100k   100,000 cells without strata
//   read1k     1,000 strata of 100 cells
//
//   cox_bench [BATCHES]

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
#include "engine/documents/documentloader.h"
#include "engine/documents/documenttree.h"
#include "host/values/numericvalue.h"
#include "host/values/stringvalue.h"
#include "host/variables/caserecord.h"
#include "host/variables/dictvar.h"
#include "models/coxregresult.h"
#include "models/coxregrmodel.h"
#include "readers/generalregressiontranslator.h"

using namespace MCVelscore_850;
using namespace MCVelscore_850::bench;

namespace {

constexpr size_t kPredictors = 10;
constexpr size_t kTimes = 4096;  // the end times that the cases go through, in no order

double Beta(size_t i) { return 0.031 * static_cast<double>(i) - 0.17; }
double Point(size_t i) { return 0.4 + 0.1 * static_cast<double>(i); }
std::string NameOf(const char* kind, size_t i) { return fmt::format("{}{}", kind, i); }

// What a score is compared with: the same numbers in flat arrays, nothing else.
struct Plain {
    std::array<double, kPredictors> betas{};
    std::array<double, kPredictors> terms{};
    std::vector<double> times;
    std::vector<double> hazards;

    explicit Plain(size_t cells)
    {
        for (size_t i = 0; i < kPredictors; ++i) {
            betas[i] = Beta(i);
            terms[i] = Beta(i) * Point(i);
        }
        for (size_t i = 0; i < cells; ++i) {
            times.push_back(static_cast<double>(i));
            hazards.push_back(1.0 / static_cast<double>(cells) * static_cast<double>(i));
        }
    }
    double Survival(const std::array<double, kPredictors>& x, double t) const
    {
        double lp = 0.0;
        for (size_t i = 0; i < kPredictors; ++i) lp += betas[i] * x[i] - terms[i];
        const auto after = std::upper_bound(times.begin(), times.end(), t) - times.begin();
        return 1.0 / std::exp(std::exp(lp) * hazards[static_cast<size_t>(after) - 1]);
    }
};

class Fixture {
public:
    Fixture(size_t cells, size_t strata)
    {
        auto* dictionary = new BaseDictionary;  // the model's
        model.SetScoreDictionary(dictionary);
        const auto add = [&](const std::string& name, ScoreDictVar::ValueType type) {
            DictVarType about;
            about.name = name;
            about.valueType = type;
            auto* var = new DictVar(about);
            dictionary->AddVar(name, var);
            return var;
        };
        model.SetTargetVar(add("status", ScoreDictVar::NUMERIC));
        std::vector<std::string> names;
        std::vector<double> points;
        for (size_t i = 0; i < kPredictors; ++i) {
            names.push_back(NameOf("x", i));
            model.SetVarRole(add(names.back(), ScoreDictVar::NUMERIC), ScoreModel::ROLE_COVARIATE);
            model.AddPredictor(names.back());
            model.AddParameter(NameOf("b", i), "");
            points.push_back(Point(i));
        }
        for (const char* name : {"time", "s"}) names.emplace_back(name);
        add("time", ScoreDictVar::NUMERIC);
        add("s", ScoreDictVar::STRING);
        model.SetEndTimeVariableName("time");
        model.SetBasePointTable(points);

        const Plain plain(cells);
        CoxRegModel::HazardTable table;
        for (size_t i = 0; i < cells; ++i) table.emplace(plain.times[i], plain.hazards[i]);
        std::vector<std::string> categories;
        for (size_t i = 0; i < strata; ++i) categories.push_back(NameOf("stratum ", i));
        const size_t tables = std::max<size_t>(strata, 1);
        model.SetCumHazardTable(std::vector<CoxRegModel::HazardTable>(tables, table), categories,
                                strata == 0 ? "" : "s");
        model.SetMinMaxTime(std::vector<double>(tables, 0.0),
                            std::vector<double>(tables, static_cast<double>(cells)));
        if (!model.Setup()) std::abort();
        for (size_t i = 0; i < kPredictors; ++i) {
            model.GetParamTable()->SetCell(model.GetDummyCategory(), NameOf("b", i),
                                           ParamTableCell(Beta(i), 1));
            model.GetPPCMatrix()->SetCell(NameOf("b", i), NameOf("x", i), new NumericValue(1.0));
        }
        model.FinishSetup();

        record = std::make_unique<CaseRecord>(names);
        for (size_t i = 0; i <= kPredictors; ++i) {
            auto value = std::make_unique<NumericValue>(0.0);
            numbers[i] = value.get();
            record->Own(static_cast<int>(i), std::move(value));
        }
        auto text = std::make_unique<StringValue>("");
        stratum = text.get();
        record->Own(static_cast<int>(kPredictors) + 1, std::move(text));
    }
    ~Fixture() { delete result; }

    double Score(double time)
    {
        numbers[kPredictors]->SetDoubleValue(time);
        if (!model.GetScore(record.get(), result, true).IsOK()) std::abort();
        return result->GetPrediction()->GetDouble();
    }

    CoxRegModel model;
    std::unique_ptr<CaseRecord> record;
    std::array<NumericValue*, kPredictors + 1> numbers{};  // the last is the time
    StringValue* stratum = nullptr;
    ScoreResult* result = nullptr;
};

void Run(const char* name, size_t cells, size_t strata, int batches)
{
    Fixture fixture(cells, strata);
    const Plain plain(cells);
    std::array<double, kPredictors> x{};
    for (size_t i = 0; i < kPredictors; ++i) {
        x[i] = 0.3 + 0.05 * static_cast<double>(i);
        fixture.numbers[i]->SetDoubleValue(x[i]);
    }
    std::vector<double> times;
    std::vector<std::string> categories;
    for (size_t i = 0; i < kTimes; ++i) {
        times.push_back(static_cast<double>((i * 2654435761U) % cells) + 0.5);
        categories.push_back(NameOf("stratum ", (i * 40503U) % std::max<size_t>(strata, 1)));
    }
    fixture.stratum->Assign(categories[0]);
    if (std::fabs(fixture.Score(times[0]) - plain.Survival(x, times[0])) > 1e-12) {
        std::fprintf(stderr, "%s: the score isn't the plain loop's\n", name);
        std::exit(1);
    }
    size_t next = 0;
    const auto compared = Batches(batches, [&](int i) {
        x[0] = 0.01 * i + 0.2;
        asm volatile("" : : "r"(x.data()) : "memory");  // the array is read anew in every case
        return plain.Survival(x, times[++next % kTimes]);
    });
    const auto scored = Batches(batches, [&](int i) {
        fixture.numbers[0]->SetDoubleValue(0.01 * i + 0.2);
        ++next;
        if (strata > 0) fixture.stratum->Assign(categories[next % kTimes]);
        return fixture.Score(times[next % kTimes]);
    });
    PrintRow(name, scored, compared);
}

std::string MakeDocument(int strata, int cells)
{
    std::string tables;
    for (int s = 0; s < strata; ++s) {
        if (strata > 1)
            tables += fmt::format("<BaselineStratum value=\"{}\" maxTime=\"1e6\">\n", s);
        for (int i = 0; i < cells; ++i) {
            tables += fmt::format("<BaselineCell time=\"{}\" cumHazard=\"{:.17g}\"/>\n", i,
                                  1.0 / 3.0 * i);
        }
        if (strata > 1) tables += "</BaselineStratum>\n";
    }
    return fmt::format(
        R"(<PMML version="4.4"><DataDictionary>
<DataField name="status" optype="continuous" dataType="double"/>
<DataField name="time" optype="continuous" dataType="double"/>
<DataField name="x" optype="continuous" dataType="double"/></DataDictionary>
<GeneralRegressionModel modelType="CoxRegression" functionName="regression"
 endTimeVariable="time"{}><MiningSchema><MiningField name="status" usageType="target"/>
<MiningField name="time"/><MiningField name="x"/></MiningSchema>
<ParameterList><Parameter name="b"/></ParameterList>
<CovariateList><Predictor name="x"/></CovariateList>
<PPMatrix><PPCell value="1" predictorName="x" parameterName="b"/></PPMatrix>
<ParamMatrix><PCell parameterName="b" beta="0.5" df="1"/></ParamMatrix>
<BaseCumHazardTables maxTime="1e6">
{}</BaseCumHazardTables></GeneralRegressionModel></PMML>)",
        strata > 1 ? " baselineStrataVariable=\"x\"" : "", tables);
}

void RunReading(const char* name, int strata, int cells)
{
    const std::string bytes = MakeDocument(strata, cells);
    std::vector<double> whole, reader;
    for (int round = 0; round < 7; ++round) {
        const auto begin = std::chrono::steady_clock::now();
        const Document document = LoadDocumentText(bytes, "bench");
        const auto built = std::chrono::steady_clock::now();
        const std::unique_ptr<ScoreModel> model(
            GeneralRegressionTranslator().ParseFromTree(document.GetTree().dom.get(), "UTF-8"));
        const auto end = std::chrono::steady_clock::now();
        const auto milliseconds = [](auto time) {
            return std::chrono::duration<double, std::milli>(time).count();
        };
        whole.push_back(milliseconds(end - begin));
        reader.push_back(milliseconds(end - built));
    }
    std::sort(whole.begin(), whole.end());
    std::sort(reader.begin(), reader.end());
    std::printf("%-14s %10.1f %10.1f\n", name, At(whole, 0.5), At(reader, 0.5));
}

}  // namespace

int main(int argc, char** argv)
{
    const int batches = Begin(argc, argv);
    if (batches < 1) return 1;
    Run("cells10", 10, 0, batches);
    Run("cells100", 100, 0, batches);
    Run("cells1k", 1000, 0, batches);
    Run("cells10k", 10000, 0, batches);
    Run("cells100k", 100000, 0, batches);
    Run("strata1k", 100, 1000, batches);
    std::printf("\n%-14s %10s %10s\n", "ms a document", "whole", "reader");
    RunReading("read100k", 1, 100000);
    RunReading("read1k", 1000, 100);
    return 0;
}
