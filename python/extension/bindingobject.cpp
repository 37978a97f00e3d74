#include <mutex>

#include "python/extension/failures.h"
#include "python/extension/madetable.h"
#include "python/extension/objects.h"
#include "python/extension/options.h"

namespace velscore_python {

PyTypeObject* bindingType = nullptr;

namespace {

struct BoundColumns {
    BoundColumns(SharedModel of, velscore_binding* made) : model(std::move(of)), binding(made) {}
    BoundColumns(const BoundColumns&) = delete;
    BoundColumns& operator=(const BoundColumns&) = delete;
    ~BoundColumns() { velscore_unbind(binding); }

    SharedModel model;
    velscore_binding* binding;
    std::mutex scoring;  ///< a binding serves one thread at a time
};
using SharedBinding = std::shared_ptr<BoundColumns>;

// What a stream is read by, and its failures told.
Owned<ArrowSchema> SchemaOf(Owned<ArrowArrayStream>& stream)
{
    ArrowSchema schema{};
    int code = 0;
    {
        const GilFree free;
        code = stream->get_schema(stream.Get(), &schema);
    }
    if (code != 0) RaiseOfStream(stream->get_last_error(stream.Get()));
    return Owned<ArrowSchema>(schema);
}

SharedBinding Bound(PyObject* model, const ArrowSchema& schema, const ScoreOptions& options)
{
    const SharedModel& of = ModelOf(model);
    velscore_binding* binding = nullptr;
    Call([&](velscore_error* error) {
        return velscore_bind(of.get(), options.Get(), &schema, &binding, error);
    });
    return std::make_shared<BoundColumns>(of, binding);
}

enum class Fault { None, Stream, Library };

SharedTable ScoreThrough(BoundColumns& bound, Owned<ArrowArrayStream>& stream)
{
    auto table = std::make_shared<ArrowTable>();
    Told told;
    Fault fault = Fault::None;
    {
        const GilFree free;
        const std::lock_guard guard(bound.scoring);
        if (velscore_binding_schema(bound.binding, table->schema.Get(), told.Get()) != 0) {
            fault = Fault::Library;
        }
        while (fault == Fault::None) {
            ArrowArray part{};
            if (stream->get_next(stream.Get(), &part) != 0) {
                fault = Fault::Stream;
                break;
            }
            if (part.release == nullptr) break;
            ArrowArray scored{};
            if (velscore_score_batch(bound.binding, &part, &scored, told.Get()) != 0) {
                fault = Fault::Library;
            } else {
                table->parts.emplace_back(scored);
            }
        }
    }
    if (fault == Fault::Stream) RaiseOfStream(stream->get_last_error(stream.Get()));
    if (fault == Fault::Library) Raise(*told.Get());
    return table;
}

PyObject* New(PyTypeObject* type, PyObject* arguments, PyObject*)
{
    return Guarded([&] {
        PyObject* model = nullptr;
        PyObject* source = nullptr;
        PyObject* asked = nullptr;
        if (PyArg_ParseTuple(arguments, "OOO:Binding", &model, &source, &asked) == 0) {
            throw PythonError();
        }
        const ScoreOptions options(asked);
        ArrowArrayStream given = StreamOfSource(source);
        Owned<ArrowArrayStream> stream(given);
        const Owned<ArrowSchema> schema = SchemaOf(stream);
        return NewObject(type, Bound(model, *schema.Get(), options)).Release();
    });
}

PyObject* Score(PyObject* self, PyObject* source)
{
    return Guarded([&] {
        ArrowArrayStream given = StreamOfSource(source);
        Owned<ArrowArrayStream> stream(given);
        const SharedBinding bound = ValueOf<SharedBinding>(self);
        return NewTable(ScoreThrough(*bound, stream)).Release();
    });
}

PyMethodDef methods[] = {
    {"score", Score, METH_O, "score(source)\n--\n\nScores one more table."},
    {nullptr, nullptr, 0, nullptr},
};

PyType_Slot slots[] = {
    {Py_tp_new, reinterpret_cast<void*>(New)},
    {Py_tp_dealloc, reinterpret_cast<void*>(Dealloc<SharedBinding>)},
    {Py_tp_methods, methods},
    {Py_tp_doc,
     const_cast<char*>("Binding(model, source, options)\n--\n\nA model whose columns are "
                       "found in tables like a source, which is only looked at.")},
    {0, nullptr},
};

PyType_Spec spec = {"velscore._velscore.Binding", sizeof(Holder<SharedBinding>), 0,
                    Py_TPFLAGS_DEFAULT, slots};

}  // namespace

void AddBindingType(PyObject* module) { bindingType = AddType(module, spec, "Binding"); }

Ref ScoreTable(PyObject* model, PyObject* source, PyObject* given)
{
    const ScoreOptions options(given);
    ArrowArrayStream from = StreamOfSource(source);
    Owned<ArrowArrayStream> stream(from);
    const Owned<ArrowSchema> schema = SchemaOf(stream);
    const SharedBinding bound = Bound(model, *schema.Get(), options);
    return NewTable(ScoreThrough(*bound, stream));
}

}  // namespace velscore_python
