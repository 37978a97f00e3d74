#include "python/extension/pythonobjects.h"

#include <cstring>

namespace velscore_python {

std::string TextOf(PyObject* object, const char* what)
{
    if (!PyUnicode_Check(object)) {
        PyErr_Format(PyExc_TypeError, "%s is a str, not %R", what, Py_TYPE(object));
        throw PythonError();
    }
    const Ref bytes = Ref::Taken(PyUnicode_AsUTF8String(object));
    char* text = nullptr;
    Py_ssize_t size = 0;
    if (PyBytes_AsStringAndSize(bytes.Get(), &text, &size) != 0) throw PythonError();
    if (std::memchr(text, 0, static_cast<size_t>(size)) != nullptr) {
        PyErr_Format(PyExc_ValueError, "%s holds a null character: %R", what, object);
        throw PythonError();
    }
    return {text, static_cast<size_t>(size)};
}

Ref NewText(const char* text)
{
    if (text == nullptr) return Ref::Borrowed(Py_None);
    return Ref::Taken(
        PyUnicode_DecodeUTF8(text, static_cast<Py_ssize_t>(std::strlen(text)), "replace"));
}

Ref NewText(const std::string& text)
{
    return Ref::Taken(
        PyUnicode_DecodeUTF8(text.data(), static_cast<Py_ssize_t>(text.size()), "replace"));
}

}  // namespace velscore_python
