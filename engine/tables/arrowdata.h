#ifndef VELSCORE_ENGINE_TABLES_ARROWDATA_H
#define VELSCORE_ENGINE_TABLES_ARROWDATA_H

#include <utility>

#include "capi/include/velscore_arrow.h"

namespace MCVelscore_850 {

/// Owns one of the structures of Arrow's C data interface, which is moved by its bytes and let go
/// by its own callback: an ArrowSchema, an ArrowArray or an ArrowArrayStream.
template <class Structure>
class ArrowOwner {
public:
    ArrowOwner() = default;
    /// Takes over what `from` holds, which is released for its giver afterwards.
    explicit ArrowOwner(Structure& from) : own_(from) { from.release = nullptr; }
    ArrowOwner(ArrowOwner&& other) noexcept : own_(std::exchange(other.own_, Structure{})) {}
    ArrowOwner& operator=(ArrowOwner&& other) noexcept
    {
        std::swap(own_, other.own_);
        return *this;
    }
    ~ArrowOwner()
    {
        if (own_.release != nullptr) own_.release(&own_);
    }

    bool IsReleased() const { return own_.release == nullptr; }
    Structure* Get() { return &own_; }
    const Structure& operator*() const { return own_; }
    const Structure* operator->() const { return &own_; }
    /// Hands it over.
    void MoveTo(Structure& to) { to = std::exchange(own_, Structure{}); }

private:
    Structure own_{};
};

}  // namespace MCVelscore_850

#endif
