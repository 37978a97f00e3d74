#include "python/extension/madetable.h"

#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

namespace velscore_python {

namespace {

// Objects of Python that a table needs, let go on whatever thread the table ends.
class HeldObjects {
public:
    HeldObjects() = default;
    HeldObjects(const HeldObjects&) = delete;
    HeldObjects& operator=(const HeldObjects&) = delete;
    ~HeldObjects()
    {
        if (objects_.empty() || Py_IsInitialized() == 0) return;
        const GilHeld held;
        for (PyObject* object : objects_) Py_DECREF(object);
    }
    void Hold(PyObject* object)
    {
        objects_.push_back(object);
        Py_INCREF(object);
    }

private:
    std::vector<PyObject*> objects_;
};

// A column's own memory; what is borrowed stays empty.
struct Column {
    std::string name{};
    std::string format{};
    std::vector<uint8_t> validity{};
    std::vector<double> doubles{};
    std::vector<int64_t> wholes{};  // numbers, or the offsets of texts
    std::vector<uint8_t> bytes{};
    const void* buffers[3] = {nullptr, nullptr, nullptr};
    std::unique_ptr<Column> dictionary{};
    ArrowSchema dictionarySchema{};
    ArrowArray dictionaryArray{};
    Owned<ArrowSchema> givenSchema{};
    Owned<ArrowArray> givenArray{};
};

// A table and whatever its structures point to. The structures here own nothing.
struct Made {
    HeldObjects held{};
    std::vector<std::unique_ptr<Column>> columns{};
    std::vector<ArrowSchema> schemas{};
    std::vector<ArrowArray> arrays{};
    std::vector<ArrowSchema*> schemaPointers{};
    std::vector<ArrowArray*> arrayPointers{};
    const void* noValidity = nullptr;
};

[[noreturn]] void RefuseColumn(PyObject* type, const std::string& name, const char* why)
{
    PyErr_Format(type, "column \"%s\" %s", name.c_str(), why);
    throw PythonError();
}

// ---- Values of Python ----------------------------------------------------------------------

enum class Kind : uint8_t { Missing, Truth, Whole, Number, Text };

struct Value {
    Kind kind = Kind::Missing;
    double number = 0.0;
    int64_t whole = 0;  // of texts where they begin
    size_t size = 0;    // of texts
};

constexpr double kExact = 9007199254740992.0;  // whole doubles up to here are exact
constexpr double kPlainBelow = 1e15;           // whole numbers have neither point nor exponent

std::string NumberText(double number)
{
    char text[32];
    if (std::fabs(number) < kPlainBelow && number == std::trunc(number)) {
        return std::to_string(static_cast<int64_t>(number));
    }
    return {text, std::to_chars(text, text + sizeof text, number).ptr};
}

class Values {
public:
    Values(const std::string& column, PyObject* list, PyObject* convert)
        : column_(column), convert_(convert)
    {
        const Py_ssize_t count = PyList_Size(list);
        values_.resize(static_cast<size_t>(count));
        for (Py_ssize_t i = 0; i < count; ++i) {
            // Converting runs code of others, which might change the list.
            const Ref item = Ref::Borrowed(PyList_GetItem(list, i));
            if (!item) throw PythonError();
            row_ = i;
            Read(item.Get(), values_[static_cast<size_t>(i)], false);
        }
    }

    void MoveTo(Column& column)
    {
        if (has_[static_cast<size_t>(Kind::Text)]) return MakeTexts(column);
        const bool hasWholes = has_[static_cast<size_t>(Kind::Whole)];
        const bool hasNumbers = has_[static_cast<size_t>(Kind::Number)];
        if (hasBig_ && hasNumbers) return MakeTexts(column);
        if (hasBig_) return MakeWholes(column);
        if (hasWholes || hasNumbers) return MakeNumbers(column);
        if (has_[static_cast<size_t>(Kind::Truth)]) return MakeTruths(column);
        column.format = "n";
    }

private:
    void Read(PyObject* item, Value& value, bool isConverted)
    {
        if (item == Py_None) return;
        if (PyBool_Check(item)) {
            value = {Kind::Truth, item == Py_True ? 1.0 : 0.0, item == Py_True ? 1 : 0};
        } else if (PyFloat_Check(item)) {
            value = {Kind::Number, PyFloat_AsDouble(item)};
        } else if (PyUnicode_Check(item)) {
            ReadText(item, value);
        } else if (PyLong_Check(item)) {
            ReadWhole(item, value);
        } else if (!isConverted) {
            const Ref name = NewText(column_);
            const Ref row = Ref::Taken(PyLong_FromSsize_t(row_));
            const Ref plain = Ref::Taken(
                PyObject_CallFunctionObjArgs(convert_, item, name.Get(), row.Get(), nullptr));
            return Read(plain.Get(), value, true);
        } else {
            RefuseColumn(PyExc_TypeError, column_,
                         "holds values that nothing plain can be made of");
        }
        has_[static_cast<size_t>(value.kind)] = true;
    }

    void ReadWhole(PyObject* item, Value& value)
    {
        int overflow = 0;
        const long long whole = PyLong_AsLongLongAndOverflow(item, &overflow);
        if (whole == -1 && PyErr_Occurred() != nullptr) throw PythonError();
        if (overflow != 0) {
            const Ref text = Ref::Taken(PyObject_Str(item));
            return ReadText(text.Get(), value);
        }
        value = {Kind::Whole, static_cast<double>(whole), whole};
        hasBig_ |= std::fabs(value.number) > kExact;
    }

    void ReadText(PyObject* item, Value& value)
    {
        const Ref bytes = Ref::Taken(PyUnicode_AsUTF8String(item));
        char* text = nullptr;
        Py_ssize_t size = 0;
        if (PyBytes_AsStringAndSize(bytes.Get(), &text, &size) != 0) throw PythonError();
        value = {Kind::Text, 0.0, static_cast<int64_t>(texts_.size()), static_cast<size_t>(size)};
        texts_.insert(texts_.end(), text, text + size);
    }

    template <class Write>
    void Fill(Column& column, Write write)
    {
        column.validity.assign(values_.size() / 8 + 1, 0);
        for (size_t row = 0; row < values_.size(); ++row) {
            const Value& value = values_[row];
            if (value.kind == Kind::Missing) continue;
            if (!write(row, value)) continue;
            column.validity[row / 8] |= static_cast<uint8_t>(1U << (row % 8));
        }
        column.buffers[0] = column.validity.data();
    }

    void MakeNumbers(Column& column)
    {
        column.format = "g";
        column.doubles.resize(values_.size() + 1);
        Fill(column, [&](size_t row, const Value& value) {
            column.doubles[row] = value.number;
            return true;
        });
        column.buffers[1] = column.doubles.data();
    }

    void MakeWholes(Column& column)
    {
        column.format = "l";
        column.wholes.resize(values_.size() + 1);
        Fill(column, [&](size_t row, const Value& value) {
            column.wholes[row] = value.whole;
            return true;
        });
        column.buffers[1] = column.wholes.data();
    }

    void MakeTruths(Column& column)
    {
        column.format = "b";
        column.bytes.assign(values_.size() / 8 + 1, 0);
        Fill(column, [&](size_t row, const Value& value) {
            if (value.whole != 0) column.bytes[row / 8] |= static_cast<uint8_t>(1U << (row % 8));
            return true;
        });
        column.buffers[1] = column.bytes.data();
    }

    // Beside texts NaN is what data frames write for nothing at all.
    void MakeTexts(Column& column)
    {
        column.format = "U";
        column.wholes.assign(values_.size() + 1, 0);
        std::vector<uint8_t>& bytes = column.bytes;
        bytes.reserve(texts_.size() + 1);
        const auto append = [&](const std::string& text) {
            bytes.insert(bytes.end(), text.begin(), text.end());
        };
        std::vector<size_t> ends(values_.size(), 0);
        Fill(column, [&](size_t row, const Value& value) {
            switch (value.kind) {
                case Kind::Text: {
                    const auto first = texts_.begin() + value.whole;
                    bytes.insert(bytes.end(), first,
                                 first + static_cast<std::ptrdiff_t>(value.size));
                    break;
                }
                case Kind::Truth: append(value.whole != 0 ? "true" : "false"); break;
                case Kind::Whole: append(std::to_string(value.whole)); break;
                case Kind::Number:
                    if (std::isnan(value.number)) return false;
                    append(NumberText(value.number));
                    break;
                case Kind::Missing: break;
            }
            ends[row] = bytes.size();
            return true;
        });
        for (size_t row = 0; row < values_.size(); ++row) {
            column.wholes[row + 1] =
                ends[row] == 0 ? column.wholes[row] : static_cast<int64_t>(ends[row]);
        }
        bytes.push_back(0);  // so that there is an address
        column.buffers[1] = column.wholes.data();
        column.buffers[2] = bytes.data();
    }

    const std::string& column_;
    PyObject* convert_;
    Py_ssize_t row_ = 0;
    std::vector<Value> values_;
    std::vector<char> texts_;
    bool has_[5] = {};
    bool hasBig_ = false;
};

// ---- Columns -------------------------------------------------------------------------------

int64_t BufferCount(const Column& column)
{
    if (column.format == "n") return 0;
    return column.format == "U" ? 3 : 2;
}

constexpr int64_t kNullable = 2;  // ARROW_FLAG_NULLABLE

// The structures of a column, which own nothing.
ArrowSchema SchemaOf(Column& column)
{
    ArrowSchema schema{};
    schema.format = column.format.c_str();
    schema.name = column.name.c_str();
    schema.flags = kNullable;
    if (column.dictionary != nullptr) {
        column.dictionarySchema = SchemaOf(*column.dictionary);
        schema.dictionary = &column.dictionarySchema;
    }
    return schema;
}

ArrowArray ArrayOf(Column& column, int64_t rows, int64_t dictionaryRows)
{
    ArrowArray array{};
    array.length = rows;
    array.null_count = column.format == "n" ? rows : column.buffers[0] == nullptr ? 0 : -1;
    array.n_buffers = BufferCount(column);
    array.buffers = column.buffers;
    if (column.dictionary != nullptr) {
        column.dictionaryArray = ArrayOf(*column.dictionary, dictionaryRows, 0);
        array.dictionary = &column.dictionaryArray;
    }
    return array;
}

const void* AddressOf(PyObject* object)
{
    void* address = PyLong_AsVoidPtr(object);
    if (address == nullptr && PyErr_Occurred() != nullptr) throw PythonError();
    return address;
}

class TableMaker {
public:
    TableMaker(Py_ssize_t rows, PyObject* convert)
        : made_(std::make_shared<Made>()), rows_(rows), convert_(convert)
    {}

    void Add(std::string name, PyObject* given)
    {
        auto column = std::make_unique<Column>();
        column->name = std::move(name);
        int64_t dictionaryRows = 0;
        if (given == Py_None) {
            column->format = "n";
        } else if (PyList_Check(given)) {
            if (PyList_Size(given) != rows_) {
                PyErr_Format(PyExc_ValueError, "column \"%s\" has %zd values, expected are %zd",
                             column->name.c_str(), PyList_Size(given), rows_);
                throw PythonError();
            }
            Values(column->name, given, convert_).MoveTo(*column);
        } else if (PyTuple_Check(given) && PyTuple_Size(given) == 2) {
            AddGiven(*column, given);
        } else if (PyTuple_Check(given)) {
            dictionaryRows = AddBuffer(*column, given);
        } else {
            RefuseColumn(PyExc_TypeError, column->name, "is no column");
        }
        if (column->givenArray.IsReleased()) {
            made_->schemas.push_back(SchemaOf(*column));
            made_->arrays.push_back(ArrayOf(*column, rows_, dictionaryRows));
        } else {
            ArrowSchema schema = *column->givenSchema.Get();
            schema.name = column->name.c_str();
            made_->schemas.push_back(schema);
            made_->arrays.push_back(*column->givenArray.Get());
        }
        made_->columns.push_back(std::move(column));
    }

    std::shared_ptr<const ArrowTable> Finish()
    {
        for (auto& schema : made_->schemas) made_->schemaPointers.push_back(&schema);
        for (auto& array : made_->arrays) made_->arrayPointers.push_back(&array);
        ArrowSchema schema{};
        schema.format = "+s";
        schema.name = "";
        schema.n_children = static_cast<int64_t>(made_->schemas.size());
        schema.children = made_->schemaPointers.data();
        ArrowArray array{};
        array.length = rows_;
        array.n_buffers = 1;
        array.buffers = &made_->noValidity;
        array.n_children = schema.n_children;
        array.children = made_->arrayPointers.data();
        auto table = std::make_shared<ArrowTable>();
        ArrowSchema schemaView = ViewOf(schema, made_);
        table->schema = Owned<ArrowSchema>(schemaView);
        ArrowArray arrayView = ViewOf(array, made_);
        table->parts.emplace_back(arrayView);
        return table;
    }

private:
    void AddGiven(Column& column, PyObject* given)
    {
        column.givenSchema = TakenFrom<ArrowSchema>(PyTuple_GetItem(given, 0), kSchemaCapsule);
        column.givenArray = TakenFrom<ArrowArray>(PyTuple_GetItem(given, 1), kArrayCapsule);
        if (column.givenArray->length != rows_) {
            RefuseColumn(PyExc_ValueError, column.name, "has another number of values");
        }
    }

    int64_t AddBuffer(Column& column, PyObject* given)
    {
        const Py_ssize_t parts = PyTuple_Size(given);
        if (parts != 4 && parts != 5) {
            RefuseColumn(PyExc_TypeError, column.name, "is no column");
        }
        column.format = TextOf(PyTuple_GetItem(given, 0), "the format of a column");
        made_->held.Hold(PyTuple_GetItem(given, 2));
        column.buffers[0] = AddressOf(PyTuple_GetItem(given, 3));
        column.buffers[1] = AddressOf(PyTuple_GetItem(given, 1));
        if (parts == 4) return 0;
        PyObject* values = PyTuple_GetItem(given, 4);
        if (!PyList_Check(values)) RefuseColumn(PyExc_TypeError, column.name, "is no column");
        column.dictionary = std::make_unique<Column>();
        Values(column.name, values, convert_).MoveTo(*column.dictionary);
        return PyList_Size(values);
    }

    std::shared_ptr<Made> made_;
    Py_ssize_t rows_;
    PyObject* convert_;
};

}  // namespace

std::shared_ptr<const ArrowTable> MakeTable(PyObject* names, PyObject* columns, Py_ssize_t rows,
                                            PyObject* convert)
{
    const Py_ssize_t count = PyList_Size(names);
    if (count < 0 || !PyList_Check(columns) || PyList_Size(columns) != count || rows < 0) {
        PyErr_SetString(PyExc_TypeError, "names and columns are lists of one length");
        throw PythonError();
    }
    TableMaker maker(rows, convert);
    for (Py_ssize_t i = 0; i < count; ++i) {
        maker.Add(TextOf(PyList_GetItem(names, i), "the name of a column"),
                  PyList_GetItem(columns, i));
    }
    return maker.Finish();
}

}  // namespace velscore_python
