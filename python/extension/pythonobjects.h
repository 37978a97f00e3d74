// What the extension module needs of Python's C interface, as owners. Python.h comes first.
#ifndef VELSCORE_PYTHON_PYTHONOBJECTS_H
#define VELSCORE_PYTHON_PYTHONOBJECTS_H

#ifndef Py_LIMITED_API
#error "the module is built on the limited interface: one file for every Python from 3.9 on"
#endif
#define PY_SSIZE_T_CLEAN
#include <Python.h>

#include <exception>
#include <string>
#include <utility>

namespace velscore_python {

/// Thrown where Python's own error is set already.
struct PythonError : std::exception {
    const char* what() const noexcept override { return "an error of Python is set"; }
};

/// A reference that is owned. Needs the interpreter's lock, as all but GilHeld and GilFree do.
class Ref {
public:
    Ref() = default;
    /// Takes a new reference over; throws PythonError for null.
    static Ref Taken(PyObject* object)
    {
        if (object == nullptr) throw PythonError();
        return Ref(object);
    }
    static Ref Borrowed(PyObject* object)
    {
        Py_XINCREF(object);
        return Ref(object);
    }
    Ref(Ref&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
    Ref& operator=(Ref&& other) noexcept
    {
        std::swap(object_, other.object_);
        return *this;
    }
    ~Ref() { Py_XDECREF(object_); }

    PyObject* Get() const { return object_; }
    PyObject* Release() { return std::exchange(object_, nullptr); }
    explicit operator bool() const { return object_ != nullptr; }

private:
    explicit Ref(PyObject* object) : object_(object) {}
    PyObject* object_ = nullptr;
};

/// Other threads of Python run meanwhile.
class GilFree {
public:
    GilFree() : state_(PyEval_SaveThread()) {}
    GilFree(const GilFree&) = delete;
    GilFree& operator=(const GilFree&) = delete;
    ~GilFree() { PyEval_RestoreThread(state_); }

private:
    PyThreadState* state_;
};

/// Takes the lock, whatever the thread.
class GilHeld {
public:
    GilHeld() : state_(PyGILState_Ensure()) {}
    GilHeld(const GilHeld&) = delete;
    GilHeld& operator=(const GilHeld&) = delete;
    ~GilHeld() { PyGILState_Release(state_); }

private:
    PyGILState_STATE state_;
};

/// Runs a function that answers a new reference: exceptions become Python's.
template <class Function>
PyObject* Guarded(Function function) noexcept
{
    try {
        return function();
    } catch (const PythonError&) {
    } catch (const std::bad_alloc&) {
        PyErr_NoMemory();
    } catch (const std::exception& defect) {
        PyErr_SetString(PyExc_RuntimeError, defect.what());
    }
    return nullptr;
}

/// The text of a str without null characters; throws PythonError (TypeError, ValueError) for
/// whatever else, with `what` in its words.
std::string TextOf(PyObject* object, const char* what);

/// A new str of UTF-8; bytes that are none are replaced. None for null.
Ref NewText(const char* text);
Ref NewText(const std::string& text);

}  // namespace velscore_python

#endif
