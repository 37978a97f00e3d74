#include "engine/scoring/scoringsession.h"

#include <algorithm>
#include <mutex>
#include <string_view>
#include <unordered_set>
#include <utility>

#include <oneapi/tbb/global_control.h>
#include <oneapi/tbb/info.h>
#include <oneapi/tbb/parallel_pipeline.h>

#include "engine/messages/shorttext.h"
#include "engine/scoring/lentarena.h"
#include "host/messages/messages.h"
#include "host/model/scoremodel.h"

namespace MCVelscore_850 {

namespace {

using Clock = std::chrono::steady_clock;

// Rows of text that a block may come to, about: blocks of long rows have fewer.
constexpr int64_t kBlockOutput = int64_t{1} << 22;
constexpr int64_t kNumberOutput = 24;

// Passed on by threads that start a pipeline to those that work in it.
Turn starting;

BlockReader::BlockSize BlockSizeOf(const LoadedModel& model, const ScoringOptions& options)
{
    const ModelDescription& about = model.Description();
    int64_t numbers = 8;
    if (options.explanations) {
        const ExplanationOutline outline = OutlineOf(model.Model());
        const size_t columns = ExplanationShaper::Columns().size();
        numbers += static_cast<int64_t>(
            columns * ExplanationLines::MostLines(outline, *options.explanations));
    } else if (options.curves) {
        size_t times = options.results.survival.times.size();
        for (const ModelDescription::Stratum& stratum : about.strata) {
            if (options.results.survival.times.empty()) times = std::max(times, stratum.cells);
        }
        numbers = std::max(numbers, 4 * static_cast<int64_t>(times));
    } else {
        numbers += static_cast<int64_t>(about.targetCategories.size() +
                                        options.results.survivalColumns.size());
    }
    return {options.blockBytes, std::max<int64_t>(1, kBlockOutput / (kNumberOutput * numbers))};
}

std::map<std::string, std::string> ColumnsOf(const LoadedModel& model, const TableReader& reader,
                                             const ScoringOptions& options)
{
    const bool inOrder = !options.dialect.hasHeader && options.columnOf.empty();
    return inOrder ? ColumnsInOrder(reader, model, options.ReadsEndTime()) : options.columnOf;
}

// A document may give its output fields any name, that of the status among them.
void RefuseKeysTwice(const std::vector<std::string>& columns)
{
    std::unordered_set<std::string_view> known;
    for (const std::string& column : columns) {
        if (known.insert(column).second) continue;
        throw Failure(FailureKind::Usage, kOutputKeyTwice, {column});
    }
}

}  // namespace

std::map<std::string, std::string> ColumnsInOrder(const TableReader& reader,
                                                  const LoadedModel& model, bool readsEndTime)
{
    std::vector<std::string> names = model.Columns();
    if (!readsEndTime && reader.Header().size() != names.size()) {
        names = model.ColumnsOf(CurveShaper::Needs(model.Description()));
    }
    if (names.size() != reader.Header().size()) {
        throw Failure(FailureKind::Cases, kColumnsWithoutHeader,
                      {reader.NameOf(0), std::to_string(reader.Header().size()),
                       std::to_string(names.size()), JoinNames(names, ", ")});
    }
    std::map<std::string, std::string> columnOf;
    for (size_t i = 0; i < names.size(); ++i) columnOf[names[i]] = reader.Header()[i];
    return columnOf;
}

size_t ProcessorCount() { return static_cast<size_t>(oneapi::tbb::info::default_concurrency()); }

ScoringSession::ScoringSession(const LoadedModel& model, std::vector<std::string> tables,
                               const ScoringOptions& options, const StopFlag* stop)
    : reader_(std::move(tables),
              {.delimiter = options.dialect.delimiter,
               .decimal = options.dialect.decimal,
               .hasHeader = options.dialect.hasHeader,
               .passesTorn = options.rejects,
               .tellsDelimiter = options.dialect.tellsDelimiter},
              BlockSizeOf(model, options), stop),
      plan_{.model = model,
            .reader = reader_,
            .shaper = shaper_,
            .curves = curves_,
            .table = {options.dialect.decimal, options.missingTexts, options.results,
                      options.curves, ColumnsOf(model, reader_, options), reader_.HeaderRemedy()},
            .form = options.form,
            .compression = options.compression,
            .delimiter = options.dialect.delimiter,
            .rejects = options.rejects,
            .mostRejects = options.mostRejects,
            .stop = stop,
            .explanations = options.explanations},
      // What the table lacks is refused before what the output names.
      tasks_(),
      schema_((tasks_.emplace_back(plan_), model.Description()), options.results),
      shaper_(schema_, reader_.Header(), reader_.NameOf(0),
              options.curves ? OutputOptions() : options.output, model.Output()),
      curves_({options.wideCurves, options.results.survival.times},
              options.curves ? options.output : OutputOptions(), reader_.Header(),
              reader_.NameOf(0)),
      stop_(stop),
      threads_(std::max<size_t>(1, options.threads))
{
    if (options.form.table == TableForm::JsonLines) RefuseKeysTwice(plan_.OutputColumns());
    for (const CaseField& field : tasks_.front().Fields()) {
        unlisted_.push_back(field.NoneUnlisted());
    }
}

ScoringSession::~ScoringSession() = default;

void ScoringSession::Run(RowWriter& writer, RowWriter* rejects)
{
    writer_ = &writer;
    rejectWriter_ = rejects;
    checkpointed_ = Clock::now();
    if (plan_.form.table == TableForm::JsonLines) writer_->OmitHeader();
    try {
        if (start_) {
            GoToStart();
        } else {
            WriteHeaders();
        }
        ScoreTables();
        if (failure_ != nullptr) std::rethrow_exception(failure_);
        FlushWriters();
    } catch (const Failure& failure) {
        if (failure.Kind() != FailureKind::Output) {
            FlushWriters();
            LastCheckpoint();
        }
        SettleReport();
        throw;
    } catch (...) {
        SettleReport();
        throw;
    }
    report_.interrupted = IsStopped() && !writer.IsClosed();
    if (report_.interrupted) LastCheckpoint();
    SettleReport();
}

void ScoringSession::FlushWriters()
{
    writer_->Flush();
    if (rejectWriter_ != nullptr) rejectWriter_->Flush();
}

// Settles the model as the run before had it settled, by the first row that it scores, and goes on
// behind the rows of that run.
void ScoringSession::GoToStart()
{
    place_ = start_->tables;
    report_ = start_->report;
    unlisted_ = start_->unlisted;
    BlockTask& first = tasks_.front();
    const auto isBefore = [&](const TableReader::Place& place) {
        return std::pair(place.table, place.offset) <
               std::pair(start_->tables.table, start_->tables.offset);
    };
    while (!first.IsSettled() && Read(first) && first.ReadFailure() == nullptr) {
        first.Run(std::numeric_limits<int64_t>::max());
        if (!isBefore(TableReader::EndOf(first.Records()))) break;
    }
    try {
        reader_.GoTo(start_->tables);
    } catch (const Failure&) {
        if (!IsStopped()) throw;  // else the reading was interrupted
    }
}

RunPosition ScoringSession::Position() const
{
    RunPosition position{place_, writer_->End(), {}, report_, unlisted_};
    if (rejectWriter_ != nullptr) position.rejects = rejectWriter_->End();
    return position;
}

// Behind a whole block.
void ScoringSession::MayCheckpoint()
{
    constexpr std::chrono::milliseconds kBetween{200};
    if (!checkpoint_) return;
    const Clock::time_point now = Clock::now();
    if (now - checkpointed_ < kBetween) return;
    checkpointed_ = now;
    FlushWriters();
    checkpoint_(Position());
}

// All that was written is in the files.
void ScoringSession::LastCheckpoint()
{
    if (checkpoint_) checkpoint_(lastWhole_ ? *lastWhole_ : Position());
}

void ScoringSession::SettleReport()
{
    for (const UnlistedValues& values : unlisted_) {
        if (values.count > 0) report_.unlisted.push_back(values);
    }
    report_.rowsWritten = writer_->RowsWritten();
    report_.outputClosed = writer_->IsClosed();
}

void ScoringSession::WriteHeaders()
{
    RowText header(plan_.form);
    header.AddHeader(plan_.OutputColumns());
    writer_->Write(header);
    if (rejectWriter_ == nullptr) return;
    RowText rejects;
    RejectTable::WriteHeader(rejects);
    rejectWriter_->Write(rejects);
}

void ScoringSession::ScoreTables()
{
    BlockTask& first = tasks_.front();
    // A table of a block or two isn't worth further threads.
    constexpr int kBlocksAlone = 2;
    for (int block = 0; threads_ == 1 || block < kBlocksAlone || !first.IsSettled(); ++block) {
        if (!Read(first)) return;
        first.Run(plan_.mostRejects);
        Write(first);
    }
    ScoreInParallel();
}

void ScoringSession::ScoreInParallel()
{
    namespace tbb = oneapi::tbb;
    const size_t most = threads_ + 2;
    std::mutex mutex;
    std::vector<BlockTask*> idle{&tasks_.front()};
    // Never runs: further tasks settle by it while the first one may be scoring.
    BlockTask& settled = tasks_.emplace_back(plan_);
    settled.SettleAs(tasks_.front());
    // The pipeline hands blocks, the reading and the writing from thread to thread by itself. Its
    // library isn't built for ThreadSanitizer, which learns of that by these turns.
    Turn reading;
    Turn writing;
    const auto next = [&](tbb::flow_control& control) -> BlockTask* {
        starting.Take();
        const Turn::Holder ours(reading);
        BlockTask* task = nullptr;
        {
            const std::lock_guard lock(mutex);
            if (!idle.empty()) {
                task = idle.back();
                idle.pop_back();
            }
        }
        if (task == nullptr) {
            task = &tasks_.emplace_back(plan_);
            task->SettleAs(settled);
        }
        const Turn::Holder its(task->OwnTurn());
        if (Read(*task)) return task;
        control.stop();
        return nullptr;
    };
    const auto run = [&](BlockTask* task) {
        starting.Take();
        const Turn::Holder its(task->OwnTurn());
        task->Run(plan_.mostRejects);
        return task;
    };
    const auto write = [&](BlockTask* task) {
        starting.Take();
        const Turn::Holder ours(writing);
        const Turn::Holder its(task->OwnTurn());
        Write(*task);
        const std::lock_guard lock(mutex);
        idle.push_back(task);
    };
    const tbb::filter<void, void> stages =
        tbb::make_filter<void, BlockTask*>(tbb::filter_mode::serial_in_order, next) &
        tbb::make_filter<BlockTask*, BlockTask*>(tbb::filter_mode::parallel, run) &
        tbb::make_filter<BlockTask*, void>(tbb::filter_mode::serial_in_order, write);
    const tbb::global_control control(tbb::global_control::max_allowed_parallelism, threads_);
    LentArena arena(threads_);
    starting.Pass();
    arena.Get().execute([&] { tbb::parallel_pipeline(most, stages); });
    reading.Take();
    writing.Take();
}

// The next block into the task; false at the end.
bool ScoringSession::Read(BlockTask& task)
{
    if (ended_ || readEnded_ || IsStopped()) return false;
    const Clock::time_point begin = Clock::now();
    bool read = false;
    try {
        read = reader_.Next(task.Records());
        // A stop ends the reading where it stands: the last row may be half of one.
        if (IsStopped()) read = false;
    } catch (...) {
        // The blocks before it are written first.
        read = !IsStopped();
        readEnded_ = true;
        task.Fail(std::current_exception());
    }
    times_.reading += Clock::now() - begin;
    return read;
}

void ScoringSession::Write(BlockTask& task)
{
    if (ended_) return;
    const Clock::time_point begin = Clock::now();
    try {
        WriteBlock(task);
    } catch (...) {
        failure_ = std::current_exception();
        ended_ = true;
    }
    times_.writing += Clock::now() - begin;
}

void ScoringSession::WriteBlock(BlockTask& task)
{
    times_.scoring += task.Time();
    // With the rejects of the blocks before, one of these may be one too many.
    const int64_t left = plan_.mostRejects - report_.rejected;
    if (task.RejectCount() > left) task.Run(left);
    const bool isWhole = task.WhyEnded() == nullptr && !task.IsStopped();
    if (!isWhole && checkpoint_) lastWhole_ = Position();
    report_.rejected += task.RejectCount();
    report_.Add(task.Report());
    for (const BlockTask::Unlisted& value : task.UnlistedTexts()) {
        unlisted_[value.field].Count(value.text);
    }
    if (rejectWriter_ != nullptr) rejectWriter_->Write(task.Rejects());
    writer_->Write(task.Rows(), task.PackedRows());
    if (task.WhyEnded() != nullptr) std::rethrow_exception(task.WhyEnded());
    if (task.IsStopped() || writer_->IsClosed()) ended_ = true;
    if (isWhole) {
        place_ = TableReader::EndOf(task.Records());
        MayCheckpoint();
    }
    if (progress_) {
        progress_(task.Records().bytesRead, report_.scored + report_.NotScoredCount());
    }
}

}  // namespace MCVelscore_850
