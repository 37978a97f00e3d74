// What the library's interface costs beside what it stands on, with 10 columns of numbers:
//
//   linear, limits       1,000,000 rows out of Arrow arrays through velscore_score, one table of
//   all
//                        of them (whole) and tables of 8,192 (parts), beside the model's block
//                        scorer over the same columns in the same run: linear regression, the
//                        prediction alone; general linear with standard error and limits
//   row_columns          one row of plain arrays through a binding
//   row_batch            one row of an Arrow array through a binding, exported anew each time
//
// Rates are of thread CPU time, medians of the rounds; the ratio is the library's rate by the block
// scorer's. Results are compared bit by bit before anything is measured.
//
//   capi_bench [ROUNDS]

#include <algorithm>
#include <bit>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include <fmt/format.h>

#include "bench/timing.h"
#include "capi/include/velscore.hpp"
#include "engine/documents/loadedmodel.h"
#include "engine/documents/plugin.h"
#include "host/model/batchscorer.h"
#include "host/model/scoremodel.h"
#include "readers/generalregressiontranslator.h"

using namespace MCVelscore_850;
using namespace MCVelscore_850::bench;

namespace {

constexpr size_t kNumbers = 10;
constexpr size_t kBlock = BatchScorer::kRows;
constexpr size_t kRows = 1000000 / kBlock * kBlock;  // whole blocks
constexpr int kMostRounds = 1000;

double Seconds()
{
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + 1e-9 * static_cast<double>(time.tv_nsec);
}

[[noreturn]] void Fail(const std::string& what)
{
    std::fprintf(stderr, "capi_bench: %s\n", what.c_str());
    std::exit(1);
}

std::string Document(bool hasLimits)
{
    std::string fields, schema, parameters, covariates, cells, betas, covariances;
    for (size_t i = 0; i <= kNumbers; ++i) {
        parameters += fmt::format("<Parameter name='p{}' label='p{}'/>", i, i);
        betas += fmt::format("<PCell parameterName='p{}' beta='{}' df='1'/>", i,
                             0.037 * static_cast<double>(i) - 0.17);
        for (size_t j = 0; j <= i; ++j) {
            covariances += fmt::format("<PCovCell pRow='p{}' pCol='p{}' value='{}'/>", i, j,
                                       i == j ? 0.5 : 0.001);
        }
        if (i == 0) continue;
        fields += fmt::format("<DataField name='x{}' optype='continuous' dataType='double'/>", i);
        schema += fmt::format("<MiningField name='x{}'/>", i);
        covariates += fmt::format("<Predictor name='x{}'/>", i);
        cells += fmt::format("<PPCell value='1' predictorName='x{}' parameterName='p{}'/>", i, i);
    }
    return fmt::format(
        "<PMML xmlns='http://www.dmg.org/PMML-4_4' version='4.4'><Header/><DataDictionary>"
        "<DataField name='y' optype='continuous' dataType='double'/>{}</DataDictionary>"
        "<GeneralRegressionModel modelType='{}' functionName='regression' modelDF='50'>"
        "<MiningSchema><MiningField name='y' usageType='target'/>{}</MiningSchema>"
        "<ParameterList>{}</ParameterList><FactorList/><CovariateList>{}</CovariateList>"
        "<PPMatrix>{}</PPMatrix><PCovMatrix type='model'>{}</PCovMatrix>"
        "<ParamMatrix>{}</ParamMatrix></GeneralRegressionModel></PMML>",
        fields, hasLimits ? "generalLinear" : "regression", schema, parameters, covariates, cells,
        covariances, betas);
}

using Columns = std::vector<std::vector<double>>;

Columns MakeColumns()
{
    std::mt19937_64 random(7);
    std::uniform_real_distribution<> value(-3.0, 3.0);
    Columns columns(kNumbers, std::vector<double>(kRows));
    for (auto& column : columns) {
        for (double& number : column) number = value(random);
    }
    return columns;
}

// The block scorer alone, its results written over each other block by block.
class Blocks {
public:
    Blocks(const std::string& document, bool hasLimits, const Columns& columns)
        : model_({document, "document"}, std::make_shared<const Plugin>(+[]() -> BaseTranslator* {
                     return new GeneralRegressionTranslator();
                 })),
          hasLimits_(hasLimits),
          columns_(columns)
    {
        if (!hasLimits) model_.WantPredictionOnly();
        scorer_ = model_.Model().MakeBatchScorer();
        if (scorer_ == nullptr) Fail("the model has no block scorer");
        scratch_ = scorer_->MakeScratch();
        for (auto& result : results_) result.resize(kBlock);
        for (const ScoreDictVar* var : scorer_->Inputs()) {
            order_.push_back(std::stoul(var->GetName().substr(1)) - 1);
        }
    }

    const double* Score(size_t first)
    {
        std::vector<BatchColumn>& inputs = inputs_;
        inputs.clear();
        for (const size_t column : order_) inputs.push_back({.numbers = &columns_[column][first]});
        BatchResults results;
        results.prediction = results_[0].data();
        if (hasLimits_) {
            results.stdDev = results_[1].data();
            results.ciLower = results_[2].data();
            results.ciUpper = results_[3].data();
        }
        uint64_t unsure[kBlock / 64];
        scorer_->Score(inputs, kBlock, results, unsure, *scratch_);
        return results.prediction;
    }
    double All()
    {
        const double begin = Seconds();
        for (size_t row = 0; row < kRows; row += kBlock) Score(row);
        return Seconds() - begin;
    }

private:
    LoadedModel model_;
    bool hasLimits_;
    const Columns& columns_;
    std::unique_ptr<BatchScorer> scorer_;
    std::unique_ptr<BatchScorer::Scratch> scratch_;
    std::vector<size_t> order_;
    std::vector<BatchColumn> inputs_;
    std::vector<double> results_[4];
};

// The columns as a stream of Arrow tables of so many rows, borrowed.
class Tables {
public:
    Tables(const Columns& columns, size_t rows) : columns_(columns), most_(rows)
    {
        for (size_t i = 0; i < kNumbers; ++i) names_.push_back(fmt::format("x{}", i + 1));
        schemas_.resize(kNumbers);
        arrays_.resize(kNumbers);
        buffers_.resize(kNumbers);
    }

    void Schema(ArrowSchema& out)
    {
        for (size_t i = 0; i < kNumbers; ++i) {
            schemas_[i] = {};
            schemas_[i].format = "g";
            schemas_[i].name = names_[i].c_str();
            schemas_[i].release = [](ArrowSchema* schema) { schema->release = nullptr; };
            schemaPointers_[i] = &schemas_[i];
        }
        out = {};
        out.format = "+s";
        out.n_children = kNumbers;
        out.children = schemaPointers_;
        out.release = [](ArrowSchema* schema) { schema->release = nullptr; };
    }
    void Array(size_t first, size_t rows, ArrowArray& out)
    {
        for (size_t i = 0; i < kNumbers; ++i) {
            buffers_[i][1] = &columns_[i][first];
            arrays_[i] = {};
            arrays_[i].length = static_cast<int64_t>(rows);
            arrays_[i].n_buffers = 2;
            arrays_[i].buffers = buffers_[i].pointers;
            arrays_[i].release = [](ArrowArray* array) { array->release = nullptr; };
            arrayPointers_[i] = &arrays_[i];
        }
        out = {};
        out.length = static_cast<int64_t>(rows);
        out.n_buffers = 1;
        out.buffers = &none_;
        out.n_children = kNumbers;
        out.children = arrayPointers_;
        out.release = [](ArrowArray* array) { array->release = nullptr; };
    }
    ArrowArrayStream Stream()
    {
        next_ = 0;
        ArrowArrayStream stream{};
        stream.get_schema = [](ArrowArrayStream* self, ArrowSchema* out) {
            static_cast<Tables*>(self->private_data)->Schema(*out);
            return 0;
        };
        stream.get_next = [](ArrowArrayStream* self, ArrowArray* out) {
            Tables& own = *static_cast<Tables*>(self->private_data);
            const size_t rows = std::min(own.most_, kRows - own.next_);
            *out = {};
            if (rows > 0) own.Array(own.next_, rows, *out);
            own.next_ += rows;
            return 0;
        };
        stream.get_last_error = [](ArrowArrayStream*) -> const char* { return nullptr; };
        stream.release = [](ArrowArrayStream* self) { self->release = nullptr; };
        stream.private_data = this;
        return stream;
    }

private:
    struct Buffers {
        const void* pointers[2] = {nullptr, nullptr};
        const void*& operator[](size_t i) { return pointers[i]; }
    };

    const Columns& columns_;
    size_t most_;
    size_t next_ = 0;
    std::vector<std::string> names_;
    std::vector<ArrowSchema> schemas_;
    std::vector<ArrowArray> arrays_;
    std::vector<Buffers> buffers_;
    ArrowSchema* schemaPointers_[kNumbers];
    ArrowArray* arrayPointers_[kNumbers];
    const void* none_ = nullptr;
};

// Seconds for all rows through the library; each table is given to `look` before it is released.
template <class Look>
double ThroughLibrary(const velscore::Model& model, Tables& tables, bool hasLimits, Look look)
{
    ArrowArrayStream in = tables.Stream();
    const double begin = Seconds();
    ArrowArrayStream out = model.Score(in, {.predictionOnly = !hasLimits});
    for (size_t row = 0;;) {
        ArrowArray scored{};
        if (out.get_next(&out, &scored) != 0) Fail(out.get_last_error(&out));
        if (scored.release == nullptr) break;
        look(row, scored);
        row += static_cast<size_t>(scored.length);
        scored.release(&scored);
    }
    const double seconds = Seconds() - begin;
    out.release(&out);
    return seconds;
}

void Compare(const velscore::Model& model, Tables& tables, bool hasLimits, Blocks& blocks)
{
    size_t rows = 0;
    ThroughLibrary(model, tables, hasLimits, [&](size_t first, const ArrowArray& scored) {
        const auto* found = static_cast<const double*>(scored.children[0]->buffers[1]);
        for (size_t row = 0; row < static_cast<size_t>(scored.length); ++row, ++rows) {
            const size_t at = first + row;
            static const double* wanted = nullptr;
            if (at % kBlock == 0) wanted = blocks.Score(at);
            if (std::bit_cast<uint64_t>(found[row]) == std::bit_cast<uint64_t>(wanted[at % kBlock]))
                continue;
            Fail(fmt::format("row {}: {}, the block scorer has {}", at, found[row],
                             wanted[at % kBlock]));
        }
    });
    if (rows != kRows) Fail(fmt::format("{} rows came back of {}", rows, kRows));
}

double Median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

void MeasureTables(const char* name, bool hasLimits, const Columns& columns, int rounds)
{
    const std::string document = Document(hasLimits);
    const auto model = velscore::Model::FromText(document);
    Blocks blocks(document, hasLimits, columns);
    for (const auto& [kind, rows] : {std::pair("whole", kRows), std::pair("parts", size_t{8192})}) {
        Tables tables(columns, rows);
        Compare(model, tables, hasLimits, blocks);
        std::vector<double> library, own, ratios;
        for (int round = 0; round < rounds; ++round) {
            own.push_back(blocks.All());
            library.push_back(
                ThroughLibrary(model, tables, hasLimits, [](size_t, const ArrowArray&) {}));
            ratios.push_back(own.back() / library.back());
        }
        const auto rate = [](double seconds) {
            return 1e-6 * static_cast<double>(kRows) / seconds;
        };
        std::printf("%-8s %-6s %8.1f M rows/s, block scorer %8.1f M, ratio %.2f\n", name, kind,
                    rate(Median(library)), rate(Median(own)), Median(ratios));
    }
}

void MeasureRows(const Columns& columns)
{
    constexpr int kCalls = 2000;
    const auto model = velscore::Model::FromText(Document(true));
    std::vector<std::string> names;
    std::vector<velscore_column> plain(kNumbers);
    for (size_t i = 0; i < kNumbers; ++i) {
        names.push_back(fmt::format("x{}", i + 1));
        plain[i].numbers = columns[i].data();
    }
    velscore::Binding binding = model.Bind(names);
    double prediction = 0.0;
    int32_t status = 0;
    std::vector<velscore_result_column> places(velscore_result_count(binding.Get()));
    places[0].numbers = &prediction;
    velscore_results results = VELSCORE_RESULTS_INIT;
    results.columns = places.data();
    results.columns_count = places.size();
    results.status = &status;
    const auto byColumns = Batches(kCalls, [&](int i) {
        for (size_t c = 0; c < kNumbers; ++c)
            plain[c].numbers = &columns[c][static_cast<size_t>(i)];
        if (velscore_score_columns(binding.Get(), plain.data(), kNumbers, 1, &results, nullptr) !=
            0)
            Fail("a row wasn't scored");
        return prediction;
    });
    Tables tables(columns, 1);
    ArrowSchema schema{};
    tables.Schema(schema);
    velscore_binding* arrow = nullptr;
    if (velscore_bind(model.Get(), nullptr, &schema, &arrow, nullptr) != 0) Fail("no binding");
    const auto byBatch = Batches(kCalls, [&](int i) {
        ArrowArray in{};
        ArrowArray out{};
        tables.Array(static_cast<size_t>(i), 1, in);
        if (velscore_score_batch(arrow, &in, &out, nullptr) != 0) Fail("a row wasn't scored");
        const double found = *static_cast<const double*>(out.children[0]->buffers[1]);
        out.release(&out);
        return found;
    });
    velscore_unbind(arrow);
    std::printf("row_columns  %.0f ns a call\nrow_batch    %.0f ns a call\n", At(byColumns, 0.5),
                At(byBatch, 0.5));
}

}  // namespace

int main(int argc, char** argv)
{
    const int rounds = argc > 1 ? std::atoi(argv[1]) : 15;
    if (rounds < 1 || rounds > kMostRounds) {
        std::fprintf(stderr, "usage: %s [ROUNDS]\n", argv[0]);
        return 1;
    }
    std::printf("%s, compiler %s, %zu rows\n", Cpu().c_str(), __VERSION__, kRows);
    const Columns columns = MakeColumns();
    MeasureTables("linear", false, columns, rounds);
    MeasureTables("limits", true, columns, rounds);
    MeasureRows(columns);
}
