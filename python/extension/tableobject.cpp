#include <cstring>

#include "python/extension/objects.h"

#include "python/extension/madetable.h"

namespace velscore_python {

PyTypeObject* tableType = nullptr;

namespace {

const SharedTable& Of(PyObject* self) { return ValueOf<SharedTable>(self); }

PyObject* StreamCapsule(PyObject* self, PyObject*, PyObject*)
{
    return Guarded([&] { return CapsuleOf(StreamOf(Of(self)), kStreamCapsule).Release(); });
}

PyObject* SchemaCapsule(PyObject* self, PyObject*)
{
    return Guarded([&] {
        const SharedTable& table = Of(self);
        return CapsuleOf(ViewOf(*table->schema.Get(), table), kSchemaCapsule).Release();
    });
}

PyObject* Names(PyObject* self, void*)
{
    return Guarded([&] {
        const SharedTable& table = Of(self);
        Ref names = Ref::Taken(PyList_New(0));
        for (size_t i = 0; i < table->ColumnCount(); ++i) {
            const Ref name = NewText(table->schema->children[i]->name);
            if (PyList_Append(names.Get(), name.Get()) != 0) throw PythonError();
        }
        return names.Release();
    });
}

int64_t RowsOf(const ArrowTable& table)
{
    int64_t rows = 0;
    for (const auto& part : table.parts) rows += part->length;
    return rows;
}

PyObject* Rows(PyObject* self, void*) { return PyLong_FromLongLong(RowsOf(*Of(self))); }

Py_ssize_t Length(PyObject* self) { return static_cast<Py_ssize_t>(RowsOf(*Of(self))); }

size_t ColumnOf(const ArrowTable& table, PyObject* index)
{
    const Py_ssize_t column = PyLong_AsSsize_t(index);
    if (column == -1 && PyErr_Occurred() != nullptr) throw PythonError();
    if (column < 0 || static_cast<size_t>(column) >= table.ColumnCount()) {
        PyErr_SetString(PyExc_IndexError, "there is no such column");
        throw PythonError();
    }
    return static_cast<size_t>(column);
}

// A column of a part, from the part's own first row on.
struct Cells {
    Cells(const ArrowTable& table, size_t column, const ArrowArray& part)
        : schema(*table.schema->children[column]),
          array(*part.children[column]),
          first(array.offset + part.offset),
          rows(part.length),
          validity(array.null_count == 0 || array.n_buffers == 0
                       ? nullptr
                       : static_cast<const uint8_t*>(array.buffers[0]))
    {}
    bool IsThere(int64_t row) const
    {
        const auto at = static_cast<size_t>(first + row);
        return validity == nullptr || (validity[at / 8] >> (at % 8) & 1U) != 0;
    }
    template <class T>
    T At(int64_t row) const
    {
        return static_cast<const T*>(array.buffers[1])[first + row];
    }

    const ArrowSchema& schema;
    const ArrowArray& array;
    int64_t first;
    int64_t rows;
    const uint8_t* validity;
};

// The texts of a utf8 array, which results have as dictionaries and kept columns of files as such.
Ref TextAt(const ArrowArray& array, int64_t row)
{
    const auto* offsets = static_cast<const int32_t*>(array.buffers[1]) + array.offset;
    const char* bytes = static_cast<const char*>(array.buffers[2]);
    return Ref::Taken(
        PyUnicode_DecodeUTF8(bytes + offsets[row], offsets[row + 1] - offsets[row], "replace"));
}

Ref TextsOfDictionary(const ArrowArray& array)
{
    Ref texts = Ref::Taken(PyList_New(0));
    for (int64_t i = 0; i < array.length; ++i) {
        const Ref text = TextAt(array, i);
        if (PyList_Append(texts.Get(), text.Get()) != 0) throw PythonError();
    }
    return texts;
}

Ref ValueAt(const Cells& cells, const Ref& texts, int64_t row)
{
    if (!cells.IsThere(row)) return Ref::Borrowed(Py_None);
    if (texts) {
        return Ref::Borrowed(PyList_GetItem(texts.Get(), cells.At<int32_t>(row)));
    }
    switch (cells.schema.format[0]) {
        case 'g': return Ref::Taken(PyFloat_FromDouble(cells.At<double>(row)));
        case 'i': return Ref::Taken(PyLong_FromLong(cells.At<int32_t>(row)));
        case 'l': return Ref::Taken(PyLong_FromLongLong(cells.At<int64_t>(row)));
        case 'u': return TextAt(cells.array, row);
        default: return Ref::Borrowed(Py_None);
    }
}

PyObject* Values(PyObject* self, PyObject* index)
{
    return Guarded([&] {
        const SharedTable& table = Of(self);
        const size_t column = ColumnOf(*table, index);
        Ref values = Ref::Taken(PyList_New(static_cast<Py_ssize_t>(RowsOf(*table))));
        Py_ssize_t next = 0;
        for (const auto& part : table->parts) {
            const Cells cells(*table, column, *part.Get());
            const Ref texts = cells.array.dictionary == nullptr
                                  ? Ref()
                                  : TextsOfDictionary(*cells.array.dictionary);
            for (int64_t row = 0; row < cells.rows; ++row) {
                PyList_SetItem(values.Get(), next++, ValueAt(cells, texts, row).Release());
            }
        }
        return values.Release();
    });
}

PyObject* Buffers(PyObject* self, PyObject* index)
{
    return Guarded([&] {
        const SharedTable& table = Of(self);
        const size_t column = ColumnOf(*table, index);
        Ref parts = Ref::Taken(PyList_New(0));
        for (const auto& part : table->parts) {
            const Cells cells(*table, column, *part.Get());
            Ref texts = cells.array.dictionary == nullptr
                            ? Ref::Borrowed(Py_None)
                            : TextsOfDictionary(*cells.array.dictionary);
            const void* values = cells.array.n_buffers > 1 ? cells.array.buffers[1] : nullptr;
            const Ref described = Ref::Taken(Py_BuildValue(
                "(sLLKKN)", cells.schema.format, static_cast<long long>(cells.rows),
                static_cast<long long>(cells.first),
                static_cast<unsigned long long>(reinterpret_cast<uintptr_t>(values)),
                static_cast<unsigned long long>(reinterpret_cast<uintptr_t>(cells.validity)),
                texts.Release()));
            if (PyList_Append(parts.Get(), described.Get()) != 0) throw PythonError();
        }
        return parts.Release();
    });
}

PyMethodDef methods[] = {
    {"__arrow_c_stream__",
     reinterpret_cast<PyCFunction>(reinterpret_cast<void (*)()>(StreamCapsule)),
     METH_VARARGS | METH_KEYWORDS,
     "__arrow_c_stream__(requested_schema=None)\n--\n\nThe table as a stream of Arrow's C "
     "interface."},
    {"__arrow_c_schema__", SchemaCapsule, METH_NOARGS,
     "__arrow_c_schema__()\n--\n\nThe schema of Arrow's C interface."},
    {"values", Values, METH_O, "values(index)\n--\n\nThe values of a column as a list."},
    {"buffers", Buffers, METH_O,
     "buffers(index)\n--\n\nThe parts of a column: format, rows, first row, the addresses of "
     "values "
     "and of\nvalidity bits, and the texts of a dictionary. They stand as long as the table."},
    {nullptr, nullptr, 0, nullptr},
};

PyGetSetDef attributes[] = {
    {"names", Names, nullptr, "The names of the columns.", nullptr},
    {"rows", Rows, nullptr, "How many rows there are.", nullptr},
    {nullptr, nullptr, nullptr, nullptr, nullptr},
};

PyType_Slot slots[] = {
    {Py_tp_dealloc, reinterpret_cast<void*>(Dealloc<SharedTable>)},
    {Py_tp_methods, methods},
    {Py_tp_getset, attributes},
    {Py_sq_length, reinterpret_cast<void*>(Length)},
    {Py_tp_doc, const_cast<char*>("A table in memory, in Arrow's form: whatever reads Arrow's C "
                                  "streams reads it, as often as wanted.")},
    {0, nullptr},
};

PyType_Spec spec = {"velscore.Table", sizeof(Holder<SharedTable>), 0, Py_TPFLAGS_DEFAULT, slots};

}  // namespace

void AddTableType(PyObject* module) { tableType = AddType(module, spec, "Table"); }

Ref NewTable(SharedTable table) { return NewObject(tableType, std::move(table)); }

}  // namespace velscore_python
