#include "engine/scoring/arrowscorer.h"

#include <algorithm>

#include "engine/documents/loadedmodel.h"
#include "engine/messages/failure.h"
#include "engine/tables/arrowarrays.h"
#include "host/messages/messages.h"

namespace MCVelscore_850 {

void RefuseRow(int64_t row, const CaseStatus& status)
{
    throw Failure(
        FailureKind::Cases, kRowNotScored,
        {std::to_string(row), std::to_string(status.code), std::string(status.FieldName())});
}

void UseColumnsOf(std::span<const CaseField> fields, ArrowColumns& columns)
{
    for (const CaseField& field : fields) {
        ArrowReader reader{.readsTexts = field.ValueKind() == CaseField::Kind::Text};
        if (field.ValueKind() == CaseField::Kind::DateTime) {
            reader.shape = ShapeOf(field.Var().GetDateTimeType());
        }
        columns.Use(field.Column(), reader);
    }
}

ArrowScorer::ArrowScorer(const LoadedModel& model, const ArrowSchema& schema,
                         const ArrowOptions& options)
    : columns_(schema, options.nanIsMissing, TableScorer::kRows),
      scorer_(model, columns_.Header(), kArrowTableName, options.table),
      shaper_(scorer_.Schema(), columns_.Header(), kArrowTableName, options.output),
      block_(scorer_.Schema()),
      results_(scorer_.Schema(), shaper_.Results()),
      strict_(options.strict)
{
    UseColumnsOf(scorer_.Preparer().Fields(), columns_);
    for (size_t i = 0; i < shaper_.Kept().size(); ++i) {
        kept_.push_back(CopyArrowSchema(*schema.children[shaper_.Kept()[i]], shaper_.Columns()[i]));
    }
}

ArrowOwner<ArrowSchema> ArrowScorer::Schema() const
{
    std::vector<ArrowOwner<ArrowSchema>> columns;
    for (const ArrowOwner<ArrowSchema>& kept : kept_) {
        columns.push_back(CopyArrowSchema(*kept, kept->name));
    }
    for (size_t i = 0; i < shaper_.Results().size(); ++i) {
        columns.push_back(results_.SchemaOf(i, shaper_.Columns()[kept_.size() + i]));
    }
    return MakeTableSchema(std::move(columns));
}

int64_t ArrowScorer::Begin(ArrowOwner<ArrowArray> table)
{
    table_ = std::make_shared<const ArrowOwner<ArrowArray>>(std::move(table));
    columns_.Begin(**table_);
    return columns_.Rows();
}

ArrowOwner<ArrowArray> ArrowScorer::Score(int64_t first, int64_t rows)
{
    results_.Begin(rows);
    for (int64_t done = 0; done < rows;) {
        const int64_t count = std::min(rows - done, static_cast<int64_t>(TableScorer::kRows));
        ScoreBlock(first + done, static_cast<size_t>(count));
        done += count;
    }
    std::vector<ArrowOwner<ArrowArray>> columns;
    columns.reserve(shaper_.Columns().size());
    for (size_t i = 0; i < kept_.size(); ++i) {
        const ArrowArray& kept = *(**table_).children[shaper_.Kept()[i]];
        columns.push_back(
            ViewArrowArray(kept, kept_[i]->name, table_, columns_.Offset() + first, rows));
    }
    results_.Finish(columns);
    return MakeArrowTable(rows, std::move(columns));
}

void ArrowScorer::End()
{
    rowsBefore_ += columns_.Rows();
    table_.reset();
}

void ArrowScorer::BeginAnew()
{
    scorer_.BeginTable();
    rowsBefore_ = 0;
}

void ArrowScorer::ScoreBlock(int64_t first, size_t rows)
{
    results_.Place(block_);
    scorer_.Score(columns_.Block(first, rows), block_);
    results_.Add(block_);
    if (!strict_ || !block_.hasFaults) return;
    for (size_t row = 0; row < rows; ++row) {
        const CaseStatus& status = block_.StatusOf(row);
        if (!status.IsOK()) {
            RefuseRow(rowsBefore_ + first + static_cast<int64_t>(row) + 1, status);
        }
    }
}

}  // namespace MCVelscore_850
