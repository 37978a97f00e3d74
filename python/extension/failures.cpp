#include "python/extension/failures.h"

namespace velscore_python {

namespace {

PyObject* errorMaker = nullptr;

[[noreturn]] void RaiseMade(const Ref& exception)
{
    PyErr_SetObject(reinterpret_cast<PyObject*>(Py_TYPE(exception.Get())), exception.Get());
    throw PythonError();
}

Ref NumberOrNone(unsigned long number)
{
    return number == 0 ? Ref::Borrowed(Py_None) : Ref::Taken(PyLong_FromUnsignedLong(number));
}

void Set(const Ref& details, const char* key, const Ref& value)
{
    if (PyDict_SetItemString(details.Get(), key, value.Get()) != 0) throw PythonError();
}

[[noreturn]] void RaiseOf(const Ref& details)
{
    if (errorMaker == nullptr) {
        PyErr_SetObject(PyExc_RuntimeError, details.Get());
        throw PythonError();
    }
    const Ref none = Ref::Taken(PyTuple_New(0));
    RaiseMade(Ref::Taken(PyObject_Call(errorMaker, none.Get(), details.Get())));
}

}  // namespace

void SetErrorMaker(PyObject* maker)
{
    Py_XINCREF(maker);
    Py_XDECREF(errorMaker);
    errorMaker = maker;
}

void Raise(const velscore_error& error)
{
    const Ref details = Ref::Taken(PyDict_New());
    Set(details, "text", NewText(error.text == nullptr ? "" : error.text));
    Set(details, "code", Ref::Taken(PyLong_FromLong(error.code)));
    Set(details, "fault", Ref::Taken(PyLong_FromLong(error.fault)));
    Set(details, "remedy", NewText(error.remedy));
    Set(details, "file", NewText(error.file));
    Set(details, "element", NewText(error.element));
    Set(details, "line", NumberOrNone(error.line));
    Set(details, "column", NumberOrNone(error.column));
    Set(details, "field", NewText(error.field));
    Set(details, "row", NumberOrNone(error.row));
    RaiseOf(details);
}

void RaiseOfStream(const char* text)
{
    const Ref details = Ref::Taken(PyDict_New());
    Set(details, "text", NewText(text == nullptr ? "the stream tells no reason" : text));
    RaiseOf(details);
}

}  // namespace velscore_python
