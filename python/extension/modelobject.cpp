#include "python/extension/failures.h"
#include "python/extension/objects.h"
#include "python/extension/options.h"

namespace velscore_python {

PyTypeObject* modelType = nullptr;

namespace {

PyObject* New(PyTypeObject* type, PyObject* arguments, PyObject*)
{
    return Guarded([&] {
        const DocumentArguments document(arguments);
        velscore_model* model = nullptr;
        Call([&](velscore_error* error) {
            return velscore_open_text(document.Text(), document.Size(), document.Options(), &model,
                                      error);
        });
        return NewObject(type, SharedModel(model, velscore_close)).Release();
    });
}

PyObject* Describe(PyObject* self, PyObject*)
{
    return Guarded([&] {
        return ReportOf([&](char** json, velscore_error* error) {
                   return velscore_describe(ModelOf(self).get(), json, error);
               })
            .Release();
    });
}

PyObject* Verify(PyObject* self, PyObject*)
{
    return Guarded([&] {
        return ReportOf([&](char** json, velscore_error* error) {
                   return velscore_verify(ModelOf(self).get(), json, error);
               })
            .Release();
    });
}

// The columns of results, as a table without parts.
PyObject* ResultSchema(PyObject* self, PyObject* given)
{
    return Guarded([&] {
        const ScoreOptions options(given);
        auto table = std::make_shared<ArrowTable>();
        Call([&](velscore_error* error) {
            return velscore_result_schema(ModelOf(self).get(), options.Get(), table->schema.Get(),
                                          error);
        });
        return NewTable(std::move(table)).Release();
    });
}

PyMethodDef methods[] = {
    {"describe", Describe, METH_NOARGS, "describe()\n--\n\nThe description of the model, JSON."},
    {"verify", Verify, METH_NOARGS, "verify()\n--\n\nThe report of the verification, JSON."},
    {"result_schema", ResultSchema, METH_O,
     "result_schema(options)\n--\n\nThe results that a table would get, as a Table without rows."},
    {nullptr, nullptr, 0, nullptr},
};

PyType_Slot slots[] = {
    {Py_tp_new, reinterpret_cast<void*>(New)},
    {Py_tp_dealloc, reinterpret_cast<void*>(Dealloc<SharedModel>)},
    {Py_tp_methods, methods},
    {Py_tp_doc, const_cast<char*>("Model(text, name, as_is, allow)\n--\n\nA model of a document.")},
    {0, nullptr},
};

PyType_Spec spec = {"velscore._velscore.Model", sizeof(Holder<SharedModel>), 0, Py_TPFLAGS_DEFAULT,
                    slots};

}  // namespace

void AddModelType(PyObject* module) { modelType = AddType(module, spec, "Model"); }

const SharedModel& ModelOf(PyObject* object)
{
    if (Py_TYPE(object) != modelType) {
        PyErr_SetString(PyExc_TypeError, "a Model is expected");
        throw PythonError();
    }
    return ValueOf<SharedModel>(object);
}

}  // namespace velscore_python
