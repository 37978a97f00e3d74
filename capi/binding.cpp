#include <algorithm>
#include <cstring>
#include <limits>
#include <memory>

#include <fmt/format.h>

#include "capi/calls.h"
#include "capi/options.h"
#include "engine/tables/arrowschema.h"
#include "engine/tables/arrowvalues.h"
#include "host/messages/messages.h"
#include "host/values/numbertext.h"

using namespace MCVelscore_850;
using namespace MCVelscore_850::capi;

namespace {

constexpr size_t kResultsSize = VELSCORE_SIZE_TO(velscore_results, status_field);
constexpr size_t kBlock = TableScorer::kRows;

// Plain arrays by the names of their columns.
class NamedScorer {
public:
    NamedScorer(const LoadedModel& model, std::vector<std::string> names,
                const ArrowOptions& options)
        : names_(std::move(names)),
          nanIsMissing_(options.nanIsMissing),
          strict_(options.strict),
          scorer_(model, names_, kArrowTableName, options.table),
          block_(scorer_.Schema()),
          columns_(names_.size()),
          texts_(names_.size()),
          categories_(names_.size()),
          isRead_(names_.size(), false)
    {
        for (const CaseField& field : scorer_.Preparer().Fields()) isRead_[field.Column()] = true;
        const OutputShaper shaper(scorer_.Schema(), names_, kArrowTableName, options.output);
        for (const size_t position : shaper.Results()) {
            if (position < scorer_.Schema().ValueCount()) positions_.push_back(position);
        }
    }

    void BeginTable() { scorer_.BeginTable(); }

    size_t ColumnCount() const { return names_.size(); }
    size_t ResultCount() const { return positions_.size(); }
    const char* ResultName(size_t index) const
    {
        return index < positions_.size()
                   ? scorer_.Schema().Columns()[positions_[index]].name.c_str()
                   : nullptr;
    }
    const char* Category(int32_t code) const
    {
        const auto index = static_cast<size_t>(code);
        return code >= 0 && index < categoryTexts_.size() ? categoryTexts_[index].c_str() : nullptr;
    }

    void Score(std::span<const velscore_column> columns, size_t rows,
               const velscore_results& results)
    {
        for (size_t i = 0; i < columns.size(); ++i) Prepare(i, columns[i], rows);
        for (size_t first = 0; first < rows; first += kBlock) {
            const size_t count = std::min(kBlock, rows - first);
            for (size_t i = 0; i < columns.size(); ++i) {
                if (isRead_[i]) Point(i, columns[i], first, count);
            }
            scorer_.Score({count, columns_}, block_);
            Write(first, results);
        }
    }

private:
    void Prepare(size_t i, const velscore_column& column, size_t rows)
    {
        if (!isRead_[i] || rows == 0) return;
        const int kinds =
            (column.numbers != nullptr) + (column.texts != nullptr) + (column.codes != nullptr);
        if (kinds != 1 || (column.categories == nullptr && column.categories_count > 0)) {
            throw Failure(FailureKind::Usage, kColumnPointers, {names_[i]});
        }
        categories_[i].clear();
        if (column.codes == nullptr) return;
        for (const char* text : std::span(column.categories, column.categories_count)) {
            categories_[i].push_back(text == nullptr ? std::string_view() : text);
        }
    }

    void Point(size_t i, const velscore_column& given, size_t first, size_t count)
    {
        TableColumn& column = columns_[i];
        column = {};
        column.nanIsMissing = nanIsMissing_ && given.numbers != nullptr;
        // A block begins at a whole byte of the bits.
        if (given.present != nullptr) column.present = given.present + first / 8;
        if (given.numbers != nullptr) {
            column.numbers = given.numbers + first;
        } else if (given.codes != nullptr) {
            column.codes = given.codes + first;
            column.dictionary = categories_[i];
        } else {
            texts_[i].resize(kBlock);
            for (size_t row = 0; row < count; ++row) {
                const char* text = column.IsPresent(row) ? given.texts[first + row] : nullptr;
                texts_[i][row] = text == nullptr ? std::string_view() : text;
            }
            column.present = nullptr;
            column.texts = texts_[i].data();
        }
    }

    void Write(size_t first, const velscore_results& results)
    {
        KeepCategories();
        for (size_t i = 0; i < results.columns_count; ++i) {
            WriteColumn(first, block_.columns[positions_[i]], results.columns[i]);
        }
        if (results.status != nullptr) {
            std::memcpy(results.status + first, block_.status.data(),
                        block_.rows * sizeof(int32_t));
        }
        if (results.status_field == nullptr && !strict_) return;
        for (size_t row = 0; row < block_.rows; ++row) {
            const CaseStatus& status = block_.StatusOf(row);
            if (strict_ && !status.IsOK()) RefuseRow(static_cast<int64_t>(first + row + 1), status);
            if (results.status_field == nullptr) continue;
            results.status_field[first + row] =
                status.FieldName().empty() ? nullptr : status.field->c_str();
        }
    }

    void WriteColumn(size_t first, const ResultBlock::Column& from,
                     const velscore_result_column& to) const
    {
        const auto copy = [&](const auto& values, auto* out, auto none) {
            if (out == nullptr) return;
            for (size_t row = 0; row < block_.rows; ++row) {
                const bool isThere = !values.empty() && HasRow(from.present, row);
                out[first + row] = isThere ? values[row] : none;
            }
        };
        copy(from.numbers, to.numbers, std::numeric_limits<double>::quiet_NaN());
        copy(from.codes, to.codes, int32_t{-1});
        if (to.present == nullptr) return;
        std::memcpy(to.present + first / 8, from.present.data(), (block_.rows + 7) / 8);
    }

    void KeepCategories()
    {
        if (block_.categories.size() == categoryTexts_.size()) return;
        categoryTexts_.clear();
        for (const ResultCategory& category : block_.categories) {
            std::string& text = categoryTexts_.emplace_back(category.number ? "" : category.text);
            if (category.number) AppendNumber(*category.number, text);
        }
    }

    std::vector<std::string> names_;
    bool nanIsMissing_;
    bool strict_;
    TableScorer scorer_;
    ResultBlock block_;
    std::vector<size_t> positions_;  ///< of the wanted results, in the schema
    std::vector<TableColumn> columns_;
    std::vector<std::vector<std::string_view>> texts_;
    std::vector<std::vector<std::string_view>> categories_;
    std::vector<bool> isRead_;
    std::vector<std::string> categoryTexts_;
};

}  // namespace

/// One of both.
struct velscore_binding {
    std::unique_ptr<ArrowScorer> arrow;
    std::unique_ptr<NamedScorer> named;
};

namespace {

template <class Scorer>
Scorer& Own(const std::unique_ptr<Scorer>& scorer, const char* function)
{
    if (scorer == nullptr) {
        throw Failure(FailureKind::Usage, kOptionValue,
                      {"binding", "of the other kind", std::string("one of ") + function});
    }
    return *scorer;
}

void RefuseCount(const char* what, size_t found, size_t expected)
{
    if (found == expected) return;
    throw Failure(FailureKind::Usage, kColumnCount,
                  {what, std::to_string(found), std::to_string(expected)});
}

}  // namespace

int velscore_bind(const velscore_model* model, const velscore_score_options* options,
                  const ArrowSchema* schema, velscore_binding** out, velscore_error* error)
{
    return Call(error, [&] {
        velscore_binding*& made = Given(out, "out");
        const Request request = RequestOf(Given(model, "model"), options);
        const ArrowSchema& table = Given(schema, "schema");
        auto binding = std::make_unique<velscore_binding>();
        binding->arrow = model->With(request.settings, [&](const LoadedModel& loaded) {
            return std::make_unique<ArrowScorer>(loaded, table, request.scoring);
        });
        made = binding.release();
    });
}

int velscore_bind_names(const velscore_model* model, const velscore_score_options* options,
                        const char* const* names, size_t count, velscore_binding** out,
                        velscore_error* error)
{
    return Call(error, [&] {
        velscore_binding*& made = Given(out, "out");
        const Request request = RequestOf(Given(model, "model"), options);
        const OutputOptions& output = request.scoring.output;
        if (output.keepAll || !output.keep.empty()) {
            throw Failure(FailureKind::Usage, kOptionValue,
                          {"keep", output.keepAll ? "all" : output.keep.front(),
                           "nothing where columns are plain arrays"});
        }
        auto binding = std::make_unique<velscore_binding>();
        binding->named = model->With(request.settings, [&](const LoadedModel& loaded) {
            return std::make_unique<NamedScorer>(loaded, TextsOf(names, count, "names"),
                                                 request.scoring);
        });
        made = binding.release();
    });
}

void velscore_unbind(velscore_binding* binding) { delete binding; }

void velscore_begin_table(velscore_binding* binding)
{
    if (binding == nullptr) return;
    if (binding->arrow != nullptr) binding->arrow->BeginAnew();
    if (binding->named != nullptr) binding->named->BeginTable();
}

int velscore_binding_schema(const velscore_binding* binding, ArrowSchema* out,
                            velscore_error* error)
{
    return Call(error, [&] {
        ArrowSchema& made = Given(out, "out");
        Own(Given(binding, "binding").arrow, "velscore_bind").Schema().MoveTo(made);
    });
}

int velscore_score_batch(velscore_binding* binding, ArrowArray* in, ArrowArray* out,
                         velscore_error* error)
{
    return Call(error, [&] {
        ArrowOwner<ArrowArray> table(Given(in, "in"));
        ArrowArray& made = Given(out, "out");
        ArrowScorer& scorer = Own(Given(binding, "binding").arrow, "velscore_bind");
        if (table.IsReleased()) RefuseArrow(kArrowTableName, "the array was released");
        const int64_t rows = scorer.Begin(std::move(table));
        ArrowOwner<ArrowArray> scored = scorer.Score(0, rows);
        scorer.End();
        scored.MoveTo(made);
    });
}

int velscore_score_columns(velscore_binding* binding, const velscore_column* columns,
                           size_t columns_count, size_t rows, const velscore_results* results,
                           velscore_error* error)
{
    return Call(error, [&] {
        NamedScorer& scorer = Own(Given(binding, "binding").named, "velscore_bind_names");
        const auto known = Known(&Given(results, "results"), VELSCORE_RESULTS_INIT,
                                 "velscore_results", kResultsSize);
        RefuseCount("columns", columns_count, scorer.ColumnCount());
        if (columns_count > 0) Given(columns, "columns");
        if (known.columns_count > 0) {
            Given(known.columns, "results->columns");
            RefuseCount("results", known.columns_count, scorer.ResultCount());
        }
        scorer.Score({columns, columns_count}, rows, known);
    });
}

size_t velscore_result_count(const velscore_binding* binding)
{
    return binding == nullptr || binding->named == nullptr ? 0 : binding->named->ResultCount();
}

const char* velscore_result_name(const velscore_binding* binding, size_t index)
{
    return binding == nullptr || binding->named == nullptr ? nullptr
                                                           : binding->named->ResultName(index);
}

const char* velscore_category(const velscore_binding* binding, int32_t code)
{
    return binding == nullptr || binding->named == nullptr ? nullptr
                                                           : binding->named->Category(code);
}
