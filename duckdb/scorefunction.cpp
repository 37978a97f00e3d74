#include "duckdb/arrowowner.h"
#include "duckdb/functions.h"
#include "duckdb/results.h"
#include "duckdb/rowfunction.h"
#include "duckdb/rowtable.h"

namespace velscore::sql {

namespace {

using Binding = std::unique_ptr<velscore_binding, velscore::detail::End<velscore_unbind>>;

Binding Bound(const OpenModel& model, const ArrowSchema* schema, velscore::ScoreOptions options)
{
    if (!options.predictionOnly) options.columns = model.results;
    const velscore::detail::Options plain(options);
    velscore_binding* made = nullptr;
    velscore::detail::Call([&](velscore_error* error) {
        return velscore_bind(model.model.Get(), plain.Get(), schema, &made, error);
    });
    return Binding(made);
}

ResultWriter WriterOf(const velscore_binding* binding)
{
    ArrowOwned<ArrowSchema> schema;
    velscore::detail::Call([&](velscore_error* error) {
        return velscore_binding_schema(binding, schema.Get(), error);
    });
    return ResultWriter(*schema.Get());
}

class Scorer final : public RowAnswerer {
public:
    Scorer(std::shared_ptr<const OpenModel> model, duckdb_logical_type rowType,
           const velscore::ScoreOptions& options)
        : model_(std::move(model)),
          table_(rowType, MappedColumns(model_->reads, options)),
          binding_(Bound(*model_, table_.Schema(), options)),
          writer_(WriterOf(binding_.get()))
    {}

    void Answer(duckdb_vector rows, idx_t count, duckdb_vector out) override
    {
        ArrowArray in = table_.Of(rows, count);
        ArrowOwned<ArrowArray> results;
        velscore::detail::Call([&](velscore_error* error) {
            return velscore_score_batch(binding_.get(), &in, results.Get(), error);
        });
        writer_.Write(*results.Get(), duckdb_vector_get_validity(rows), out);
    }

private:
    std::shared_ptr<const OpenModel> model_;
    RowTable table_;
    Binding binding_;
    ResultWriter writer_;
};

constexpr const RowOption* kOptions[] = {&kLevelOption, &kPolicyOption, &kMissingOption,
                                         &kNanOption,   &kMapOption,    &kPredictionOnlyOption};

constexpr RowFunction kScore{
    "velscore", ResultType, kOptions,
    [](const std::shared_ptr<const OpenModel>& model, duckdb_logical_type rowType,
       const velscore::ScoreOptions& options) -> std::unique_ptr<RowAnswerer> {
        return std::make_unique<Scorer>(model, rowType, options);
    }};

}  // namespace

void RegisterScore(duckdb_connection connection) { Register(connection, kScore); }

}  // namespace velscore::sql
