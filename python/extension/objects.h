// The types of the module, as Python sees them.
#ifndef VELSCORE_PYTHON_OBJECTS_H
#define VELSCORE_PYTHON_OBJECTS_H

#include <memory>

#include "python/extension/pythonobjects.h"

#include "capi/include/velscore.h"
#include "python/extension/arrowtable.h"

namespace velscore_python {

/// An object of Python around a value of C++, which is made and ended with it.
template <class Value>
struct Holder {
    PyObject_HEAD Value value;
};

template <class Value>
Value& ValueOf(PyObject* object)
{
    return reinterpret_cast<Holder<Value>*>(object)->value;
}

/// A new object of a type, around a value. Throws PythonError.
template <class Value>
Ref NewObject(PyTypeObject* type, Value value)
{
    const auto allocate = reinterpret_cast<allocfunc>(PyType_GetSlot(type, Py_tp_alloc));
    Ref object = Ref::Taken(allocate(type, 0));
    new (&ValueOf<Value>(object.Get())) Value(std::move(value));
    return object;
}

template <class Value>
void Dealloc(PyObject* object)
{
    PyTypeObject* type = Py_TYPE(object);
    ValueOf<Value>(object).~Value();
    reinterpret_cast<freefunc>(PyType_GetSlot(type, Py_tp_free))(object);
    Py_DECREF(type);
}

using SharedModel = std::shared_ptr<velscore_model>;
using SharedTable = std::shared_ptr<const ArrowTable>;

/// A stream that is read once, and the model that it needs.
struct OpenStream {
    Owned<ArrowArrayStream> stream{};
    SharedModel model{};
};
using SharedStream = std::shared_ptr<OpenStream>;

/// The types, once MakeTypes() has made them.
extern PyTypeObject* modelType;
extern PyTypeObject* tableType;
extern PyTypeObject* streamType;
extern PyTypeObject* bindingType;
extern PyTypeObject* scorerType;

/// Each makes its type, adds it to the module and leaves it above. Throws PythonError.
void AddModelType(PyObject* module);
void AddTableType(PyObject* module);
void AddStreamType(PyObject* module);
void AddBindingType(PyObject* module);
void AddScorerType(PyObject* module);

/// Makes a type of its slots; throws PythonError.
PyTypeObject* AddType(PyObject* module, PyType_Spec& spec, const char* name);

/// Throws PythonError (TypeError) for an object of another type.
const SharedModel& ModelOf(PyObject* object);

/// What is scored: a Table, a capsule of a stream, or capsules of a schema and an array. Throws
/// PythonError.
ArrowArrayStream StreamOfSource(PyObject* source);

/// Scores a source with the options of a dict. Throws PythonError.
Ref ScoreTable(PyObject* model, PyObject* source, PyObject* options);

Ref NewTable(SharedTable table);
Ref NewStream(SharedStream stream);

}  // namespace velscore_python

#endif
