#include "duckdb/rowfunction.h"

#include <optional>
#include <string>
#include <utility>

#include "duckdb/document.h"
#include "duckdb/errors.h"
#include "duckdb/rowtable.h"

namespace velscore::sql {

namespace {

// What the database keeps of a call from binding on. Any number of threads read it.
struct Bound {
    std::shared_ptr<const Type> rowType;
    velscore::ScoreOptions options;
    std::shared_ptr<const OpenModel> model;  ///< null where the path isn't known yet
};

// What a thread has of a call.
struct ThreadState {
    std::string path;  ///< where it wasn't known at binding
    Owned<duckdb_client_context> context;
    std::unique_ptr<RowAnswerer> answerer;
};

template <class T>
void Delete(void* own)
{
    delete static_cast<T*>(own);
}

void* CopyBound(void* bound) { return new Bound(*static_cast<const Bound*>(bound)); }

const RowFunction& FunctionOf(void* extra) { return *static_cast<const RowFunction*>(extra); }

[[noreturn]] void RefuseNullPath(const RowFunction& function)
{
    throw SqlError(std::string("the path of ") + function.name +
                   "() is NULL; give that of a model's document");
}

// The value of an argument; nothing where it isn't a constant, or is a parameter that has none yet.
std::optional<Owned<duckdb_value>> ConstantOf(duckdb_bind_info info, idx_t index,
                                              duckdb_client_context context)
{
    const Owned<duckdb_expression> argument(duckdb_scalar_function_bind_get_argument(info, index));
    if (!duckdb_expression_is_foldable(argument.Get())) return std::nullopt;
    Owned<duckdb_value> value;
    const Owned<duckdb_error_data> error(
        duckdb_expression_fold(context, argument.Get(), value.Out()));
    if (error.Get() != nullptr && duckdb_error_data_has_error(error.Get())) {
        throw SqlError(duckdb_error_data_message(error.Get()));
    }
    return value;
}

std::optional<std::string> PathOf(duckdb_bind_info info, duckdb_client_context context,
                                  const RowFunction& function)
{
    const auto path = ConstantOf(info, 0, context);
    if (!path) return std::nullopt;
    if (path->Get() == nullptr || duckdb_is_null_value(path->Get())) RefuseNullPath(function);
    return Taken(duckdb_get_varchar(path->Get()));
}

velscore::ScoreOptions OptionsOf(duckdb_bind_info info, duckdb_client_context context,
                                 const RowFunction& function)
{
    constexpr idx_t kOptions = 2;
    if (duckdb_scalar_function_bind_get_argument_count(info) <= kOptions) return {};
    const auto options = ConstantOf(info, kOptions, context);
    if (!options) {
        throw SqlError(std::string("the options of ") + function.name +
                       "() are the same for all rows; give a struct of constants");
    }
    return RowOptionsOf(options->Get(), function.options, function.name);
}

std::shared_ptr<const Type> RowTypeOf(duckdb_bind_info info, const RowFunction& function)
{
    const Owned<duckdb_expression> row(duckdb_scalar_function_bind_get_argument(info, 1));
    auto type = std::make_shared<const Type>(duckdb_expression_return_type(row.Get()));
    CheckRowType(type->Get(), function.name);
    return type;
}

void Bind(duckdb_bind_info info)
{
    const auto tell = [info](const char* text) {
        duckdb_scalar_function_bind_set_error(info, text);
    };
    Guard(
        [info] {
            const RowFunction& function =
                FunctionOf(duckdb_scalar_function_bind_get_extra_info(info));
            Owned<duckdb_client_context> context;
            duckdb_scalar_function_get_client_context(info, context.Out());
            auto bound = std::make_unique<Bound>();
            bound->rowType = RowTypeOf(info, function);
            bound->options = OptionsOf(info, context.Get(), function);
            if (const auto path = PathOf(info, context.Get(), function)) {
                bound->model = ModelOf(context.Get(), *path);
                // Whether it can be.
                function.make(bound->model, bound->rowType->Get(), bound->options);
            }
            duckdb_scalar_function_set_bind_data(info, bound.release(), Delete<Bound>);
            duckdb_scalar_function_set_bind_data_copy(info, CopyBound);
        },
        tell);
}

void Init(duckdb_init_info info)
{
    const auto tell = [info](const char* text) {
        duckdb_scalar_function_init_set_error(info, text);
    };
    Guard(
        [info] {
            auto state = std::make_unique<ThreadState>();
            duckdb_scalar_function_init_get_client_context(info, state->context.Out());
            duckdb_scalar_function_init_set_state(info, state.release(), Delete<ThreadState>);
        },
        tell);
}

// The path of a chunk's rows, which has to be the one of the thread's rows before.
void ReadPath(duckdb_vector paths, idx_t count, const RowFunction& function, ThreadState& state)
{
    const uint64_t* validity = duckdb_vector_get_validity(paths);
    auto* texts = static_cast<duckdb_string_t*>(duckdb_vector_get_data(paths));
    for (idx_t row = 0; row < count; ++row) {
        if (validity != nullptr &&
            !duckdb_validity_row_is_valid(const_cast<uint64_t*>(validity), row)) {
            RefuseNullPath(function);
        }
        const std::string path(duckdb_string_t_data(&texts[row]),
                               duckdb_string_t_length(texts[row]));
        if (state.answerer == nullptr && row == 0) state.path = path;
        if (path == state.path) continue;
        throw SqlError(std::string(function.name) + "() has one model for all rows, and found '" +
                       state.path + "' and '" + path +
                       "'; write a call for each model, in CASE or in parts of a UNION ALL");
    }
}

void Run(duckdb_function_info info, duckdb_data_chunk chunk, duckdb_vector out)
{
    const auto tell = [info](const char* text) { duckdb_scalar_function_set_error(info, text); };
    Guard(
        [=] {
            const RowFunction& function = FunctionOf(duckdb_scalar_function_get_extra_info(info));
            const auto& bound =
                *static_cast<const Bound*>(duckdb_scalar_function_get_bind_data(info));
            auto& state = *static_cast<ThreadState*>(duckdb_scalar_function_get_state(info));
            const idx_t count = duckdb_data_chunk_get_size(chunk);
            if (count == 0) return;
            if (bound.model == nullptr) {
                ReadPath(duckdb_data_chunk_get_vector(chunk, 0), count, function, state);
            }
            if (state.answerer == nullptr) {
                const auto model =
                    bound.model != nullptr ? bound.model : ModelOf(state.context.Get(), state.path);
                state.answerer = function.make(model, bound.rowType->Get(), bound.options);
            }
            state.answerer->Answer(duckdb_data_chunk_get_vector(chunk, 1), count, out);
        },
        tell);
}

Owned<duckdb_scalar_function> MakeFunction(const RowFunction& function, bool takesOptions)
{
    Owned<duckdb_scalar_function> made(duckdb_create_scalar_function());
    duckdb_scalar_function_set_name(made.Get(), function.name);
    duckdb_scalar_function_add_parameter(made.Get(), TypeOf(DUCKDB_TYPE_VARCHAR).Get());
    duckdb_scalar_function_add_parameter(made.Get(), TypeOf(DUCKDB_TYPE_ANY).Get());
    if (takesOptions) {
        duckdb_scalar_function_add_parameter(made.Get(), TypeOf(DUCKDB_TYPE_ANY).Get());
    }
    duckdb_scalar_function_set_return_type(made.Get(), function.resultType().Get());
    // A NULL path is an error; what a NULL row is answered is the answerer's business.
    duckdb_scalar_function_set_special_handling(made.Get());
    duckdb_scalar_function_set_extra_info(made.Get(), const_cast<RowFunction*>(&function),
                                          [](void*) {});
    duckdb_scalar_function_set_bind(made.Get(), Bind);
    duckdb_scalar_function_set_init(made.Get(), Init);
    duckdb_scalar_function_set_function(made.Get(), Run);
    return made;
}

}  // namespace

void Register(duckdb_connection connection, const RowFunction& function)
{
    const Owned<duckdb_scalar_function_set> both(duckdb_create_scalar_function_set(function.name));
    for (const bool takesOptions : {false, true}) {
        duckdb_add_scalar_function_to_set(both.Get(), MakeFunction(function, takesOptions).Get());
    }
    if (duckdb_register_scalar_function_set(connection, both.Get()) == DuckDBSuccess) return;
    throw SqlError(std::string("the database doesn't take the function ") + function.name);
}

}  // namespace velscore::sql
