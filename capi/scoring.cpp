#include <algorithm>

#include "capi/baseline.h"
#include "capi/calls.h"
#include "capi/options.h"
#include "capi/streams.h"
#include "engine/scoring/arrowcurves.h"
#include "engine/scoring/arrowexplanations.h"
#include "engine/scoring/arrowresults.h"
#include "engine/scoring/tablescan.h"
#include "engine/tables/arrowschema.h"

using namespace MCVelscore_850;
using namespace MCVelscore_850::capi;

namespace {

// Rows that a table of scores has at most: its columns stay in the cache of one processor, and
// their memory is used again.
constexpr int64_t kMostRows = int64_t{1} << 14;
// The same of the lines of curves and explanations, of which a row has many.
constexpr int64_t kMostLines = int64_t{1} << 16;

// A stream of tables through whatever takes one after the other in parts.
template <class Taker>
class PartsOfTables : public TableSourceStream {
public:
    PartsOfTables(GivenStream in, std::unique_ptr<Taker> taker, int64_t most)
        : in_(std::move(in)), taker_(std::move(taker)), most_(most)
    {}

    ArrowOwner<ArrowSchema> Schema() const override { return taker_->Schema(); }

    std::optional<ArrowOwner<ArrowArray>> Next() override
    {
        while (next_ == rows_) {
            if (hasTable_) taker_->End();
            hasTable_ = false;
            std::optional<ArrowOwner<ArrowArray>> table = in_.Next();
            if (!table) return std::nullopt;
            rows_ = taker_->Begin(std::move(*table));
            hasTable_ = true;
            next_ = 0;
        }
        const int64_t first = next_;
        next_ += std::min(most_, rows_ - next_);
        return Take(*taker_, first, next_ - first);
    }

protected:
    virtual ArrowOwner<ArrowArray> Take(Taker& taker, int64_t first, int64_t rows) = 0;

private:
    GivenStream in_;
    std::unique_ptr<Taker> taker_;
    int64_t most_;
    int64_t rows_ = 0;
    int64_t next_ = 0;
    bool hasTable_ = false;
};

class ScoreStream final : public PartsOfTables<ArrowScorer> {
public:
    using PartsOfTables::PartsOfTables;

private:
    ArrowOwner<ArrowArray> Take(ArrowScorer& scorer, int64_t first, int64_t rows) override
    {
        return scorer.Score(first, rows);
    }
};

class CurveStream final : public PartsOfTables<ArrowCurves> {
public:
    using PartsOfTables::PartsOfTables;

private:
    ArrowOwner<ArrowArray> Take(ArrowCurves& curves, int64_t first, int64_t rows) override
    {
        return curves.Draw(first, static_cast<size_t>(rows));
    }
};

class ExplanationStream final : public PartsOfTables<ArrowExplanations> {
public:
    using PartsOfTables::PartsOfTables;

private:
    ArrowOwner<ArrowArray> Take(ArrowExplanations& explanations, int64_t first,
                                int64_t rows) override
    {
        return explanations.Explain(first, static_cast<size_t>(rows));
    }
};

// Rows that have kMostLines lines, at most so many a row.
int64_t RowsOfLines(size_t lines)
{
    return std::clamp<int64_t>(kMostLines / static_cast<int64_t>(lines), 1, TableScorer::kRows);
}

// Rows whose curves have so many.
int64_t RowsOfCurves(const ModelDescription& about)
{
    size_t most = 1;
    for (const ModelDescription::Stratum& stratum : about.strata) {
        most = std::max(most, stratum.cells);
    }
    return RowsOfLines(most);
}

class ScanStream final : public TableSourceStream {
public:
    explicit ScanStream(std::unique_ptr<TableScan> scan) : scan_(std::move(scan)) {}
    ArrowOwner<ArrowSchema> Schema() const override { return scan_->Schema(); }
    std::optional<ArrowOwner<ArrowArray>> Next() override { return scan_->Next(); }

private:
    std::unique_ptr<TableScan> scan_;
};

}  // namespace

int velscore_result_schema(const velscore_model* model, const velscore_score_options* options,
                           ArrowSchema* out, velscore_error* error)
{
    return Call(error, [&] {
        ArrowSchema& made = Given(out, "out");
        Request request = RequestOf(Given(model, "model"), options);
        OutputOptions& output = request.scoring.output;
        output.keep.clear();
        output.keepAll = false;
        model->With(request.settings, [&](const LoadedModel& loaded) {
            const ResultSchema schema(loaded.Description(), request.scoring.table.results);
            const OutputShaper shaper(schema, {}, kArrowTableName, output);
            const ArrowResults results(schema, shaper.Results());
            std::vector<ArrowOwner<ArrowSchema>> columns;
            for (size_t i = 0; i < shaper.Columns().size(); ++i) {
                columns.push_back(results.SchemaOf(i, shaper.Columns()[i]));
            }
            MakeTableSchema(std::move(columns)).MoveTo(made);
        });
    });
}

int velscore_score(const velscore_model* model, const velscore_score_options* options,
                   ArrowArrayStream* in, ArrowArrayStream* out, velscore_error* error)
{
    return Call(error, [&] {
        GivenStream given(Given(in, "in"));
        ArrowArrayStream& made = Given(out, "out");
        const Request request = RequestOf(Given(model, "model"), options);
        const ArrowOwner<ArrowSchema> schema = given.Schema();
        auto scorer = model->With(request.settings, [&](const LoadedModel& loaded) {
            return std::make_unique<ArrowScorer>(loaded, *schema, request.scoring);
        });
        ExportStream(std::make_unique<ScoreStream>(std::move(given), std::move(scorer), kMostRows),
                     made);
    });
}

int velscore_curve(const velscore_model* model, const velscore_score_options* options,
                   ArrowArrayStream* in, ArrowArrayStream* out, velscore_error* error)
{
    return Call(error, [&] {
        GivenStream given(Given(in, "in"));
        ArrowArrayStream& made = Given(out, "out");
        const Request request = CurveRequestOf(Given(model, "model"), options);
        const ArrowOwner<ArrowSchema> schema = given.Schema();
        int64_t most = 1;
        auto curves = model->With(request.settings, [&](const LoadedModel& loaded) {
            most = RowsOfCurves(loaded.Description());
            return std::make_unique<ArrowCurves>(loaded, *schema, request.scoring);
        });
        ExportStream(std::make_unique<CurveStream>(std::move(given), std::move(curves), most),
                     made);
    });
}

int velscore_explain(const velscore_model* model, const velscore_score_options* options,
                     ArrowArrayStream* in, ArrowArrayStream* out, velscore_error* error)
{
    return Call(error, [&] {
        GivenBaseline baseline(options);
        GivenStream given(Given(in, "in"));
        ArrowArrayStream& made = Given(out, "out");
        Request request = ExplainRequestOf(Given(model, "model"), options);
        request.explanations.baseline = baseline.Read(*model, request);
        const ArrowOwner<ArrowSchema> schema = given.Schema();
        auto explanations = model->With(request.settings, [&](const LoadedModel& loaded) {
            return std::make_unique<ArrowExplanations>(loaded, *schema, request.scoring,
                                                       request.explanations);
        });
        const int64_t most = RowsOfLines(explanations->MostLines());
        ExportStream(
            std::make_unique<ExplanationStream>(std::move(given), std::move(explanations), most),
            made);
    });
}

int velscore_scan_csv(const velscore_model* model, const char* path,
                      const velscore_csv_options* options, ArrowArrayStream* out,
                      velscore_error* error)
{
    return Call(error, {.table = path}, [&] {
        ArrowArrayStream& made = Given(out, "out");
        const ScanRequest request = ScanRequestOf(Given(model, "model"), options);
        std::string file(&Given(path, "path"));
        if (file == "-") file = "./-";  // elsewhere standard input
        auto scan = model->With(request.settings, [&](const LoadedModel& loaded) {
            return std::make_unique<TableScan>(loaded, std::vector{file}, request.scan);
        });
        ExportStream(std::make_unique<ScanStream>(std::move(scan)), made);
    });
}
