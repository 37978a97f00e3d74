#include <cmath>
#include <string>
#include <vector>

#include "python/extension/failures.h"
#include "python/extension/objects.h"
#include "python/extension/options.h"

namespace velscore_python {

PyTypeObject* scorerType = nullptr;

namespace {

// A row's cells and results, in place: nothing is allocated for a row but what Python gets.
class BoundRow {
public:
    BoundRow(SharedModel model, velscore_binding* binding, std::vector<std::string> names,
             bool tellsStatus)
        : model_(std::move(model)),
          binding_(binding),
          names_(std::move(names)),
          tellsStatus_(tellsStatus),
          numbers_(names_.size()),
          texts_(names_.size()),
          pointers_(names_.size()),
          columns_(names_.size()),
          resultNumbers_(velscore_result_count(binding)),
          resultCodes_(resultNumbers_.size()),
          resultColumns_(resultNumbers_.size())
    {
        for (size_t i = 0; i < resultColumns_.size(); ++i) {
            resultColumns_[i] = {&resultNumbers_[i], &resultCodes_[i], nullptr};
        }
        for (const std::string& name : names_) keys_.push_back(NewText(name));
        results_.columns = resultColumns_.data();
        results_.columns_count = resultColumns_.size();
        results_.status = &status_;
        results_.status_field = &field_;
    }
    BoundRow(const BoundRow&) = delete;
    BoundRow& operator=(const BoundRow&) = delete;
    ~BoundRow() { velscore_unbind(binding_); }

    size_t Size() const { return names_.size(); }
    /// The name of a column, as a str.
    PyObject* Key(size_t i) const { return keys_[i].Get(); }

    // Values are None, bool, int, float or str.
    void Set(size_t i, PyObject* value)
    {
        columns_[i] = {};
        if (PyFloat_Check(value) || PyBool_Check(value)) {
            SetNumber(i, PyFloat_AsDouble(value));
        } else if (PyUnicode_Check(value)) {
            SetText(i, value);
        } else if (PyLong_Check(value)) {
            SetWhole(i, value);
        } else if (value == Py_None) {
            pointers_[i] = nullptr;
            columns_[i].texts = &pointers_[i];
        } else if (PyIndex_Check(value)) {
            SetWhole(i, Ref::Taken(PyNumber_Index(value)).Get());
        } else {
            PyErr_Format(PyExc_TypeError,
                         "the value of \"%s\" is %R; expected is None, bool, int, float or str",
                         names_[i].c_str(), value);
            throw PythonError();
        }
    }

    // Of a value that a column of a table is surely read alike from; false for any other.
    bool SetAlike(size_t i, PyObject* value)
    {
        const bool isAlike = value == Py_None || PyFloat_CheckExact(value) ||
                             PyLong_CheckExact(value) || PyUnicode_CheckExact(value);
        if (!isAlike) return false;
        try {
            Set(i, value);
        } catch (const PythonError&) {  // a text that isn't one of C
            PyErr_Clear();
            return false;
        }
        return true;
    }

    // The first result of a table of this row alone; nothing where scoring tells a failure.
    Ref Predict()
    {
        velscore_begin_table(binding_);
        return Run(nullptr) ? ResultOf(0) : Ref();
    }

    Ref Score()
    {
        Told told;
        if (!Run(told.Get())) Raise(*told.Get());
        Ref scores = Ref::Taken(PyDict_New());
        for (size_t i = 0; i < resultColumns_.size(); ++i) {
            Put(scores, velscore_result_name(binding_, i), ResultOf(i));
        }
        if (tellsStatus_) {
            Put(scores, "status", Ref::Taken(PyLong_FromLong(status_)));
            Put(scores, "status_field", NewText(field_));
        }
        return scores;
    }

    bool isTaken = false;  ///< by a call that has begun

private:
    bool Run(velscore_error* error)
    {
        return velscore_score_columns(binding_, columns_.data(), columns_.size(), 1, &results_,
                                      error) == 0;
    }

    void SetNumber(size_t i, double number)
    {
        if (number == -1.0 && PyErr_Occurred() != nullptr) throw PythonError();
        numbers_[i] = number;
        columns_[i].numbers = &numbers_[i];
    }

    // One that a double doesn't hold is read as its text is.
    void SetWhole(size_t i, PyObject* value)
    {
        constexpr double kExact = 9007199254740992.0;
        int overflow = 0;
        const long long whole = PyLong_AsLongLongAndOverflow(value, &overflow);
        if (overflow == 0 && std::fabs(static_cast<double>(whole)) <= kExact) {
            return SetNumber(i, static_cast<double>(whole));
        }
        const Ref text = Ref::Taken(PyObject_Str(value));
        SetText(i, text.Get());
    }

    void SetText(size_t i, PyObject* value)
    {
        texts_[i] = TextOf(value, names_[i].c_str());
        pointers_[i] = texts_[i].c_str();
        columns_[i].texts = &pointers_[i];
    }

    Ref ResultOf(size_t i) const
    {
        if (!std::isnan(resultNumbers_[i]))
            return Ref::Taken(PyFloat_FromDouble(resultNumbers_[i]));
        return NewText(velscore_category(binding_, resultCodes_[i]));
    }

    static void Put(const Ref& scores, const char* name, const Ref& value)
    {
        const Ref key = NewText(name);
        if (PyDict_SetItem(scores.Get(), key.Get(), value.Get()) != 0) throw PythonError();
    }

    SharedModel model_;
    velscore_binding* binding_;
    std::vector<std::string> names_;
    std::vector<Ref> keys_;
    bool tellsStatus_;
    std::vector<double> numbers_;
    std::vector<std::string> texts_;
    std::vector<const char*> pointers_;
    std::vector<velscore_column> columns_;
    std::vector<double> resultNumbers_;
    std::vector<int32_t> resultCodes_;
    std::vector<velscore_result_column> resultColumns_;
    velscore_results results_ = VELSCORE_RESULTS_INIT;
    int32_t status_ = 0;
    const char* field_ = nullptr;
};
using OwnedRow = std::unique_ptr<BoundRow>;

PyObject* New(PyTypeObject* type, PyObject* arguments, PyObject*)
{
    return Guarded([&] {
        PyObject* model = nullptr;
        PyObject* names = nullptr;
        PyObject* asked = nullptr;
        if (PyArg_ParseTuple(arguments, "OOO:Scorer", &model, &names, &asked) == 0) {
            throw PythonError();
        }
        const ScoreOptions options(asked);
        Texts columns;
        columns.Take(names, "the name of a column");
        const SharedModel& of = ModelOf(model);
        velscore_binding* binding = nullptr;
        Call([&](velscore_error* error) {
            return velscore_bind_names(of.get(), options.Get(), columns.Pointers(), columns.Count(),
                                       &binding, error);
        });
        const auto* pointers = columns.Pointers();
        return NewObject(type, std::make_unique<BoundRow>(
                                   of, binding,
                                   std::vector<std::string>(pointers, pointers + columns.Count()),
                                   options.Get()->columns_count == 0))
            .Release();
    });
}

// The value under a key, borrowed; null where there is none.
PyObject* Under(PyObject* dict, PyObject* key)
{
    PyObject* value = PyDict_GetItemWithError(dict, key);
    if (value == nullptr && PyErr_Occurred() != nullptr) throw PythonError();
    return value;
}

void SetByName(BoundRow& row, PyObject* values)
{
    for (size_t i = 0; i < row.Size(); ++i) {
        PyObject* value = Under(values, row.Key(i));
        row.Set(i, value == nullptr ? Py_None : value);
    }
}

// The one item of a list; null where there isn't just one.
PyObject* OnlyItem(PyObject* list)
{
    const bool isOne = list != nullptr && PyList_CheckExact(list) && PyList_Size(list) == 1;
    return isOne ? PyList_GetItem(list, 0) : nullptr;
}

// Sets a row out of a list of one dict, or a dict of lists of one value. False where a table is
// something else, or might be read otherwise as a table than as a row.
bool SetByTable(BoundRow& row, PyObject* table)
{
    const bool isRows = PyList_CheckExact(table);
    PyObject* values = isRows ? OnlyItem(table) : table;
    if (values == nullptr || !PyDict_CheckExact(values)) return false;
    for (size_t i = 0; i < row.Size(); ++i) {
        PyObject* value = Under(values, row.Key(i));
        if (!isRows) value = OnlyItem(value);
        if (value == nullptr || !row.SetAlike(i, value)) return false;
    }
    return true;
}

// Whatever code of others runs during a call finds the row taken.
class Taking {
public:
    explicit Taking(BoundRow& row) : row_(row) { row_.isTaken = true; }
    Taking(const Taking&) = delete;
    Taking& operator=(const Taking&) = delete;
    ~Taking() { row_.isTaken = false; }

private:
    BoundRow& row_;
};

PyObject* Predict(PyObject* self, PyObject* table)
{
    return Guarded([&]() -> PyObject* {
        BoundRow& row = *ValueOf<OwnedRow>(self);
        Ref prediction;
        if (!row.isTaken) {
            const Taking taking(row);
            if (SetByTable(row, table)) prediction = row.Predict();
        }
        if (!prediction) return Ref::Borrowed(Py_None).Release();
        Ref predictions = Ref::Taken(PyList_New(1));
        PyList_SetItem(predictions.Get(), 0, prediction.Release());
        return predictions.Release();
    });
}

// The lock of Python is kept: one row takes less than to give it away.
PyObject* CallScorer(PyObject* self, PyObject* arguments, PyObject* keywords)
{
    return Guarded([&] {
        BoundRow& row = *ValueOf<OwnedRow>(self);
        const Py_ssize_t count = PyTuple_Size(arguments);
        if (keywords != nullptr && PyDict_Size(keywords) > 0) {
            PyErr_SetString(PyExc_TypeError, "a row is given as its values or as a dict of them");
            throw PythonError();
        }
        if (count == 1 && PyDict_Check(PyTuple_GetItem(arguments, 0))) {
            SetByName(row, PyTuple_GetItem(arguments, 0));
        } else if (static_cast<size_t>(count) == row.Size()) {
            for (Py_ssize_t i = 0; i < count; ++i) {
                row.Set(static_cast<size_t>(i), PyTuple_GetItem(arguments, i));
            }
        } else {
            PyErr_Format(PyExc_TypeError, "a row of %zd values was given, expected are %zd", count,
                         static_cast<Py_ssize_t>(row.Size()));
            throw PythonError();
        }
        return row.Score().Release();
    });
}

PyMethodDef methods[] = {
    {"predict", Predict, METH_O,
     "predict(table)\n--\n\nThe first result of a list of one dict, or of a dict of lists of one "
     "value, as a list: what the\ntable by itself gets. None where it takes a table to tell."},
    {nullptr, nullptr, 0, nullptr},
};

PyType_Slot slots[] = {
    {Py_tp_methods, methods},
    {Py_tp_new, reinterpret_cast<void*>(New)},
    {Py_tp_dealloc, reinterpret_cast<void*>(Dealloc<OwnedRow>)},
    {Py_tp_call, reinterpret_cast<void*>(CallScorer)},
    {Py_tp_doc,
     const_cast<char*>(
         "A model whose columns were found, for a row at a time: called with the values of a row "
         "in "
         "the\norder of the columns, or a dict of them, it answers a dict of results. What has no "
         "value is\nNone. A truth counts as 1 or 0. Made by Model.bind. One thread at a time; what "
         "the first row\nsettles for a model holds for those after it.")},
    {0, nullptr},
};

PyType_Spec spec = {"velscore.Scorer", sizeof(Holder<OwnedRow>), 0, Py_TPFLAGS_DEFAULT, slots};

}  // namespace

void AddScorerType(PyObject* module) { scorerType = AddType(module, spec, "Scorer"); }

}  // namespace velscore_python
