#include <cerrno>

#include "python/extension/failures.h"
#include "python/extension/madetable.h"
#include "python/extension/objects.h"

namespace velscore_python {

PyTypeObject* streamType = nullptr;

namespace {

SharedStream& Of(PyObject* self) { return ValueOf<SharedStream>(self); }

OpenStream& Unread(PyObject* self)
{
    const SharedStream& stream = Of(self);
    if (stream == nullptr || stream->stream.IsReleased()) {
        PyErr_SetString(PyExc_ValueError,
                        "the stream was handed on or read to its end; it is read once");
        throw PythonError();
    }
    return *stream;
}

// A stream that is handed on keeps its model.
OpenStream& HandedOn(ArrowArrayStream* stream)
{
    return **static_cast<SharedStream*>(stream->private_data);
}
int GetSchema(ArrowArrayStream* stream, ArrowSchema* out)
{
    ArrowArrayStream* inner = HandedOn(stream).stream.Get();
    return inner->get_schema(inner, out);
}
int GetNext(ArrowArrayStream* stream, ArrowArray* out)
{
    ArrowArrayStream* inner = HandedOn(stream).stream.Get();
    return inner->get_next(inner, out);
}
const char* GetLastError(ArrowArrayStream* stream)
{
    ArrowArrayStream* inner = HandedOn(stream).stream.Get();
    return inner->get_last_error(inner);
}
void Release(ArrowArrayStream* stream)
{
    delete static_cast<SharedStream*>(stream->private_data);
    stream->release = nullptr;
}

PyObject* StreamCapsule(PyObject* self, PyObject*, PyObject*)
{
    return Guarded([&] {
        Unread(self);
        auto handed = std::make_unique<SharedStream>(std::exchange(Of(self), nullptr));
        const ArrowArrayStream stream{GetSchema, GetNext, GetLastError, Release, handed.release()};
        return CapsuleOf(stream, kStreamCapsule).Release();
    });
}

Owned<ArrowSchema> SchemaOf(OpenStream& open)
{
    ArrowSchema schema{};
    ArrowArrayStream* stream = open.stream.Get();
    int code = 0;
    {
        const GilFree free;
        code = stream->get_schema(stream, &schema);
    }
    if (code != 0) RaiseOfStream(stream->get_last_error(stream));
    return Owned<ArrowSchema>(schema);
}

PyObject* SchemaCapsule(PyObject* self, PyObject*)
{
    return Guarded([&] {
        Owned<ArrowSchema> schema = SchemaOf(Unread(self));
        return CapsuleOf(std::exchange(*schema.Get(), ArrowSchema{}), kSchemaCapsule).Release();
    });
}

// The next table; null without an error at the end.
PyObject* Next(PyObject* self)
{
    return Guarded([&]() -> PyObject* {
        // Another thread might hand the stream on meanwhile.
        if (Of(self) == nullptr) Unread(self);
        const SharedStream open = Of(self);
        if (open->stream.IsReleased()) return nullptr;
        auto table = std::make_shared<ArrowTable>();
        table->schema = SchemaOf(*open);
        ArrowArrayStream* stream = open->stream.Get();
        ArrowArray part{};
        int code = 0;
        {
            const GilFree free;
            code = stream->get_next(stream, &part);
        }
        if (code != 0) RaiseOfStream(stream->get_last_error(stream));
        if (part.release == nullptr) {
            open->stream = {};
            return nullptr;
        }
        table->parts.emplace_back(part);
        return NewTable(std::move(table)).Release();
    });
}

PyObject* Read(PyObject* self, PyObject*)
{
    return Guarded([&] {
        OpenStream& open = Unread(self);
        const SharedStream kept = Of(self);
        auto table = std::make_shared<ArrowTable>();
        table->schema = SchemaOf(open);
        ArrowArrayStream* stream = open.stream.Get();
        int code = 0;
        {
            const GilFree free;
            for (;;) {
                ArrowArray part{};
                code = stream->get_next(stream, &part);
                if (code != 0 || part.release == nullptr) break;
                table->parts.emplace_back(part);
            }
        }
        if (code != 0) RaiseOfStream(stream->get_last_error(stream));
        kept->stream = {};
        return NewTable(std::move(table)).Release();
    });
}

PyObject* Self(PyObject* self)
{
    Py_INCREF(self);
    return self;
}

PyMethodDef methods[] = {
    {"__arrow_c_stream__",
     reinterpret_cast<PyCFunction>(reinterpret_cast<void (*)()>(StreamCapsule)),
     METH_VARARGS | METH_KEYWORDS,
     "__arrow_c_stream__(requested_schema=None)\n--\n\nHands the stream on, once."},
    {"__arrow_c_schema__", SchemaCapsule, METH_NOARGS,
     "__arrow_c_schema__()\n--\n\nThe schema of Arrow's C interface."},
    {"read", Read, METH_NOARGS, "read()\n--\n\nAll that is left of the stream, as one Table."},
    {nullptr, nullptr, 0, nullptr},
};

PyType_Slot slots[] = {
    {Py_tp_dealloc, reinterpret_cast<void*>(Dealloc<SharedStream>)},
    {Py_tp_methods, methods},
    {Py_tp_iter, reinterpret_cast<void*>(Self)},
    {Py_tp_iternext, reinterpret_cast<void*>(Next)},
    {Py_tp_doc,
     const_cast<char*>(
         "Tables that are scored as they are asked for. Read it once: iterate over its "
         "Tables,\nor give it to whatever reads Arrow's C streams. One thread at a time.")},
    {0, nullptr},
};

PyType_Spec spec = {"velscore.Stream", sizeof(Holder<SharedStream>), 0, Py_TPFLAGS_DEFAULT, slots};

}  // namespace

void AddStreamType(PyObject* module) { streamType = AddType(module, spec, "Stream"); }

Ref NewStream(SharedStream stream) { return NewObject(streamType, std::move(stream)); }

}  // namespace velscore_python
