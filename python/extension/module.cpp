// _velscore: the library's C interface for the modules of the package. All that is scored passes as
// structures of Arrow's C data interface; what a table of Python is made of, the modules know.

#include "python/extension/failures.h"
#include "python/extension/madetable.h"
#include "python/extension/objects.h"
#include "python/extension/options.h"

namespace velscore_python {

PyTypeObject* AddType(PyObject* module, PyType_Spec& spec, const char* name)
{
    Ref type = Ref::Taken(PyType_FromSpec(&spec));
    auto* made = reinterpret_cast<PyTypeObject*>(type.Get());
    Py_INCREF(type.Get());  // the module's; the other stays with the pointer
    if (PyModule_AddObject(module, name, type.Get()) != 0) throw PythonError();
    type.Release();
    return made;
}

namespace {

// A table that is one array: its schema is another capsule.
SharedTable TableOf(PyObject* schema, PyObject* array)
{
    auto table = std::make_shared<ArrowTable>();
    table->schema = TakenFrom<ArrowSchema>(schema, kSchemaCapsule);
    table->parts.push_back(TakenFrom<ArrowArray>(array, kArrayCapsule));
    return table;
}

PyObject* ScoreFunction(PyObject*, PyObject* arguments)
{
    return Guarded([&] {
        PyObject* model = nullptr;
        PyObject* source = nullptr;
        PyObject* options = nullptr;
        if (PyArg_ParseTuple(arguments, "OOO:score", &model, &source, &options) == 0) {
            throw PythonError();
        }
        return ScoreTable(model, source, options).Release();
    });
}

using StreamFunction = int (*)(const velscore_model*, const velscore_score_options*,
                               ArrowArrayStream*, ArrowArrayStream*, velscore_error*);

PyObject* StreamThrough(PyObject* arguments, StreamFunction function)
{
    return Guarded([&] {
        PyObject* model = nullptr;
        PyObject* source = nullptr;
        PyObject* given = nullptr;
        if (PyArg_ParseTuple(arguments, "OOO", &model, &source, &given) == 0) throw PythonError();
        const ScoreOptions options(given);
        auto open = std::make_shared<OpenStream>();
        open->model = ModelOf(model);
        ArrowArrayStream stream = StreamOfSource(source);
        Call([&](velscore_error* error) {
            return function(open->model.get(), options.Get(), &stream, open->stream.Get(), error);
        });
        return NewStream(std::move(open)).Release();
    });
}

PyObject* ScoreStream(PyObject*, PyObject* arguments)
{
    return StreamThrough(arguments, velscore_score);
}

PyObject* CurveStream(PyObject*, PyObject* arguments)
{
    return StreamThrough(arguments, velscore_curve);
}

PyObject* ExplainStream(PyObject*, PyObject* arguments)
{
    return Guarded([&] {
        PyObject* model = nullptr;
        PyObject* source = nullptr;
        PyObject* given = nullptr;
        PyObject* baseline = nullptr;
        if (PyArg_ParseTuple(arguments, "OOOO:explain", &model, &source, &given, &baseline) == 0) {
            throw PythonError();
        }
        ScoreOptions options(given);
        Owned<ArrowArrayStream> tables;
        if (baseline != Py_None) {
            ArrowArrayStream made = StreamOfSource(baseline);
            tables = Owned<ArrowArrayStream>(made);
            options.SetBaseline(tables.Get());
        }
        auto open = std::make_shared<OpenStream>();
        open->model = ModelOf(model);
        ArrowArrayStream stream = StreamOfSource(source);
        Call([&](velscore_error* error) {
            return velscore_explain(open->model.get(), options.Get(), &stream, open->stream.Get(),
                                    error);
        });
        return NewStream(std::move(open)).Release();
    });
}

PyObject* ScanFile(PyObject*, PyObject* arguments)
{
    return Guarded([&] {
        PyObject* model = nullptr;
        PyObject* path = nullptr;
        PyObject* given = nullptr;
        const char* delimiter = nullptr;
        const char* decimal = nullptr;
        int header = 1;
        Py_ssize_t threads = 0;
        if (PyArg_ParseTuple(arguments, "OOOzzpn:scan", &model, &path, &given, &delimiter, &decimal,
                             &header, &threads) == 0) {
            throw PythonError();
        }
        if (threads < 0) {
            PyErr_SetString(PyExc_ValueError, "threads is 0 or more");
            throw PythonError();
        }
        char* name = nullptr;
        Py_ssize_t size = 0;
        if (PyBytes_AsStringAndSize(path, &name, &size) != 0) throw PythonError();
        const ScoreOptions options(given);
        velscore_csv_options csv = VELSCORE_CSV_OPTIONS_INIT;
        csv.score = options.Get();
        csv.delimiter = delimiter;
        csv.decimal = decimal;
        csv.no_header = header == 0 ? 1 : 0;
        csv.threads = static_cast<size_t>(threads);
        auto open = std::make_shared<OpenStream>();
        open->model = ModelOf(model);
        Call([&](velscore_error* error) {
            return velscore_scan_csv(open->model.get(), name, &csv, open->stream.Get(), error);
        });
        return NewStream(std::move(open)).Release();
    });
}

PyObject* CheckDocument(PyObject*, PyObject* arguments)
{
    return Guarded([&] {
        const DocumentArguments document(arguments);
        return ReportOf([&](char** json, velscore_error* error) {
                   return velscore_check_text(document.Text(), document.Size(), document.Options(),
                                              json, error);
               })
            .Release();
    });
}

PyObject* TableFunction(PyObject*, PyObject* arguments)
{
    return Guarded([&] {
        PyObject* names = nullptr;
        PyObject* columns = nullptr;
        Py_ssize_t rows = 0;
        PyObject* convert = nullptr;
        if (PyArg_ParseTuple(arguments, "O!O!nO:table", &PyList_Type, &names, &PyList_Type,
                             &columns, &rows, &convert) == 0) {
            throw PythonError();
        }
        return NewTable(MakeTable(names, columns, rows, convert)).Release();
    });
}

PyObject* OnError(PyObject*, PyObject* maker)
{
    SetErrorMaker(maker);
    Py_RETURN_NONE;
}

PyMethodDef functions[] = {
    {"score", ScoreFunction, METH_VARARGS,
     "score(model, source, options)\n--\n\nScores a table: a Table, a capsule of a stream, or "
     "capsules of schema and array."},
    {"stream", ScoreStream, METH_VARARGS,
     "stream(model, source, options)\n--\n\nThe same as it is asked for."},
    {"curve", CurveStream, METH_VARARGS,
     "curve(model, source, options)\n--\n\nSurvival curves of the rows."},
    {"explain", ExplainStream, METH_VARARGS,
     "explain(model, source, options, baseline)\n--\n\nHow the linear predictors of the rows add "
     "up."},
    {"scan", ScanFile, METH_VARARGS,
     "scan(model, path, options, delimiter, decimal, header, threads)\n--\n\nScores a file."},
    {"check", CheckDocument, METH_VARARGS,
     "check(text, name, as_is, allow)\n--\n\nThe report of a document, JSON."},
    {"table", TableFunction, METH_VARARGS,
     "table(names, columns, rows, convert)\n--\n\nA Table of Python's columns."},
    {"on_error", OnError, METH_O,
     "on_error(maker)\n--\n\nSets what makes an exception of the keywords of a failure."},
    {nullptr, nullptr, 0, nullptr},
};

PyModuleDef definition = {PyModuleDef_HEAD_INIT,
                          "velscore._velscore",
                          "velscore's library for the modules of the package.",
                          -1,
                          functions,
                          nullptr,
                          nullptr,
                          nullptr,
                          nullptr};

}  // namespace

ArrowArrayStream StreamOfSource(PyObject* source)
{
    if (Py_TYPE(source) == tableType) return StreamOf(ValueOf<SharedTable>(source));
    if (PyTuple_Check(source) && PyTuple_Size(source) == 2) {
        return StreamOf(TableOf(PyTuple_GetItem(source, 0), PyTuple_GetItem(source, 1)));
    }
    auto stream = TakenFrom<ArrowArrayStream>(source, kStreamCapsule);
    return std::exchange(*stream.Get(), ArrowArrayStream{});
}

}  // namespace velscore_python

PyMODINIT_FUNC PyInit__velscore();
PyMODINIT_FUNC PyInit__velscore()
{
    using namespace velscore_python;
    return Guarded([] {
        Ref module = Ref::Taken(PyModule_Create(&definition));
        AddModelType(module.Get());
        AddTableType(module.Get());
        AddStreamType(module.Get());
        AddBindingType(module.Get());
        AddScorerType(module.Get());
        if (PyModule_AddStringConstant(module.Get(), "version", velscore_version()) != 0) {
            throw PythonError();
        }
        return module.Release();
    });
}
