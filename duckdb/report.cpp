#include "duckdb/report.h"

#include <algorithm>
#include <memory>

#include "duckdb/errors.h"

namespace velscore::sql {

namespace {

template <class T>
void Delete(void* own)
{
    delete static_cast<T*>(own);
}

// How far a scan of a report is.
struct Scan {
    size_t next = 0;
};

void Bind(duckdb_bind_info info)
{
    const auto tell = [info](const char* text) { duckdb_bind_set_error(info, text); };
    Guard(
        [info] {
            const auto& function =
                *static_cast<const ReportFunction*>(duckdb_bind_get_extra_info(info));
            Owned<duckdb_client_context> context;
            duckdb_table_function_get_client_context(info, context.Out());
            const Owned<duckdb_value> path(duckdb_bind_get_parameter(info, 0));
            if (duckdb_is_null_value(path.Get())) {
                throw SqlError(std::string("the path of ") + function.name +
                               "() is NULL; give that of a model's document");
            }
            auto report = std::make_unique<Report>(
                function.make(info, context.Get(), Taken(duckdb_get_varchar(path.Get()))));
            for (const ReportColumn& column : report->columns) {
                duckdb_bind_add_result_column(info, column.name, TypeOf(column.type).Get());
            }
            duckdb_bind_set_cardinality(info, report->rows.size(), true);
            duckdb_bind_set_bind_data(info, report.release(), Delete<Report>);
        },
        tell);
}

void Init(duckdb_init_info info)
{
    duckdb_init_set_max_threads(info, 1);
    duckdb_init_set_init_data(info, new Scan, Delete<Scan>);
}

template <class T>
void Put(duckdb_vector out, idx_t row, T value)
{
    static_cast<T*>(duckdb_vector_get_data(out))[row] = value;
}

void Put(duckdb_vector out, idx_t row, const std::string& text)
{
    duckdb_vector_assign_string_element_len(out, row, text.data(), text.size());
}

void Put(duckdb_vector out, idx_t row, std::monostate)
{
    duckdb_vector_ensure_validity_writable(out);
    duckdb_validity_set_row_invalid(duckdb_vector_get_validity(out), row);
}

void Fill(duckdb_function_info info, duckdb_data_chunk out)
{
    const auto& report = *static_cast<const Report*>(duckdb_function_get_bind_data(info));
    auto& scan = *static_cast<Scan*>(duckdb_function_get_init_data(info));
    const size_t count = std::min<size_t>(duckdb_vector_size(), report.rows.size() - scan.next);
    for (size_t i = 0; i < report.columns.size(); ++i) {
        const duckdb_vector column = duckdb_data_chunk_get_vector(out, i);
        for (size_t row = 0; row < count; ++row) {
            std::visit([&](const auto& value) { Put(column, row, value); },
                       report.rows[scan.next + row][i]);
        }
    }
    scan.next += count;
    duckdb_data_chunk_set_size(out, count);
}

}  // namespace

void Register(duckdb_connection connection, const ReportFunction& function)
{
    const Owned<duckdb_table_function> made(duckdb_create_table_function());
    duckdb_table_function_set_name(made.Get(), function.name);
    for (const duckdb_type type : function.parameters) {
        duckdb_table_function_add_parameter(made.Get(), TypeOf(type).Get());
    }
    duckdb_table_function_set_extra_info(made.Get(), const_cast<ReportFunction*>(&function),
                                         [](void*) {});
    duckdb_table_function_set_bind(made.Get(), Bind);
    duckdb_table_function_set_init(made.Get(), Init);
    duckdb_table_function_set_function(made.Get(), Fill);
    if (duckdb_register_table_function(connection, made.Get()) == DuckDBSuccess) return;
    throw SqlError(std::string("the database doesn't take the function ") + function.name);
}

}  // namespace velscore::sql
