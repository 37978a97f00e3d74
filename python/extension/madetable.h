#ifndef VELSCORE_PYTHON_MADETABLE_H
#define VELSCORE_PYTHON_MADETABLE_H

#include <memory>

#include "python/extension/pythonobjects.h"

#include "python/extension/arrowtable.h"

namespace velscore_python {

/// A table of one part out of Python's columns, by their names. A column is
///
///     None                                     a column of `rows` missing values
///     list                                     values: None, bool, int, float, str; what else
///     there
///                                              is goes through `convert`, which answers one of
///                                              these
///     (format, address, owners, bits)          a buffer of Arrow's format, borrowed: `owners` is
///     kept
///                                              alive; `bits` is the address of validity bits or 0
///     (format, address, owners, bits, list)    indexes of such a buffer into a list of values
///     (schema, array)                          Arrow's capsules, taken over
///
/// A list becomes numbers (float64), whole numbers (int64, where one is beyond 2^53), truths or
/// texts (large_utf8, where one value is a text or beyond int64: the others are written as velscore
/// writes numbers). Throws PythonError. Needs the interpreter's lock; the table is released on any
/// thread.
std::shared_ptr<const ArrowTable> MakeTable(PyObject* names, PyObject* columns, Py_ssize_t rows,
                                            PyObject* convert);

/// Moves a structure out of a capsule of Arrow's. Throws PythonError for another object, and for
/// one that was read already.
template <class Structure>
Owned<Structure> TakenFrom(PyObject* capsule, const char* name)
{
    auto* structure = static_cast<Structure*>(PyCapsule_GetPointer(capsule, name));
    if (structure == nullptr) throw PythonError();
    if (structure->release == nullptr) {
        PyErr_Format(PyExc_ValueError, "%s was read already", name);
        throw PythonError();
    }
    return Owned<Structure>(*structure);
}

/// A capsule that owns a structure.
template <class Structure>
Ref CapsuleOf(Structure structure, const char* name)
{
    auto owned = std::make_unique<Structure>(structure);
    PyObject* capsule = PyCapsule_New(owned.get(), name, [](PyObject* object) {
        auto* held =
            static_cast<Structure*>(PyCapsule_GetPointer(object, PyCapsule_GetName(object)));
        if (held->release != nullptr) held->release(held);
        delete held;
    });
    if (capsule == nullptr) {
        structure.release(&structure);
        throw PythonError();
    }
    owned.release();
    return Ref::Taken(capsule);
}

inline constexpr char kSchemaCapsule[] = "arrow_schema";
inline constexpr char kArrayCapsule[] = "arrow_array";
inline constexpr char kStreamCapsule[] = "arrow_array_stream";

}  // namespace velscore_python

#endif
