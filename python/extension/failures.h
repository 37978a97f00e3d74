#ifndef VELSCORE_PYTHON_FAILURES_H
#define VELSCORE_PYTHON_FAILURES_H

#include "python/extension/pythonobjects.h"

#include <memory>

#include "capi/include/velscore.h"

namespace velscore_python {

/// An error structure of one call.
class Told {
public:
    Told() = default;
    Told(const Told&) = delete;
    Told& operator=(const Told&) = delete;
    ~Told() { velscore_error_clear(&error_); }
    velscore_error* Get() { return &error_; }

private:
    velscore_error error_ = VELSCORE_ERROR_INIT;
};

/// What makes an exception of the keywords text, code, fault, remedy, file, element, line, column,
/// field, row.
/// Null until the package has set it.
void SetErrorMaker(PyObject* maker);

/// Raises what a call told. Needs the interpreter's lock.
[[noreturn]] void Raise(const velscore_error& error);

/// Raises what a stream told: its text holds code and remedy.
[[noreturn]] void RaiseOfStream(const char* text);

/// Runs a call of the library while other threads of Python run; raises what it tells.
template <class Function>
void Call(Function function)
{
    Told told;
    int code = 0;
    {
        const GilFree free;
        code = function(told.Get());
    }
    if (code != 0) Raise(*told.Get());
}

/// The text of a call that gives one. Throws PythonError.
template <class Function>
Ref ReportOf(Function function)
{
    char* json = nullptr;
    Call([&](velscore_error* error) { return function(&json, error); });
    const std::unique_ptr<char, void (*)(char*)> own(json, velscore_free);
    return NewText(json);
}

}  // namespace velscore_python

#endif
