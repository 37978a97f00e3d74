#include "engine/scoring/tablescan.h"

#include <algorithm>
#include <cstring>
#include <limits>

#include <oneapi/tbb/parallel_for.h>
#include <oneapi/tbb/task_arena.h>

#include "engine/documents/loadedmodel.h"
#include "engine/messages/failure.h"
#include "engine/scoring/turn.h"
#include "engine/tables/arrowarrays.h"
#include "engine/tables/arrowschema.h"
#include "engine/tables/blocksplitter.h"

namespace MCVelscore_850 {

namespace {

constexpr size_t kMostFields = size_t{1} << 16;  // split at once, of wide tables

// A kept column of a block: its texts one behind the other.
class KeptTexts {
public:
    void Clear()
    {
        bytes_.clear();
        ends_.clear();
    }
    void Add(std::string_view text)
    {
        bytes_ += text;
        ends_.push_back(bytes_.size());
    }
    ArrowOwner<ArrowArray> Array() const
    {
        std::vector<std::string_view> texts;
        size_t begin = 0;
        for (const size_t end : ends_) {
            texts.push_back(std::string_view(bytes_).substr(begin, end - begin));
            begin = end;
        }
        const ArrowTextBytes made = MakeArrowTexts(texts);
        return MakeArrowArray(made.count,
                              {.validity = nullptr, .values = made.offsets, .texts = made.bytes});
    }

private:
    std::string bytes_;
    std::vector<size_t> ends_;
};

}  // namespace

/// One block of a file at a time, from its bytes to columns of results.
class ScanTask {
public:
    ScanTask(const LoadedModel& model, const TableReader& reader, const ScanOptions& options,
             const TableOptions& table)
        : reader_(reader),
          options_(options),
          scorer_(model, reader.Header(), reader.NameOf(0), table),
          shaper_(scorer_.Schema(), reader.Header(), reader.NameOf(0), options.scoring.output),
          results_(scorer_.Schema(), shaper_.Results()),
          block_(scorer_.Schema()),
          textRows_(reader.Header().size(), true),
          kept_(shaper_.Kept().size())
    {
        MakeSplitter();
    }

    Turn& OwnTurn() { return turn_; }
    RecordBlock& Records() { return records_; }
    bool IsSettled() const { return scorer_.IsSettled(); }
    void SettleAs(const ScanTask& other) { scorer_.SettleAs(other.scorer_); }
    std::exception_ptr WhyEnded() const { return failure_; }

    ArrowOwner<ArrowSchema> Schema() const
    {
        std::vector<ArrowOwner<ArrowSchema>> columns;
        for (size_t i = 0; i < kept_.size(); ++i) {
            columns.push_back(MakeArrowSchema("u", shaper_.Columns()[i], false));
        }
        for (size_t i = 0; i < shaper_.Results().size(); ++i) {
            columns.push_back(results_.SchemaOf(i, shaper_.Columns()[kept_.size() + i]));
        }
        return MakeTableSchema(std::move(columns));
    }

    /// What ends the table is kept, for the rows before it to be handed out first.
    void Run()
    {
        failure_ = nullptr;
        for (KeptTexts& texts : kept_) texts.Clear();
        results_.Begin(records_.nextRow - records_.firstRow + records_.blankLines);
        try {
            SplitAndScore();
        } catch (...) {
            failure_ = std::current_exception();
        }
    }

    int64_t Rows() const { return results_.Rows(); }

    ArrowOwner<ArrowArray> Table()
    {
        const int64_t rows = results_.Rows();
        std::vector<ArrowOwner<ArrowArray>> columns;
        for (const KeptTexts& texts : kept_) columns.push_back(texts.Array());
        results_.Finish(columns);
        return MakeArrowTable(rows, std::move(columns));
    }

private:
    void MakeSplitter()
    {
        SplitterPlan plan{.form = reader_.Form(),
                          .header = reader_.Header(),
                          .delimiter = options_.dialect.delimiter,
                          .decimal = options_.dialect.decimal,
                          .uses = std::vector<ColumnUse>(reader_.Header().size())};
        for (const CaseField& field : scorer_.Preparer().Fields()) {
            ColumnUse& use = plan.uses[field.Column()];
            use.isUsed = true;
            use.isNumber = use.isNumber || field.ValueKind() == CaseField::Kind::Number;
        }
        for (const size_t column : shaper_.Kept()) plan.uses[column].isUsed = true;
        splitter_ = MakeBlockSplitter(plan);
    }

    void SplitAndScore()
    {
        const size_t columns = reader_.Header().size();
        const size_t most = std::clamp(kMostFields / columns, size_t{1}, TableScorer::kRows);
        splitter_->Begin(records_);
        std::span<const std::string_view> fields;
        while (splitter_->NextRows(most, fields) > 0) ScoreRows(fields, columns);
        const TornRow* torn = splitter_->Torn();
        if (torn == nullptr) return;
        throw FailureOf(torn->fault, reader_.NameOf(records_.table), torn->raw.number, columns);
    }

    void ScoreRows(std::span<const std::string_view> fields, size_t columns)
    {
        const ColumnBlock block = textRows_.Block(fields);
        results_.Place(block_);
        scorer_.Score(block, block_);
        if (options_.scoring.strict) {
            for (size_t row = 0; row < block.rows; ++row) {
                const CaseStatus& status = block_.StatusOf(row);
                if (!status.IsOK()) RefuseRow(splitter_->Raw(row).number, status);
            }
        }
        results_.Add(block_);
        for (size_t i = 0; i < kept_.size(); ++i) {
            for (size_t row = 0; row < block.rows; ++row) {
                kept_[i].Add(fields[row * columns + shaper_.Kept()[i]]);
            }
        }
    }

    const TableReader& reader_;
    const ScanOptions options_;
    Turn turn_;
    TableScorer scorer_;
    OutputShaper shaper_;
    ArrowResults results_;
    ResultBlock block_;
    TextRows textRows_;
    std::unique_ptr<BlockSplitter> splitter_;
    std::vector<KeptTexts> kept_;
    RecordBlock records_;
    std::exception_ptr failure_;
};

namespace {

TableOptions TableOptionsOf(const LoadedModel& model, const TableReader& reader,
                            const ScanOptions& options)
{
    TableOptions table = options.scoring.table;
    table.decimal = options.dialect.decimal;
    table.headerRemedy = reader.HeaderRemedy();
    if (!options.dialect.hasHeader && table.columnOf.empty()) {
        table.columnOf = ColumnsInOrder(reader, model, table.ReadsEndTime());
    }
    return table;
}

}  // namespace

TableScan::TableScan(const LoadedModel& model, std::vector<std::string> paths,
                     const ScanOptions& options)
    : reader_(std::move(paths),
              {.delimiter = options.dialect.delimiter,
               .decimal = options.dialect.decimal,
               .hasHeader = options.dialect.hasHeader,
               .tellsDelimiter = options.dialect.tellsDelimiter},
              {.bytes = options.blockBytes}),
      threads_(std::max<size_t>(1, options.threads))
{
    const TableOptions table = TableOptionsOf(model, reader_, options);
    for (size_t i = 0; i < threads_; ++i) {
        tasks_.push_back(std::make_unique<ScanTask>(model, reader_, options, table));
    }
}

TableScan::~TableScan() = default;

ArrowOwner<ArrowSchema> TableScan::Schema() const { return tasks_.front()->Schema(); }

std::optional<ArrowOwner<ArrowArray>> TableScan::Next()
{
    for (;;) {
        if (taken_ == filled_) {
            if (failure_ != nullptr) std::rethrow_exception(failure_);
            if (readEnded_) return std::nullopt;
            Fill();
            continue;
        }
        ScanTask& task = *tasks_[taken_++];
        if (task.WhyEnded() != nullptr) {  // nothing behind it counts
            failure_ = task.WhyEnded();
            filled_ = taken_;
        }
        if (task.Rows() > 0) return task.Table();
    }
}

void TableScan::Fill()
{
    taken_ = 0;
    filled_ = 0;
    const bool isSettled = tasks_.front()->IsSettled();
    const size_t most = isSettled ? threads_ : 1;
    try {
        while (filled_ < most && !readEnded_) {
            if (reader_.Next(tasks_[filled_]->Records())) {
                ++filled_;
            } else {
                readEnded_ = true;
            }
        }
    } catch (...) {  // the blocks before it are handed out first
        failure_ = std::current_exception();
        readEnded_ = true;
    }
    RunAll();
    if (isSettled || !tasks_.front()->IsSettled()) return;
    for (size_t i = 1; i < tasks_.size(); ++i) tasks_[i]->SettleAs(*tasks_.front());
}

void TableScan::RunAll()
{
    if (filled_ < 2) {
        if (filled_ == 1) tasks_.front()->Run();
        return;
    }
    // The library hands tasks to its threads and back; it isn't built for ThreadSanitizer, which
    // learns of that by these turns.
    for (size_t i = 0; i < filled_; ++i) tasks_[i]->OwnTurn().Pass();
    oneapi::tbb::task_arena arena(static_cast<int>(threads_));
    arena.execute([this] {
        oneapi::tbb::parallel_for(size_t{0}, filled_, [this](size_t i) {
            const Turn::Holder its(tasks_[i]->OwnTurn());
            tasks_[i]->Run();
        });
    });
    for (size_t i = 0; i < filled_; ++i) tasks_[i]->OwnTurn().Take();
}

}  // namespace MCVelscore_850
