#include "python/extension/options.h"

namespace velscore_python {

namespace {

// What stands under a key; null for nothing and None.
PyObject* Of(PyObject* dict, const char* key)
{
    PyObject* value = PyDict_GetItemString(dict, key);
    return value == Py_None ? nullptr : value;
}

bool Truth(PyObject* dict, const char* key)
{
    PyObject* value = Of(dict, key);
    if (value == nullptr) return false;
    const int truth = PyObject_IsTrue(value);
    if (truth < 0) throw PythonError();
    return truth != 0;
}

const char* Word(PyObject* dict, const char* key, std::string& text)
{
    PyObject* value = Of(dict, key);
    if (value == nullptr) return nullptr;
    text = TextOf(value, key);
    return text.c_str();
}

void Take(PyObject* dict, const char* key, Texts& texts, const char* const*& pointers,
          size_t& count)
{
    if (PyObject* value = Of(dict, key); value != nullptr) texts.Take(value, key);
    pointers = texts.Pointers();
    count = texts.Count();
}

}  // namespace

void Texts::Take(PyObject* texts, const char* what)
{
    const Ref list = Ref::Taken(PySequence_List(texts));
    for (Py_ssize_t i = 0; i < PyList_Size(list.Get()); ++i) {
        Add(TextOf(PyList_GetItem(list.Get(), i), what));
    }
}

void Texts::Add(std::string text) { texts_.push_back(std::move(text)); }

const char* const* Texts::Pointers()
{
    pointers_.clear();
    for (const std::string& text : texts_) pointers_.push_back(text.c_str());
    return pointers_.data();
}

DocumentArguments::DocumentArguments(PyObject* arguments)
{
    PyObject* name = nullptr;
    PyObject* allow = nullptr;
    if (PyArg_ParseTuple(arguments, "y#OpO", &text_, &size_, &name, &options_.as_is, &allow) == 0) {
        throw PythonError();
    }
    name_ = TextOf(name, "the name of a document");
    allow_.Take(allow, "a rule of allow");
    options_.name = name_.c_str();
    options_.allow = allow_.Pointers();
    options_.allow_count = allow_.Count();
}

ScoreOptions::ScoreOptions(PyObject* dict)
{
    if (dict == Py_None) return;
    if (!PyDict_Check(dict)) {
        PyErr_SetString(PyExc_TypeError, "options are a dict");
        throw PythonError();
    }
    Take(dict, "keep", keep_, options_.keep, options_.keep_count);
    options_.keep_all = Truth(dict, "keep_all") ? 1 : 0;
    Take(dict, "columns", columns_, options_.columns, options_.columns_count);
    options_.nan = Word(dict, "nan", nan_);
    options_.policy = Word(dict, "policy", policy_);
    if (PyObject* level = Of(dict, "level"); level != nullptr) {
        options_.level = PyFloat_AsDouble(level);
        if (PyErr_Occurred() != nullptr) throw PythonError();
    }
    options_.strict = Truth(dict, "strict") ? 1 : 0;
    Take(dict, "missing", missing_, options_.missing, options_.missing_count);
    if (PyObject* map = Of(dict, "map"); map != nullptr) {
        const Ref fields = Ref::Taken(PyMapping_Keys(map));
        const Ref columns = Ref::Taken(PyMapping_Values(map));
        mapFields_.Take(fields.Get(), "a field of map");
        mapColumns_.Take(columns.Get(), "a column of map");
    }
    if (PyObject* top = Of(dict, "top"); top != nullptr) {
        top_ = PyLong_AsSize_t(top);
        if (PyErr_Occurred() != nullptr) throw PythonError();
        options_.top = &top_;
    }
    if (PyObject* row = Of(dict, "baseline_row"); row != nullptr) {
        options_.baseline_row = PyLong_AsLongLong(row);
        if (PyErr_Occurred() != nullptr) throw PythonError();
    }
    options_.map_fields = mapFields_.Pointers();
    options_.map_columns = mapColumns_.Pointers();
    options_.map_count = mapFields_.Count();
}

}  // namespace velscore_python
