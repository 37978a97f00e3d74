#ifndef VELSCORE_DUCKDB_API_H
#define VELSCORE_DUCKDB_API_H

#include <string>
#include <utility>

// The database's stable interface for extensions: every function of it is an entry of a table that
// the database hands over when it loads us, so no symbol of the database is linked.
#include "duckdb_extension.h"

DUCKDB_EXTENSION_EXTERN

namespace velscore::sql {

// How each kind of handle is ended.
inline void End(duckdb_client_context& handle) { duckdb_destroy_client_context(&handle); }
inline void End(duckdb_error_data& handle) { duckdb_destroy_error_data(&handle); }
inline void End(duckdb_expression& handle) { duckdb_destroy_expression(&handle); }
inline void End(duckdb_file_handle& handle) { duckdb_destroy_file_handle(&handle); }
inline void End(duckdb_file_open_options& handle) { duckdb_destroy_file_open_options(&handle); }
inline void End(duckdb_file_system& handle) { duckdb_destroy_file_system(&handle); }
inline void End(duckdb_logical_type& handle) { duckdb_destroy_logical_type(&handle); }
inline void End(duckdb_scalar_function& handle) { duckdb_destroy_scalar_function(&handle); }
inline void End(duckdb_scalar_function_set& handle) { duckdb_destroy_scalar_function_set(&handle); }
inline void End(duckdb_table_function& handle) { duckdb_destroy_table_function(&handle); }
inline void End(duckdb_vector& handle) { duckdb_destroy_vector(&handle); }
inline void End(duckdb_value& handle) { duckdb_destroy_value(&handle); }

/// Owns a handle of the database.
template <class Handle>
class Owned {
public:
    Owned() = default;
    explicit Owned(Handle own) : own_(own) {}
    Owned(Owned&& other) noexcept : own_(std::exchange(other.own_, nullptr)) {}
    Owned& operator=(Owned&& other) noexcept
    {
        std::swap(own_, other.own_);
        return *this;
    }
    ~Owned()
    {
        if (own_ != nullptr) End(own_);
    }

    Handle Get() const { return own_; }
    /// Where a function of the database puts a new handle.
    Handle* Out() { return &own_; }

private:
    Handle own_ = nullptr;
};

using Type = Owned<duckdb_logical_type>;
inline Type TypeOf(duckdb_type id) { return Type(duckdb_create_logical_type(id)); }

/// A text that the database allocated, which is freed.
inline std::string Taken(char* text)
{
    std::string taken = text == nullptr ? "" : text;
    duckdb_free(text);
    return taken;
}

}  // namespace velscore::sql

#endif
