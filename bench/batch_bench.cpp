// How many rows a second one thread scores out of columns in memory, beside the same rows one at a
// time (ScoreRow, the record's values set anew) and a plain loop over the columns that computes the
// same numbers. Every model reads 10 columns of numbers, but for factors5; columns are larger than
// any cache.
//
//   linear, general         linear and general linear models, the prediction alone
//   general_full            the same with standard error and limits
//   missing1, missing10     general, where a value of 1 or 10 % of the rows is missing: these take
//   the
//                           one-row road
//   LINK                    generalized linear models: the mean
//   logit_classes           binary logistic: category and both probabilities
//   multinomial             3 categories, 20 parameters: category and probabilities
//   ordinal                 3 categories, cumulative logit
//   cox10, cox1k, cox100k   so many cells: survival and cumulative hazard
//   strata20                20 strata of 1,000 cells
//   factors5                5 factors of 8 categories, as dummies, and 5 covariates
//
// Rates are of thread CPU time, in millions of rows: the median of the rounds. Before it is
// measured a model's first rows are compared, bit by bit, with ScoreRow. The environment variable
// VELSCORE_INSTRUCTION_SET holds the kernels down to an instruction set.
//
//   batch_bench [ROUNDS [NAME]]

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <functional>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include <fmt/format.h>

#include "bench/timing.h"
#include "engine/documents/documentloader.h"
#include "engine/documents/documenttree.h"
#include "host/model/batchscorer.h"
#include "host/model/scoreresult.h"
#include "host/model/scoringstate.h"
#include "host/values/numericvalue.h"
#include "host/values/stringvalue.h"
#include "host/variables/caserecord.h"
#include "host/variables/scoredictvar.h"
#include "kernels/instructionset.h"
#include "models/mlrresult.h"
#include "readers/generalregressiontranslator.h"

using namespace MCVelscore_850;
using namespace MCVelscore_850::bench;

namespace {

constexpr size_t kNumbers = 10;
constexpr size_t kFactors = 5;
constexpr size_t kCategories = 8;
constexpr size_t kStrata = 20;
constexpr size_t kRows = size_t{1} << 20;
constexpr size_t kBlock = BatchScorer::kRows;

double Beta(size_t i) { return 0.037 * static_cast<double>(i) - 0.17; }

double Seconds()
{
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + 1e-9 * static_cast<double>(time.tv_nsec);
}

// Numbers x0 .., codes f0 .., an end time and a stratum; in `present` the rows that miss no value.
struct Table {
    std::vector<std::vector<double>> numbers;
    std::vector<std::vector<int32_t>> codes;
    std::vector<double> times;
    std::vector<int32_t> strata;
    std::vector<std::string> categories, stratumNames;

    explicit Table(size_t lastTime)
        : numbers(kNumbers, std::vector<double>(kRows)),
          codes(kFactors, std::vector<int32_t>(kRows)),
          times(kRows),
          strata(kRows)
    {
        std::mt19937_64 random(850);
        std::uniform_real_distribution<> number(-2.0, 2.0);
        for (auto& column : numbers) {
            for (double& x : column) x = number(random);
        }
        for (auto& column : codes) {
            for (int32_t& code : column) code = static_cast<int32_t>(random() % kCategories);
        }
        for (size_t row = 0; row < kRows; ++row) {
            times[row] = static_cast<double>(random() % lastTime) + 0.5;
            strata[row] = static_cast<int32_t>(random() % kStrata);
        }
        for (size_t i = 0; i < kCategories; ++i) categories.push_back(fmt::format("level {}", i));
        for (size_t i = 0; i < kStrata; ++i) stratumNames.push_back(fmt::format("stratum {}", i));
    }
};

// A document's pieces, as an exporter writes them.
struct Document {
    std::string fields, mining, parameters, factors, covariates, cells, betas, covariances, tables;
    std::string attributes;
    std::vector<std::string> names;

    void AddParameter(double beta, const std::string& category = "")
    {
        const std::string name = fmt::format("b{}", names.size());
        if (category.empty() || category == "c1") {
            parameters += fmt::format("<Parameter name=\"{}\"/>", name);
            names.push_back(name);
        }
        betas += fmt::format(
            "<PCell parameterName=\"{}\" beta=\"{:.17g}\" df=\"1\"{}/>", names.back(), beta,
            category.empty() ? "" : fmt::format(" targetCategory=\"{}\"", category));
    }
    void AddCell(const std::string& predictor, const std::string& value)
    {
        cells += fmt::format("<PPCell value=\"{}\" predictorName=\"{}\" parameterName=\"{}\"/>",
                             value, predictor, names.back());
    }
    void AddField(const std::string& name, const std::string& type, const std::string& values = "",
                  const char* usage = "active")
    {
        fields += fmt::format("<DataField name=\"{}\" optype=\"{}\" dataType=\"{}\">{}</DataField>",
                              name, values.empty() ? "continuous" : "categorical", type, values);
        mining += fmt::format("<MiningField name=\"{}\" usageType=\"{}\"/>", name, usage);
    }
    void AddNumbers(size_t count = kNumbers)
    {
        for (size_t i = 0; i < count; ++i) {
            AddField(fmt::format("x{}", i), "double");
            covariates += fmt::format("<Predictor name=\"x{}\"/>", i);
        }
    }
    void AddCovariances()
    {
        for (size_t i = 0; i < names.size(); ++i) {
            for (size_t j = 0; j <= i; ++j) {
                covariances +=
                    fmt::format("<PCovCell pRow=\"{}\" pCol=\"{}\" value=\"{}\"/>", names[i],
                                names[j], i == j ? 2.0 : 0.01 * static_cast<double>(i - j));
            }
        }
    }
    std::string Text(const std::string& modelType, const char* function) const
    {
        return fmt::format(
            R"(<PMML version="4.4"><Header/><DataDictionary>{}</DataDictionary>
<GeneralRegressionModel modelType="{}" functionName="{}" modelDF="100" {}><MiningSchema>{}</MiningSchema>
<ParameterList>{}</ParameterList>{}{}<PPMatrix>{}</PPMatrix>{}<ParamMatrix>{}</ParamMatrix>{}
</GeneralRegressionModel></PMML>)",
            fields, modelType, function, attributes, mining, parameters,
            factors.empty() ? "" : "<FactorList>" + factors + "</FactorList>",
            "<CovariateList>" + covariates + "</CovariateList>", cells,
            covariances.empty() ? "" : "<PCovMatrix>" + covariances + "</PCovMatrix>", betas,
            tables);
    }
};

std::string Values(const std::vector<std::string>& values)
{
    std::string text;
    for (const std::string& value : values) text += "<Value value=\"" + value + "\"/>";
    return text;
}

std::string NumberModel(const std::string& modelType, const std::string& attributes = "")
{
    Document document;
    document.attributes = attributes;
    document.AddField("y", "double", "", "target");
    document.AddNumbers();
    for (size_t i = 0; i < kNumbers; ++i) {
        document.AddParameter(Beta(i));
        document.AddCell(fmt::format("x{}", i), "1");
    }
    document.AddParameter(0.3);
    document.AddCovariances();
    return document.Text(modelType, "regression");
}

std::string LinkModel(const std::string& link, double parameter)
{
    return NumberModel("generalizedLinear",
                       fmt::format("algorithmName=\"GZLM\" distribution=\"normal\" "
                                   "linkFunction=\"{}\" linkParameter=\"{}\"",
                                   link, parameter));
}

std::string MultinomialModel()
{
    Document document;
    document.AddField("y", "string", Values({"c1", "c2", "c3"}), "target");
    document.AddNumbers();
    for (size_t p = 0; p < 20; ++p) {
        for (const char* category : {"c1", "c2"}) {
            document.AddParameter(Beta(p) * (category[1] == '1' ? 1.0 : -0.6), category);
        }
        if (p > 0 && p <= kNumbers) document.AddCell(fmt::format("x{}", p - 1), "1");
        if (p > kNumbers) {
            document.AddCell(fmt::format("x{}", p - kNumbers - 1), "1");
            document.AddCell(fmt::format("x{}", p - kNumbers), "1");
        }
    }
    return document.Text("multinomialLogistic", "classification");
}

std::string ClassesModel()
{
    Document document;
    document.AddField("y", "string", Values({"c2", "c1"}), "target");
    document.AddNumbers();
    for (size_t p = 0; p <= kNumbers; ++p) {
        document.AddParameter(Beta(p), "c1");
        if (p > 0) document.AddCell(fmt::format("x{}", p - 1), "1");
    }
    return document.Text("multinomialLogistic", "classification");
}

std::string OrdinalModel()
{
    Document document;
    document.attributes = "cumulativeLink=\"logit\"";
    document.AddField("y", "string", Values({"c1", "c2", "c3"}), "target");
    document.AddNumbers();
    document.AddParameter(-0.4, "c1");
    document.betas += "<PCell parameterName=\"b0\" beta=\"0.9\" df=\"1\" targetCategory=\"c2\"/>";
    for (size_t i = 0; i < kNumbers; ++i) {
        document.AddParameter(Beta(i));
        document.AddCell(fmt::format("x{}", i), "1");
    }
    return document.Text("ordinalMultinomial", "classification");
}

std::string CoxModel(const Table& table, size_t strata, size_t cells)
{
    Document document;
    document.attributes = "endTimeVariable=\"time\"";
    if (strata > 0) document.attributes += " baselineStrataVariable=\"s\"";
    document.AddField("status", "double", "", "target");
    document.AddNumbers();
    document.AddField("time", "double");
    document.AddField("s", "string", Values(table.stratumNames));
    for (size_t i = 0; i < kNumbers; ++i) {
        document.AddParameter(Beta(i));
        document.AddCell(fmt::format("x{}", i), "1");
    }
    std::string baseline;
    for (size_t i = 0; i < cells; ++i) {
        baseline += fmt::format("<BaselineCell time=\"{}\" cumHazard=\"{}\"/>", i,
                                static_cast<double>(i) / static_cast<double>(cells));
    }
    document.tables = "<BaseCumHazardTables maxTime=\"1e6\">";
    if (strata == 0) document.tables += baseline;
    for (size_t s = 0; s < strata; ++s) {
        document.tables += fmt::format(
            "<BaselineStratum value=\"{}\" maxTime=\"1e6\">{}"
            "</BaselineStratum>",
            table.stratumNames[s], baseline);
    }
    document.tables += "</BaseCumHazardTables>";
    return document.Text("CoxRegression", "regression");
}

std::string FactorModel(const Table& table)
{
    Document document;
    document.AddField("y", "double", "", "target");
    for (size_t f = 0; f < kFactors; ++f) {
        document.AddField(fmt::format("f{}", f), "string", Values(table.categories));
        document.factors += fmt::format("<Predictor name=\"f{}\"/>", f);
    }
    document.AddNumbers(5);
    document.AddParameter(0.3);
    for (size_t f = 0; f < kFactors; ++f) {
        for (size_t c = 1; c < kCategories; ++c) {
            document.AddParameter(Beta(f + c));
            document.AddCell(fmt::format("f{}", f), table.categories[c]);
        }
    }
    for (size_t i = 0; i < 5; ++i) {
        document.AddParameter(Beta(i));
        document.AddCell(fmt::format("x{}", i), "1");
    }
    return document.Text("generalLinear", "regression");
}

// One model over the table, by block and by row.
class Run {
public:
    Run(const std::string& document, const Table& table, bool full, double missing)
        : table_(table), full_(full)
    {
        const MCVelscore_850::Document tree = LoadDocumentText(document, "bench");
        model_.reset(
            GeneralRegressionTranslator().ParseFromTree(tree.GetTree().dom.get(), "UTF-8"));
        model_->SetPredictionOnly(!full);
        scorer_ = model_->MakeBatchScorer();
        if (scorer_ == nullptr) std::abort();
        state_ = model_->MakeState();
        scratch_ = scorer_->MakeScratch();
        const size_t inputs = scorer_->Inputs().size();
        std::vector<std::string> names;
        for (size_t i = 0; i < inputs; ++i) names.push_back(scorer_->Inputs()[i]->GetName());
        record_ = std::make_unique<CaseRecord>(names);
        for (size_t i = 0; i < inputs; ++i) AddInput(i, names[i]);
        if (missing > 0.0) LoseValues(missing);
        results_.assign(10, std::vector<double>(kBlock));
        categories_.resize(kBlock);
        for (size_t c = 0; c < scorer_->Categories().size(); ++c) {
            probabilities_.push_back(results_[6 + c].data());
        }
        Compare();
    }
    ~Run() { delete result_; }

    // Seconds for the whole table, unsure rows by ScoreRow.
    double Blocks()
    {
        const double begin = Seconds();
        for (size_t row = 0; row < kRows; row += kBlock) {
            ScoreBlock(row);
            for (size_t w = 0; w < kBlock / 64; ++w) {
                for (uint64_t bits = unsure_[w]; bits != 0; bits &= bits - 1) {
                    ScoreRow(row + w * 64 + static_cast<size_t>(std::countr_zero(bits)));
                }
            }
        }
        return Seconds() - begin;
    }
    // Seconds for one row, over some of the table.
    double Row()
    {
        constexpr size_t kSome = kRows / 16;
        const double begin = Seconds();
        for (size_t row = 0; row < kSome; ++row) ScoreRow(row);
        return (Seconds() - begin) / kSome;
    }

private:
    void AddInput(size_t i, const std::string& name)
    {
        const size_t index = name.size() > 1 ? static_cast<size_t>(name[1] - '0') : 0;
        const std::vector<std::string>* texts = nullptr;
        BatchColumn column;
        if (name[0] == 'x') column.numbers = table_.numbers[index].data();
        if (name == "time") column.numbers = table_.times.data();
        if (name[0] == 'f') {
            column.codes = table_.codes[index].data();
            texts = &table_.categories;
        }
        if (name == "s") {
            column.codes = table_.strata.data();
            texts = &table_.stratumNames;
        }
        columns_.push_back(column);
        texts_.push_back(texts);
        const auto position = static_cast<int>(i);
        if (texts == nullptr) {
            record_->Own(position, std::make_unique<NumericValue>(0.0));
        } else {
            const std::vector<std::string_view> views(texts->begin(), texts->end());
            scorer_->BindTexts(i, views, *scratch_);
            record_->Own(position, std::make_unique<StringValue>(""));
        }
    }
    void LoseValues(double share)
    {
        std::mt19937_64 random(12);
        present_.assign(kRows / 8, 0xFF);
        for (size_t row = 0; row < kRows; ++row) {
            if (std::uniform_real_distribution<>(0.0, 1.0)(random) >= share) continue;
            present_[row / 8] = static_cast<uint8_t>(present_[row / 8] & ~(1U << (row % 8)));
        }
        columns_[0].present = present_.data();
    }
    void ScoreBlock(size_t row)
    {
        block_ = columns_;
        for (BatchColumn& column : block_) {
            if (column.numbers != nullptr) column.numbers += row;
            if (column.codes != nullptr) column.codes += row;
            if (column.present != nullptr) column.present += row / 8;
        }
        BatchResults results;
        results.prediction = results_[0].data();
        results.category = categories_.data();
        if (full_) {
            results.stdDev = results_[1].data();
            results.ciLower = results_[2].data();
            results.ciUpper = results_[3].data();
            results.cumHazard = results_[4].data();
        }
        results.probabilities = probabilities_.empty() ? nullptr : probabilities_.data();
        scorer_->Score(block_, kBlock, results, unsure_, *scratch_);
    }
    void ScoreRow(size_t row)
    {
        for (size_t i = 0; i < columns_.size(); ++i) {
            ScoreValue* value = record_->GetValue(static_cast<int>(i));
            if (texts_[i] != nullptr) {
                const auto code = static_cast<size_t>(columns_[i].codes[row]);
                static_cast<StringValue*>(value)->Assign((*texts_[i])[code]);
                continue;
            }
            const bool present = columns_[i].present == nullptr ||
                                 (columns_[i].present[row / 8] >> (row % 8) & 1) != 0;
            static_cast<NumericValue*>(value)->SetDoubleValue(
                present ? columns_[i].numbers[row] : NumericValue::GetSysmisValue());
        }
        model_->ScoreRow(*state_, record_.get(), result_, true);
    }
    void Compare()
    {
        ScoreRow(0);  // what a first case settles
        ScoreBlock(0);
        for (size_t row = 0; row < kBlock; ++row) {
            if ((unsure_[row / 64] >> (row % 64) & 1) != 0) {
                if (present_.empty()) Fail("a plain row is left");
                continue;
            }
            ScoreRow(row);
            const bool classifies = !scorer_->Categories().empty();
            const double found = classifies ? probabilities_[0][row] : results_[0][row];
            const StringValue first(classifies ? scorer_->Categories()[0] : "");
            const double wanted = classifies ? static_cast<MLRResult*>(result_)->GetPercent(&first)
                                             : result_->GetPrediction()->GetDouble();
            if (std::bit_cast<uint64_t>(found) != std::bit_cast<uint64_t>(wanted)) {
                std::fprintf(stderr, "row %zu: %.17g, one row %.17g\n", row, found, wanted);
                Fail("a block's row isn't the one row's");
            }
        }
    }
    [[noreturn]] static void Fail(const char* what)
    {
        std::fprintf(stderr, "batch_bench: %s\n", what);
        std::exit(1);
    }

    const Table& table_;
    bool full_;
    std::unique_ptr<ScoreModel> model_;
    std::unique_ptr<BatchScorer> scorer_;
    std::unique_ptr<ScoringState> state_;
    std::unique_ptr<BatchScorer::Scratch> scratch_;
    std::unique_ptr<CaseRecord> record_;
    std::vector<BatchColumn> columns_, block_;
    std::vector<const std::vector<std::string>*> texts_;
    std::vector<uint8_t> present_;
    std::vector<std::vector<double>> results_;
    std::vector<int32_t> categories_;
    std::vector<double*> probabilities_;
    uint64_t unsure_[kBlock / 64] = {};
    ScoreResult* result_ = nullptr;
};

// The plain loop: a linear predictor of the columns, row by row, and what is made of it.
template <class Function>
double PlainSeconds(const Table& table, Function function)
{
    double sink = 0.0;
    const double begin = Seconds();
    for (size_t row = 0; row < kRows; ++row) {
        double lp = 0.3;
        for (size_t i = 0; i < kNumbers; ++i) lp += Beta(i) * table.numbers[i][row];
        sink += function(lp);
    }
    const double time = Seconds() - begin;
    volatile double kept = sink;
    (void)kept;
    return time;
}

struct Question {
    const char* name;
    std::function<std::string(const Table&)> document;
    double (*plain)(double lp);
    bool full = false;
    double missing = 0.0;
    size_t lastTime = 1000;
};

double Same(double lp) { return lp; }
double Exponential(double lp) { return std::exp(lp); }
double Logistic(double lp) { return 1.0 / (1.0 + std::exp(-lp)); }
double Probit(double lp) { return 0.5 * std::erfc(-lp * 0.7071067811865476); }
double Power(double lp) { return std::pow(std::fabs(lp), 0.5); }
double Softmax(double lp)
{
    const double a = std::exp(lp), b = std::exp(-0.6 * lp);
    return a / (a + b + 1.0);
}
double Survival(double lp) { return 1.0 / std::exp(0.5 * std::exp(lp)); }

std::function<std::string(const Table&)> Fixed(std::string document)
{
    return [document = std::move(document)](const Table&) { return document; };
}
std::function<std::string(const Table&)> Cox(size_t strata, size_t cells)
{
    return [=](const Table& table) { return CoxModel(table, strata, cells); };
}

}  // namespace

int main(int argc, char** argv)
{
    const int rounds = argc > 1 ? std::atoi(argv[1]) : 5;
    const std::string only = argc > 2 ? argv[2] : "";
    if (rounds < 1) {
        std::fprintf(stderr, "usage: %s [ROUNDS [NAME]]\n", argv[0]);
        return 1;
    }
    const std::string general = NumberModel("generalLinear");
    const std::vector<Question> questions{
        {"general", Fixed(general), Same},
        {"general_full", Fixed(general), Same, true},
        {"missing1", Fixed(general), Same, false, 0.01},
        {"missing10", Fixed(general), Same, false, 0.1},
        {"log", Fixed(LinkModel("log", 0)), Exponential},
        {"logit", Fixed(LinkModel("logit", 0)), Logistic},
        {"cloglog", Fixed(LinkModel("cloglog", 0)), Logistic},
        {"loglog", Fixed(LinkModel("loglog", 0)), Logistic},
        {"negbin", Fixed(LinkModel("negbin", 0.5)), Exponential},
        {"probit", Fixed(LinkModel("probit", 0)), Probit},
        {"power", Fixed(LinkModel("power", 2)), Power},
        {"oddspower", Fixed(LinkModel("oddspower", 2)), Power},
        {"logit_classes", Fixed(ClassesModel()), Logistic, true},
        {"multinomial", Fixed(MultinomialModel()), Softmax, true},
        {"ordinal", Fixed(OrdinalModel()), Logistic, true},
        {"cox10", Cox(0, 10), Survival, true, 0.0, 10},
        {"cox1k", Cox(0, 1000), Survival, true, 0.0, 1000},
        {"cox100k", Cox(0, 100000), Survival, true, 0.0, 100000},
        {"strata20", Cox(kStrata, 1000), Survival, true, 0.0, 1000},
        {"factors5", [](const Table& table) { return FactorModel(table); }, Same},
    };
    std::printf(
        "%s, compiler %s, kernels %s\n%zu rows of %zu columns, %d rounds\n\n%-14s %12s %12s %12s "
        "%10s\n",
        Cpu().c_str(), __VERSION__, kernels::ChosenKernels().name, kRows, kNumbers, rounds,
        "million rows/s", "blocks", "one row", "plain loop", "ratio");
    for (const Question& question : questions) {
        if (!only.empty() && only != question.name) continue;
        const Table table(question.lastTime);
        Run run(question.document(table), table, question.full, question.missing);
        std::vector<double> blocks, rows, plain;
        for (int round = 0; round < rounds; ++round) {
            blocks.push_back(run.Blocks());
            rows.push_back(run.Row());
            plain.push_back(PlainSeconds(table, question.plain));
        }
        for (auto* times : {&blocks, &rows, &plain}) std::sort(times->begin(), times->end());
        const double million = kRows / 1e6;
        std::printf("%-14s %12.1f %12.2f %12.1f %10.2f\n", question.name, million / At(blocks, 0.5),
                    1e-6 / At(rows, 0.5), million / At(plain, 0.5),
                    At(plain, 0.5) / At(blocks, 0.5));
    }
    return 0;
}
