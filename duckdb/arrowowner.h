#ifndef VELSCORE_DUCKDB_ARROWOWNER_H
#define VELSCORE_DUCKDB_ARROWOWNER_H

#include <utility>

#include "capi/include/velscore_arrow.h"

namespace velscore::sql {

/// Owns a structure of Arrow's C data interface that the library gave.
template <class Structure>
class ArrowOwned {
public:
    ArrowOwned() = default;
    ArrowOwned(ArrowOwned&& other) noexcept : own_(std::exchange(other.own_, Structure{})) {}
    ArrowOwned& operator=(ArrowOwned&&) = delete;
    ~ArrowOwned()
    {
        if (own_.release != nullptr) own_.release(&own_);
    }

    Structure* Get() { return &own_; }
    Structure* operator->() { return &own_; }

private:
    Structure own_{};
};

}  // namespace velscore::sql

#endif
