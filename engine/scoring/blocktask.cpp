#include "engine/scoring/blocktask.h"

#include <algorithm>

#include "engine/documents/loadedmodel.h"
#include "engine/scoring/curveshaper.h"
#include "engine/tables/utf8.h"
#include "host/messages/messages.h"

namespace MCVelscore_850 {

namespace {

constexpr size_t kMostFields = size_t{1} << 16;  // split at once, of wide tables

}  // namespace

const std::vector<std::string>& BlockPlan::OutputColumns() const
{
    return table.curves ? curves.Columns() : shaper.Columns();
}

std::span<const size_t> BlockPlan::Kept() const
{
    return table.curves ? curves.Kept() : shaper.Kept();
}

BlockTask::BlockTask(const BlockPlan& plan)
    : plan_(plan),
      columns_(plan.reader.Header().size()),
      scorer_(plan.model, plan.reader.Header(), plan.reader.NameOf(0), plan.table),
      evaluator_(plan.model.Output() == nullptr || plan.table.curves
                     ? nullptr
                     : std::make_unique<OutputEvaluator>(*plan.model.Output(), plan.model.Model(),
                                                         plan.model.Description())),
      textRows_(columns_, true),
      results_(scorer_.Schema()),
      mostRows_(std::clamp(kMostFields / columns_, size_t{1}, TableScorer::kRows)),
      rows_(plan.form),
      compressor_(plan.compression)
{}

BlockTask::~BlockTask() = default;

void BlockTask::Fail(std::exception_ptr failure) { readFailure_ = std::move(failure); }

void BlockTask::Run(int64_t mostRejects)
{
    const auto begin = std::chrono::steady_clock::now();
    rows_.Clear();
    rejects_.Clear();
    rejectCount_ = 0;
    mostRejects_ = mostRejects;
    report_ = {};
    unlisted_.clear();
    stopped_ = false;
    failure_ = readFailure_;
    try {
        if (failure_ == nullptr) SplitAndScore();
    } catch (...) {
        failure_ = std::current_exception();
    }
    packedRows_.clear();
    if (plan_.compression != Compression::None && !rows_.RowEnds().empty()) {
        compressor_.Compress(rows_.Text(), packedRows_);
    }
    time_ = std::chrono::steady_clock::now() - begin;
}

// What the columns are used for, and what those of the output are called, is known once the shaper
// is there; it is made after the first task.
void BlockTask::MakeSplitter()
{
    SplitterPlan plan{.form = plan_.reader.Form(),
                      .header = plan_.reader.Header(),
                      .delimiter = plan_.delimiter,
                      .decimal = plan_.table.decimal,
                      .uses = std::vector<ColumnUse>(plan_.reader.Header().size())};
    for (const CaseField& field : Fields()) {
        ColumnUse& use = plan.uses[field.Column()];
        use.isUsed = true;
        use.isNumber = use.isNumber || field.ValueKind() == CaseField::Kind::Number;
    }
    for (const size_t column : plan_.Kept()) plan.uses[column].isUsed = true;
    splitter_ = MakeBlockSplitter(plan);
    rows_.SetColumns(plan_.OutputColumns());
}

void BlockTask::SplitAndScore()
{
    if (splitter_ == nullptr) MakeSplitter();
    splitter_->Begin(records_);
    if (plan_.rejects) splitter_->CheckEncoding();
    for (;;) {
        if (plan_.stop != nullptr && plan_.stop->load(std::memory_order_relaxed)) {
            stopped_ = true;
            return;
        }
        if (splitter_->NextRows(mostRows_, fields_) > 0) {
            ScoreRows(fields_);
            continue;
        }
        const TornRow* torn = splitter_->Torn();
        if (torn == nullptr) return;
        // Half a row at the end tells that the table isn't whole: nobody can say what is lacking.
        if (!plan_.rejects || torn->fault.code == kTableCut) {
            throw FailureOf(torn->fault, std::string(TableName()), torn->raw.number, columns_);
        }
        Reject(*torn);
        splitter_->PassTorn();
    }
}

void BlockTask::ScoreRows(std::span<const std::string_view> fields)
{
    const ColumnBlock block = textRows_.Block(fields);
    jsonValues_ = splitter_->JsonValues();
    if (plan_.table.curves) {
        const int64_t firstRow = records_.rowsBefore + splitter_->Raw(0).number;
        scorer_.VisitCurves(block, [&](size_t row, const CaseStatus& status, const auto& curve) {
            EndRow(row, status);
            plan_.curves.WriteCurve(rows_, Input(row), firstRow + static_cast<int64_t>(row), curve);
            return true;
        });
    } else if (evaluator_ != nullptr) {
        scorer_.VisitCases(block, [&](size_t row, const CaseStatus& status, const auto& record,
                                      const ScoreResult* result) {
            EndRow(row, status);
            plan_.shaper.WriteRow(rows_, Input(row),
                                  result == nullptr ? evaluator_->EvaluateDefaults()
                                                    : evaluator_->Evaluate(record, *result),
                                  status);
            return true;
        });
    } else {
        scorer_.Score(block, results_);
        for (size_t row = 0; row < block.rows; ++row) {
            EndRow(row, results_.StatusOf(row));
            plan_.shaper.WriteRow(rows_, Input(row), results_, row);
        }
    }
    for (const UnlistedValue& value : scorer_.Unlisted()) {
        unlisted_.push_back({value.field, std::string(value.text)});
    }
}

void BlockTask::EndUnscored(size_t row, const CaseStatus& status)
{
    const RawRow raw = splitter_->Raw(row);
    if (plan_.rejects) {
        CountReject(raw);
        const bool isMissing = scorer_.Preparer().IsMissing(status);
        RejectTable::WriteNotScored(rejects_, TableName(), raw, status, isMissing);
    }
    NotScored::Case first{records_.table, raw.number};
    if (status.text) first.text = *status.text;
    report_.Note(status.code, status.FieldName(), first);
}

void BlockTask::Reject(const TornRow& torn)
{
    CountReject(torn.raw);
    RejectTable::WriteTorn(rejects_, TableName(), torn, columns_);
    report_.Note(kCaseNotReadable, {}, {records_.table, torn.raw.number});
    if (plan_.table.curves) {
        plan_.curves.WriteTorn(rows_, TableName(), records_.rowsBefore + torn.raw.number);
    } else {
        plan_.shaper.WriteTorn(rows_, TableName(), kCaseNotReadable);
    }
}

void BlockTask::CountReject(const RawRow& row)
{
    if (rejectCount_ == mostRejects_) {
        throw Failure(FailureKind::Cases, kTooManyRejects,
                      {std::to_string(plan_.mostRejects), std::string(TableName()),
                       std::to_string(row.number)});
    }
    ++rejectCount_;
}

}  // namespace MCVelscore_850
