#ifndef VELSCORE_PYTHON_ARROWTABLE_H
#define VELSCORE_PYTHON_ARROWTABLE_H

#include <memory>
#include <vector>

#include "capi/include/velscore_arrow.h"

namespace velscore_python {

/// A structure of Arrow's C data interface, released when it ends.
template <class Structure>
class Owned {
public:
    Owned() = default;
    /// Moves it here: the other is released afterwards, as the interface has it.
    explicit Owned(Structure& given) : structure_(given) { given.release = nullptr; }
    Owned(Owned&& other) noexcept : Owned(other.structure_) {}
    Owned& operator=(Owned&& other) noexcept
    {
        std::swap(structure_, other.structure_);
        return *this;
    }
    ~Owned()
    {
        if (structure_.release != nullptr) structure_.release(&structure_);
    }
    Structure* Get() { return &structure_; }
    const Structure* Get() const { return &structure_; }
    Structure* operator->() { return &structure_; }
    const Structure* operator->() const { return &structure_; }
    bool IsReleased() const { return structure_.release == nullptr; }

private:
    Structure structure_{};
};

/// A structure of the same buffers or texts, down to its last child, which keeps `owner` until it
/// is released: children may be moved out of it. Any thread.
ArrowSchema ViewOf(const ArrowSchema& schema, std::shared_ptr<const void> owner);
ArrowArray ViewOf(const ArrowArray& array, std::shared_ptr<const void> owner);

/// A table in memory: its schema, a struct, and its parts.
struct ArrowTable {
    Owned<ArrowSchema> schema;
    std::vector<Owned<ArrowArray>> parts;

    size_t ColumnCount() const { return static_cast<size_t>(schema->n_children); }
};

/// A stream of the parts, which may be read as often as one is made. Any thread.
ArrowArrayStream StreamOf(std::shared_ptr<const ArrowTable> table);

}  // namespace velscore_python

#endif
