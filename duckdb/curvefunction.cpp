#include <algorithm>
#include <optional>
#include <vector>

#include "duckdb/arrowowner.h"
#include "duckdb/document.h"
#include "duckdb/errors.h"
#include "duckdb/functions.h"
#include "duckdb/report.h"
#include "duckdb/rowfunction.h"
#include "duckdb/rowtable.h"

namespace velscore::sql {

namespace {

// Columns of the library's curves, and of the structs that are answered; the row stands before
// them.
constexpr const char* kColumns[] = {"time", "survival", "cum_hazard"};
constexpr size_t kCount = std::size(kColumns);

Type PointsType()
{
    const Type number = TypeOf(DUCKDB_TYPE_DOUBLE);
    std::vector<duckdb_logical_type> types(kCount, number.Get());
    std::vector<const char*> names(std::begin(kColumns), std::end(kColumns));
    const Type point(duckdb_create_struct_type(types.data(), names.data(), kCount));
    return Type(duckdb_create_list_type(point.Get()));
}

// One table as a stream.
struct OneTable {
    RowTable& table;
    std::optional<ArrowArray> rows;
};

OneTable& Of(ArrowArrayStream* stream) { return *static_cast<OneTable*>(stream->private_data); }

int GetSchema(ArrowArrayStream* stream, ArrowSchema* out)
{
    // Borrowed: what it points to stands longer than the stream.
    *out = *Of(stream).table.Schema();
    return 0;
}

int GetNext(ArrowArrayStream* stream, ArrowArray* out)
{
    OneTable& own = Of(stream);
    *out = own.rows.value_or(ArrowArray{});
    own.rows.reset();
    return 0;
}

ArrowArrayStream StreamOf(OneTable& table)
{
    return {GetSchema, GetNext, [](ArrowArrayStream*) -> const char* { return nullptr; },
            [](ArrowArrayStream* own) { own->release = nullptr; }, &table};
}

ArrowOwned<ArrowArrayStream> Draw(const OpenModel& model, OneTable& table)
{
    ArrowArrayStream in = StreamOf(table);
    ArrowOwned<ArrowArrayStream> out;
    velscore::detail::Call([&](velscore_error* error) {
        return velscore_curve(model.model.Get(), nullptr, &in, out.Get(), error);
    });
    return out;
}

// The next lines of curves; none at the end.
ArrowOwned<ArrowArray> Next(ArrowOwned<ArrowArrayStream>& curves)
{
    ArrowOwned<ArrowArray> part;
    if (curves->get_next(curves.Get(), part.Get()) != 0) {
        throw SqlError(curves->get_last_error(curves.Get()));
    }
    return part;
}

const double* NumbersOf(const ArrowArray& lines, size_t column)
{
    return static_cast<const double*>(lines.children[column + 1]->buffers[1]);
}

// A row without a curve has one line of nulls.
bool IsPoint(const ArrowArray& lines, idx_t line)
{
    const auto* bits = static_cast<const uint8_t*>(lines.children[1]->buffers[0]);
    return bits == nullptr || (bits[line / 8] >> line % 8 & 1) != 0;
}

class Curves final : public RowAnswerer {
public:
    Curves(std::shared_ptr<const OpenModel> model, duckdb_logical_type rowType)
        : model_(std::move(model)), table_(rowType, model_->reads)
    {
        // Of no rows: whether the model has curves, and the table its columns.
        OneTable none{table_, std::nullopt};
        Draw(*model_, none);
    }

    void Answer(duckdb_vector rows, idx_t count, duckdb_vector out) override
    {
        OneTable table{table_, table_.Of(rows, count)};
        ArrowOwned<ArrowArrayStream> curves = Draw(*model_, table);
        auto* lists = static_cast<duckdb_list_entry*>(duckdb_vector_get_data(out));
        std::fill_n(lists, count, duckdb_list_entry{0, 0});
        duckdb_vector_ensure_validity_writable(out);
        uint64_t* validity = duckdb_vector_get_validity(out);
        idx_t size = 0;
        for (;;) {
            ArrowOwned<ArrowArray> part = Next(curves);
            if (part->release == nullptr) break;
            Append(*part.Get(), size, lists, out);
            size += static_cast<idx_t>(part->length);
        }
        const uint64_t* isThere = duckdb_vector_get_validity(rows);
        for (idx_t row = 0; row < count; ++row) {
            const bool isRow = isThere == nullptr || (isThere[row / 64] >> row % 64 & 1) != 0;
            duckdb_validity_set_row_validity(validity, row, isRow && lists[row].length > 0);
        }
    }

private:
    // Lines of curves behind those that are there; those of no point are in no list.
    static void Append(const ArrowArray& lines, idx_t size, duckdb_list_entry* lists,
                       duckdb_vector out)
    {
        const auto count = static_cast<idx_t>(lines.length);
        duckdb_list_vector_reserve(out, size + count);
        duckdb_list_vector_set_size(out, size + count);
        const duckdb_vector points = duckdb_list_vector_get_child(out);
        for (size_t i = 0; i < kCount; ++i) {
            auto* to = static_cast<double*>(
                duckdb_vector_get_data(duckdb_struct_vector_get_child(points, i)));
            std::copy_n(NumbersOf(lines, i), count, to + size);
        }
        const auto* rows = static_cast<const int64_t*>(lines.children[0]->buffers[1]);
        for (idx_t line = 0; line < count; ++line) {
            if (!IsPoint(lines, line)) continue;
            duckdb_list_entry& list = lists[rows[line] - 1];
            if (list.length == 0) list.offset = size + line;
            ++list.length;
        }
    }

    std::shared_ptr<const OpenModel> model_;
    RowTable table_;
};

constexpr RowFunction kCurve{"velscore_curve", PointsType,
                             [](const std::shared_ptr<const OpenModel>& model,
                                duckdb_logical_type rowType) -> std::unique_ptr<RowAnswerer> {
                                 return std::make_unique<Curves>(model, rowType);
                             }};

// FROM velscore_curve(path, {...}): the curve of one row, a line a point.
Report CurveReport(duckdb_bind_info info, const OpenModel& model)
{
    const Owned<duckdb_value> row(duckdb_bind_get_parameter(info, 1));
    const duckdb_logical_type type = duckdb_get_value_type(row.Get());  // the value's own
    CheckRowType(type, kCurve.name);
    const Owned<duckdb_vector> rows(duckdb_create_vector(type, 1));
    duckdb_vector_reference_value(rows.Get(), row.Get());
    RowTable read(type, model.reads);
    OneTable table{read, read.Of(rows.Get(), 1)};
    ArrowOwned<ArrowArrayStream> curves = Draw(model, table);

    Report report;
    for (const char* name : kColumns) report.columns.push_back({name, DUCKDB_TYPE_DOUBLE});
    for (;;) {
        ArrowOwned<ArrowArray> part = Next(curves);
        if (part->release == nullptr) return report;
        for (idx_t line = 0; line < static_cast<idx_t>(part->length); ++line) {
            if (!IsPoint(*part.Get(), line)) continue;
            std::vector<ReportCell>& cells = report.rows.emplace_back();
            for (size_t i = 0; i < kCount; ++i) cells.emplace_back(NumbersOf(*part.Get(), i)[line]);
        }
    }
}

const ReportFunction kCurveReport{
    kCurve.name,
    {DUCKDB_TYPE_VARCHAR, DUCKDB_TYPE_ANY},
    [](duckdb_bind_info info, duckdb_client_context context, const std::string& path) {
        return CurveReport(info, *ModelOf(context, path));
    }};

}  // namespace

void RegisterCurve(duckdb_connection connection)
{
    Register(connection, kCurve);
    Register(connection, kCurveReport);
}

}  // namespace velscore::sql
