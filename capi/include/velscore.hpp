// The C++ face of libvelscore, in this header alone, from C++20 on: owners that end what they hold,
// failures as exceptions, columns as spans. velscore.h tells what the functions do and what threads
// may do with them.
#ifndef VELSCORE_HPP
#define VELSCORE_HPP

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "velscore.h"

namespace velscore {

/// A failure: what() is the text; code, remedy and place as velscore_error has them.
class Error : public std::runtime_error {
public:
    explicit Error(const velscore_error& error)
        : std::runtime_error(TextOf(error.text)),
          code_(error.code),
          fault_(error.fault),
          remedy_(TextOf(error.remedy)),
          file_(TextOf(error.file)),
          element_(TextOf(error.element)),
          line_(error.line),
          column_(error.column),
          field_(TextOf(error.field)),
          row_(error.row)
    {}

    int Code() const { return code_; }
    /// One of velscore_fault.
    int Fault() const { return fault_; }
    const std::string& Remedy() const { return remedy_; }
    /// Empty, or 0, where it isn't known.
    const std::string& File() const { return file_; }
    const std::string& Element() const { return element_; }
    unsigned long Line() const { return line_; }
    unsigned long Column() const { return column_; }
    const std::string& Field() const { return field_; }
    unsigned long Row() const { return row_; }

private:
    static const char* TextOf(const char* text) { return text == nullptr ? "" : text; }

    int code_;
    int fault_;
    std::string remedy_;
    std::string file_;
    std::string element_;
    unsigned long line_;
    unsigned long column_;
    std::string field_;
    unsigned long row_;
};

namespace detail {

/// Calls with an error structure; throws Error where the call fails.
template <class Function>
void Call(Function function)
{
    struct Told {
        velscore_error error = VELSCORE_ERROR_INIT;
        ~Told() { velscore_error_clear(&error); }
    } told;
    if (function(&told.error) != 0) throw Error(told.error);
}

inline std::string Taken(char* text)
{
    const std::unique_ptr<char, void (*)(char*)> own(text, velscore_free);
    return own.get();
}

inline std::vector<const char*> Pointers(const std::vector<std::string>& texts)
{
    std::vector<const char*> pointers;
    for (const std::string& text : texts) pointers.push_back(text.c_str());
    return pointers;
}

inline const char* OrNull(const std::string& text) { return text.empty() ? nullptr : text.c_str(); }

template <auto end>
struct End {
    template <class T>
    void operator()(T* what) const
    {
        end(what);
    }
};

}  // namespace detail

/// As velscore_options.
struct DocumentOptions {
    bool asIs = false;
    std::vector<std::string> allow{};
};

/// As velscore_score_options; empty and 0 are the defaults.
struct ScoreOptions {
    std::vector<std::string> keep{};
    bool keepAll = false;
    std::vector<std::string> columns{};
    bool predictionOnly = false;
    std::string nan{};
    std::string policy{};
    double level = 0.0;
    bool strict = false;
    std::vector<std::string> missing{};
    /// The model's field, then the table's column.
    std::vector<std::pair<std::string, std::string>> map{};
    /// Of explanations alone. `baseline` is taken over.
    std::optional<size_t> top{};
    ArrowArrayStream* baseline = nullptr;
    int64_t baselineRow = 0;
};

namespace detail {

/// The options as C has them; they view the C++ ones.
class ReadOptions {
public:
    explicit ReadOptions(const DocumentOptions& from, const char* name = nullptr)
        : allow_(Pointers(from.allow))
    {
        own_.as_is = from.asIs;
        own_.name = name;
        own_.allow = allow_.data();
        own_.allow_count = allow_.size();
    }
    ReadOptions(const ReadOptions&) = delete;
    ReadOptions& operator=(const ReadOptions&) = delete;
    const velscore_options* Get() const { return &own_; }

private:
    std::vector<const char*> allow_;
    velscore_options own_ = VELSCORE_OPTIONS_INIT;
};

/// The same of scores.
class Options {
public:
    explicit Options(const ScoreOptions& from)
        : keep_(Pointers(from.keep)),
          columns_(Pointers(from.columns)),
          missing_(Pointers(from.missing)),
          top_(from.top)
    {
        for (const auto& [field, column] : from.map) {
            fields_.push_back(field.c_str());
            mapped_.push_back(column.c_str());
        }
        own_.keep = keep_.data();
        own_.keep_count = keep_.size();
        own_.keep_all = from.keepAll;
        own_.columns = columns_.data();
        own_.columns_count = columns_.size();
        own_.prediction_only = from.predictionOnly;
        own_.nan = OrNull(from.nan);
        own_.policy = OrNull(from.policy);
        own_.level = from.level;
        own_.strict = from.strict;
        own_.missing = missing_.data();
        own_.missing_count = missing_.size();
        own_.map_fields = fields_.data();
        own_.map_columns = mapped_.data();
        own_.map_count = fields_.size();
        own_.top = top_ ? &*top_ : nullptr;
        own_.baseline = from.baseline;
        own_.baseline_row = from.baselineRow;
    }
    Options(const Options&) = delete;
    Options& operator=(const Options&) = delete;
    const velscore_score_options* Get() const { return &own_; }

private:
    std::vector<const char*> keep_;
    std::vector<const char*> columns_;
    std::vector<const char*> missing_;
    std::vector<const char*> fields_;
    std::vector<const char*> mapped_;
    std::optional<size_t> top_;
    velscore_score_options own_ = VELSCORE_SCORE_OPTIONS_INIT;
};

}  // namespace detail

/// A column of plain values, borrowed: numbers, texts, or codes of categories.
class Column {
public:
    /// `present` has a bit a row, least first; null where every row has a value.
    Column(std::span<const double> numbers, const uint8_t* present = nullptr)
        : rows_(numbers.size())
    {
        own_.numbers = numbers.data();
        own_.present = present;
    }
    explicit Column(std::span<const char* const> texts) : rows_(texts.size())
    {
        own_.texts = texts.data();
    }
    Column(std::span<const int32_t> codes, std::span<const char* const> categories)
        : rows_(codes.size())
    {
        own_.codes = codes.data();
        own_.categories = categories.data();
        own_.categories_count = categories.size();
    }

    size_t Rows() const { return rows_; }
    const velscore_column& Get() const { return own_; }

private:
    size_t rows_;
    velscore_column own_{};
};

/// Results by rows. Where a row has no value its number is NaN and its code -1.
struct Scores {
    struct Result {
        std::string name;
        std::vector<double> numbers;  ///< of a column of numbers
        std::vector<int32_t> codes;   ///< of one of categories; Binding::Category tells them
    };
    std::vector<Result> results;
    std::vector<int32_t> status;           ///< 0, or why the row has no score
    std::vector<const char*> statusField;  ///< null, or the field at fault; the binding's own

    const Result& Named(const std::string& name) const
    {
        for (const Result& result : results) {
            if (result.name == name) return result;
        }
        throw std::out_of_range("no column of results is called " + name);
    }
};

/// Columns by name, bound to a model that outlives it. One thread at a time.
class Binding {
public:
    explicit Binding(velscore_binding* own) : own_(own) {}

    /// The next row is the first of another table: it settles for a model what a first row does.
    void BeginTable() { velscore_begin_table(own_.get()); }

    /// Scores rows. Throws Error, and std::invalid_argument for columns of several lengths.
    Scores Score(std::span<const Column> columns)
    {
        std::vector<velscore_column> plain;
        const size_t rows = columns.empty() ? 0 : columns.front().Rows();
        for (const Column& column : columns) {
            if (column.Rows() != rows) throw std::invalid_argument("columns of several lengths");
            plain.push_back(column.Get());
        }
        Scores scores;
        std::vector<velscore_result_column> places;
        for (size_t i = 0; i < velscore_result_count(own_.get()); ++i) {
            scores.results.push_back({velscore_result_name(own_.get(), i),
                                      std::vector<double>(rows), std::vector<int32_t>(rows)});
        }
        for (Scores::Result& result : scores.results) {
            places.push_back({result.numbers.data(), result.codes.data(), nullptr});
        }
        scores.status.resize(rows);
        scores.statusField.resize(rows);
        velscore_results results = VELSCORE_RESULTS_INIT;
        results.columns = places.data();
        results.columns_count = places.size();
        results.status = scores.status.data();
        results.status_field = scores.statusField.data();
        detail::Call([&](velscore_error* error) {
            return velscore_score_columns(own_.get(), plain.data(), plain.size(), rows, &results,
                                          error);
        });
        return scores;
    }

    /// The category of a code; null for what is none. Stands until the next Score().
    const char* Category(int32_t code) const { return velscore_category(own_.get(), code); }
    velscore_binding* Get() { return own_.get(); }

private:
    std::unique_ptr<velscore_binding, detail::End<velscore_unbind>> own_;
};

/// A model that is open. Any number of threads at once.
class Model {
public:
    /// The document of a file.
    static Model Open(const std::string& path, const DocumentOptions& options = {})
    {
        const detail::ReadOptions plain(options);
        return Made([&](velscore_model** out, velscore_error* error) {
            return velscore_open(path.c_str(), plain.Get(), out, error);
        });
    }
    /// The document's bytes; `name` is how messages call them.
    static Model FromText(std::string_view bytes, const std::string& name = "document",
                          const DocumentOptions& options = {})
    {
        const detail::ReadOptions plain(options, name.c_str());
        return Made([&](velscore_model** out, velscore_error* error) {
            return velscore_open_text(bytes.data(), bytes.size(), plain.Get(), out, error);
        });
    }

    /// JSON, as velscore_describe and velscore_verify give it.
    std::string Describe() const { return Text(velscore_describe); }
    std::string Verify() const { return Text(velscore_verify); }

    /// A stream of scores of a stream of tables, which is taken over.
    ArrowArrayStream Score(ArrowArrayStream& in, const ScoreOptions& options = {}) const
    {
        return Stream(velscore_score, in, options);
    }
    ArrowArrayStream Curve(ArrowArrayStream& in, const ScoreOptions& options = {}) const
    {
        return Stream(velscore_curve, in, options);
    }
    /// How the linear predictors of the rows add up, a line for each term of each row.
    ArrowArrayStream Explain(ArrowArrayStream& in, const ScoreOptions& options = {}) const
    {
        return Stream(velscore_explain, in, options);
    }
    /// The same of the table of a file. `threads` 0: as many as the process may use.
    ArrowArrayStream ScanCsv(const std::string& path, const ScoreOptions& options = {},
                             size_t threads = 0) const
    {
        const detail::Options score(options);
        velscore_csv_options csv = VELSCORE_CSV_OPTIONS_INIT;
        csv.score = score.Get();
        csv.threads = threads;
        ArrowArrayStream out{};
        detail::Call([&](velscore_error* error) {
            return velscore_scan_csv(own_.get(), path.c_str(), &csv, &out, error);
        });
        return out;
    }

    /// Binds plain columns of these names.
    Binding Bind(const std::vector<std::string>& names, const ScoreOptions& options = {}) const
    {
        const detail::Options plain(options);
        const std::vector<const char*> pointers = detail::Pointers(names);
        velscore_binding* out = nullptr;
        detail::Call([&](velscore_error* error) {
            return velscore_bind_names(own_.get(), plain.Get(), pointers.data(), pointers.size(),
                                       &out, error);
        });
        return Binding(out);
    }

    const velscore_model* Get() const { return own_.get(); }

private:
    explicit Model(velscore_model* own) : own_(own) {}

    template <class Function>
    static Model Made(Function function)
    {
        velscore_model* out = nullptr;
        detail::Call([&](velscore_error* error) { return function(&out, error); });
        return Model(out);
    }
    template <class Function>
    std::string Text(Function function) const
    {
        char* text = nullptr;
        detail::Call([&](velscore_error* error) { return function(own_.get(), &text, error); });
        return detail::Taken(text);
    }
    template <class Function>
    ArrowArrayStream Stream(Function function, ArrowArrayStream& in,
                            const ScoreOptions& options) const
    {
        const detail::Options plain(options);
        ArrowArrayStream out{};
        detail::Call([&](velscore_error* error) {
            return function(own_.get(), plain.Get(), &in, &out, error);
        });
        return out;
    }

    std::unique_ptr<velscore_model, detail::End<velscore_close>> own_;
};

}  // namespace velscore

#endif
