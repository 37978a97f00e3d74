// velscore_curve() and velscore_explain(): functions that answer several lines a row.

#include <algorithm>
#include <optional>
#include <utility>
#include <vector>

#include "duckdb/arrowcolumn.h"
#include "duckdb/arrowowner.h"
#include "duckdb/document.h"
#include "duckdb/errors.h"
#include "duckdb/functions.h"
#include "duckdb/report.h"
#include "duckdb/rowfunction.h"
#include "duckdb/rowtable.h"

namespace velscore::sql {

namespace {

// A column of the library's lines, and a field of the structs that are answered; the row's number
// stands before them.
struct LineColumn {
    const char* name;
    duckdb_type type;  // DOUBLE or VARCHAR
};

// What the library answers lines of.
struct LineKind {
    const char* function;
    std::span<const LineColumn> columns;
    size_t mark;  // the column that is null in the one line of a row that has none
    int (*draw)(const velscore_model*, const velscore_score_options*, ArrowArrayStream*,
                ArrowArrayStream*, velscore_error*);
};

constexpr LineColumn kCurveColumns[] = {{"time", DUCKDB_TYPE_DOUBLE},
                                        {"survival", DUCKDB_TYPE_DOUBLE},
                                        {"cum_hazard", DUCKDB_TYPE_DOUBLE}};
constexpr LineKind kCurve{"velscore_curve", kCurveColumns, 0, velscore_curve};

constexpr LineColumn kTermColumns[] = {{"equation", DUCKDB_TYPE_VARCHAR},
                                       {"term", DUCKDB_TYPE_VARCHAR},
                                       {"value", DUCKDB_TYPE_DOUBLE},
                                       {"contribution", DUCKDB_TYPE_DOUBLE}};
constexpr LineKind kExplain{"velscore_explain", kTermColumns, 1, velscore_explain};

template <const LineKind& kind>
Type LinesType()
{
    std::vector<Type> types;
    std::vector<duckdb_logical_type> handles;
    std::vector<const char*> names;
    for (const LineColumn& column : kind.columns) {
        handles.push_back(types.emplace_back(TypeOf(column.type)).Get());
        names.push_back(column.name);
    }
    const Type line(duckdb_create_struct_type(handles.data(), names.data(), names.size()));
    return Type(duckdb_create_list_type(line.Get()));
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

ArrowOwned<ArrowArrayStream> Draw(const LineKind& kind, const OpenModel& model,
                                  const velscore::ScoreOptions& options, OneTable& table)
{
    const velscore::detail::Options plain(options);
    ArrowArrayStream in = StreamOf(table);
    ArrowOwned<ArrowArrayStream> out;
    velscore::detail::Call([&](velscore_error* error) {
        return kind.draw(model.model.Get(), plain.Get(), &in, out.Get(), error);
    });
    return out;
}

// The next lines; none at the end.
ArrowOwned<ArrowArray> Next(ArrowOwned<ArrowArrayStream>& lines)
{
    ArrowOwned<ArrowArray> part;
    if (lines->get_next(lines.Get(), part.Get()) != 0) {
        throw SqlError(lines->get_last_error(lines.Get()));
    }
    return part;
}

const ArrowArray& ColumnOf(const ArrowArray& lines, size_t column)
{
    return *lines.children[column + 1];
}

const double* NumbersOf(const ArrowArray& column)
{
    return static_cast<const double*>(column.buffers[1]);
}

// False for the one line of a row that has none.
bool IsLine(const LineKind& kind, const ArrowArray& lines, idx_t line)
{
    return HasBit(BitsOf(ColumnOf(lines, kind.mark)), line);
}

// A column behind `before` values that are there.
void WriteColumn(const ArrowArray& column, duckdb_type type, idx_t before, duckdb_vector out)
{
    const auto count = static_cast<idx_t>(column.length);
    if (type == DUCKDB_TYPE_VARCHAR) {
        WriteTexts(column, out, before);
    } else {
        std::copy_n(NumbersOf(column), count,
                    static_cast<double*>(duckdb_vector_get_data(out)) + before);
    }
    const void* bits = BitsOf(column);
    if (bits == nullptr && duckdb_vector_get_validity(out) == nullptr) return;
    duckdb_vector_ensure_validity_writable(out);
    uint64_t* validity = duckdb_vector_get_validity(out);
    for (idx_t line = 0; line < count; ++line) {
        duckdb_validity_set_row_validity(validity, before + line, HasBit(bits, line));
    }
}

class Lines final : public RowAnswerer {
public:
    Lines(const LineKind& kind, std::shared_ptr<const OpenModel> model, duckdb_logical_type rowType,
          velscore::ScoreOptions options)
        : kind_(kind),
          model_(std::move(model)),
          options_(std::move(options)),
          table_(rowType, MappedColumns(model_->reads, options_))
    {
        // Of no rows: whether the model has such lines, and the table its columns.
        OneTable none{table_, std::nullopt};
        Draw(kind_, *model_, options_, none);
    }

    void Answer(duckdb_vector rows, idx_t count, duckdb_vector out) override
    {
        OneTable table{table_, table_.Of(rows, count)};
        ArrowOwned<ArrowArrayStream> lines = Draw(kind_, *model_, options_, table);
        auto* lists = static_cast<duckdb_list_entry*>(duckdb_vector_get_data(out));
        std::fill_n(lists, count, duckdb_list_entry{0, 0});
        duckdb_vector_ensure_validity_writable(out);
        uint64_t* validity = duckdb_vector_get_validity(out);
        idx_t size = 0;
        for (;;) {
            ArrowOwned<ArrowArray> part = Next(lines);
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
    // Lines behind those that are there; one that means none is in no list.
    void Append(const ArrowArray& lines, idx_t size, duckdb_list_entry* lists,
                duckdb_vector out) const
    {
        const auto count = static_cast<idx_t>(lines.length);
        duckdb_list_vector_reserve(out, size + count);
        duckdb_list_vector_set_size(out, size + count);
        const duckdb_vector structs = duckdb_list_vector_get_child(out);
        for (size_t i = 0; i < kind_.columns.size(); ++i) {
            WriteColumn(ColumnOf(lines, i), kind_.columns[i].type, size,
                        duckdb_struct_vector_get_child(structs, i));
        }
        const auto* rows = static_cast<const int64_t*>(lines.children[0]->buffers[1]);
        for (idx_t line = 0; line < count; ++line) {
            if (!IsLine(kind_, lines, line)) continue;
            duckdb_list_entry& list = lists[rows[line] - 1];
            if (list.length == 0) list.offset = size + line;
            ++list.length;
        }
    }

    const LineKind& kind_;
    std::shared_ptr<const OpenModel> model_;
    velscore::ScoreOptions options_;
    RowTable table_;
};

template <const LineKind& kind>
std::unique_ptr<RowAnswerer> MakeLines(const std::shared_ptr<const OpenModel>& model,
                                       duckdb_logical_type rowType,
                                       const velscore::ScoreOptions& options)
{
    return std::make_unique<Lines>(kind, model, rowType, options);
}

constexpr const RowOption* kCurveOptions[] = {&kPolicyOption, &kMissingOption, &kNanOption,
                                              &kMapOption};
constexpr RowFunction kCurveFunction{kCurve.function, LinesType<kCurve>, kCurveOptions,
                                     MakeLines<kCurve>};

constexpr const RowOption* kExplainOptions[] = {&kTopOption, &kPolicyOption, &kMissingOption,
                                                &kNanOption, &kMapOption};
constexpr RowFunction kExplainFunction{kExplain.function, LinesType<kExplain>, kExplainOptions,
                                       MakeLines<kExplain>};

ReportCell CellOf(const ArrowArray& column, duckdb_type type, idx_t line)
{
    if (!HasBit(BitsOf(column), line)) return {};
    if (type == DUCKDB_TYPE_DOUBLE) return NumbersOf(column)[line];
    const DictionaryTexts texts(column);
    return std::string(texts.Text(texts.CodeOf(line)));
}

// FROM NAME(path, {...}): the lines of one row as a table.
template <const LineKind& kind>
Report LinesReport(duckdb_bind_info info, duckdb_client_context context, const std::string& path)
{
    const std::shared_ptr<const OpenModel> model = ModelOf(context, path);
    const Owned<duckdb_value> row(duckdb_bind_get_parameter(info, 1));
    const duckdb_logical_type type = duckdb_get_value_type(row.Get());  // the value's own
    CheckRowType(type, kind.function);
    const Owned<duckdb_vector> rows(duckdb_create_vector(type, 1));
    duckdb_vector_reference_value(rows.Get(), row.Get());
    RowTable read(type, model->reads);
    OneTable table{read, read.Of(rows.Get(), 1)};
    ArrowOwned<ArrowArrayStream> lines = Draw(kind, *model, {}, table);

    Report report;
    for (const LineColumn& column : kind.columns) {
        report.columns.push_back({column.name, column.type});
    }
    for (;;) {
        ArrowOwned<ArrowArray> part = Next(lines);
        if (part->release == nullptr) return report;
        for (idx_t line = 0; line < static_cast<idx_t>(part->length); ++line) {
            if (!IsLine(kind, *part.Get(), line)) continue;
            std::vector<ReportCell>& cells = report.rows.emplace_back();
            for (size_t i = 0; i < kind.columns.size(); ++i) {
                cells.push_back(CellOf(ColumnOf(*part.Get(), i), kind.columns[i].type, line));
            }
        }
    }
}

template <const LineKind& kind>
const ReportFunction kLinesReport{
    kind.function, {DUCKDB_TYPE_VARCHAR, DUCKDB_TYPE_ANY}, LinesReport<kind>};

}  // namespace

void RegisterCurve(duckdb_connection connection)
{
    Register(connection, kCurveFunction);
    Register(connection, kLinesReport<kCurve>);
}

void RegisterExplain(duckdb_connection connection)
{
    Register(connection, kExplainFunction);
    Register(connection, kLinesReport<kExplain>);
}

}  // namespace velscore::sql
