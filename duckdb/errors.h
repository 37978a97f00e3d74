#ifndef VELSCORE_DUCKDB_ERRORS_H
#define VELSCORE_DUCKDB_ERRORS_H

#include <exception>
#include <stdexcept>
#include <string>

#include "capi/include/velscore.hpp"

namespace velscore::sql {

/// What a statement asks that can't be done; what() says what was found and what to do.
class SqlError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// The text of the exception at hand as a statement's error: the library's with its code and
/// remedy.
inline std::string ErrorText() noexcept
{
    try {
        throw;
    } catch (const velscore::Error& error) {
        std::string text = error.what();
        text += " [" + std::to_string(error.Code()) + "]";
        if (!error.Remedy().empty()) text += "\n" + error.Remedy();
        return text;
    } catch (const std::exception& error) {
        return error.what();
    } catch (...) {
        return "velscore: a defect, an exception of an unknown kind";
    }
}

/// Runs what the database calls: no exception passes into it, its text goes to `tell`.
template <class Function, class Tell>
void Guard(Function function, Tell tell) noexcept
{
    try {
        function();
    } catch (...) {
        tell(("velscore: " + ErrorText()).c_str());
    }
}

}  // namespace velscore::sql

#endif
