#include "duckdb/document.h"

#include <algorithm>

#include "duckdb/errors.h"

namespace velscore::sql {

namespace {

constexpr size_t kMostModels = 32;
constexpr size_t kMostBytes = size_t{64} << 20;

// A part of a file that is read at once.
constexpr size_t kPart = size_t{1} << 20;

[[noreturn]] void Refuse(const std::string& path, duckdb_error_data why)
{
    const Owned<duckdb_error_data> error(why);
    const char* text = error.Get() == nullptr ? nullptr : duckdb_error_data_message(error.Get());
    throw SqlError("the model '" + path + "' can't be read: " +
                   (text == nullptr || *text == '\0' ? "the database tells no reason" : text));
}

}  // namespace

std::string ReadDocument(duckdb_client_context context, const std::string& path)
{
    const Owned<duckdb_file_system> files(duckdb_client_context_get_file_system(context));
    const Owned<duckdb_file_open_options> options(duckdb_create_file_open_options());
    duckdb_file_open_options_set_flag(options.Get(), DUCKDB_FILE_FLAG_READ, true);
    Owned<duckdb_file_handle> file;
    if (duckdb_file_system_open(files.Get(), path.c_str(), options.Get(), file.Out()) !=
        DuckDBSuccess) {
        Refuse(path, duckdb_file_system_error_data(files.Get()));
    }
    std::string bytes;
    for (;;) {
        const size_t size = bytes.size();
        bytes.resize(size + kPart);
        const int64_t count =
            duckdb_file_handle_read(file.Get(), bytes.data() + size, static_cast<int64_t>(kPart));
        if (count < 0) Refuse(path, duckdb_file_handle_error_data(file.Get()));
        bytes.resize(size + static_cast<size_t>(count));
        if (count == 0) return bytes;
    }
}

std::shared_ptr<const OpenModel> ModelOf(duckdb_client_context context, const std::string& path)
{
    static ModelCache models(kMostModels, kMostBytes);
    return models.Of(path, ReadDocument(context, path));
}

}  // namespace velscore::sql
