#include "engine/scoring/scoringsession.h"

#include "engine/scoring/curveshaper.h"
#include "host/model/scoremodel.h"

namespace MCVelscore_850 {

namespace {

constexpr int64_t kProgressRows = 4096;  // a few milliseconds of work

}  // namespace

int64_t ScoringReport::NotScoredCount() const
{
    int64_t count = 0;
    for (const auto& [code, cases] : notScored) count += cases.count;
    return count;
}

ScoringSession::ScoringSession(const LoadedModel& model, ByteSource& source,
                               const ScoringOptions& options, const StopFlag* stop)
    : reader_(source, options.dialect.delimiter),
      scorer_(model, reader_.Header(), source.Name(),
              {options.dialect.decimal, options.missingTexts, options.results, options.curves}),
      fields_(model.Output() == nullptr ? nullptr
                                        : std::make_unique<OutputEvaluator>(
                                              *model.Output(), model.Model(), model.Description())),
      shaper_(scorer_.Schema(), reader_.Header(), source.Name(), options.output, model.Output()),
      rows_(reader_.Header().size()),
      results_(scorer_.Schema()),
      stop_(stop),
      curves_(options.curves)
{}

ScoringSession::~ScoringSession() = default;

void ScoringSession::Run(CsvWriter& writer, const Progress& progress)
{
    const auto settle = [&] {
        report_.unlisted = scorer_.Preparer().Unlisted();
        report_.rowsWritten = writer.RowsWritten();
        report_.outputClosed = writer.IsClosed();
    };
    try {
        if (curves_) {
            CurveShaper::WriteHeader(writer);
        } else {
            shaper_.WriteHeader(writer);
        }
        ScoreTable(writer, progress);
        writer.Flush();
    } catch (const Failure& failure) {
        if (failure.Kind() != FailureKind::Output) writer.Flush();
        settle();
        throw;
    } catch (...) {
        settle();
        throw;
    }
    settle();
}

void ScoringSession::ScoreTable(CsvWriter& writer, const Progress& progress)
{
    while (!IsStopped() && !writer.IsClosed()) {
        try {
            if (reader_.NextRows(TableScorer::kRows, texts_) == 0) break;
        } catch (const Failure&) {
            if (!IsStopped()) throw;  // an interrupted read can end inside a quote
            break;
        }
        // After a stop the last row may be half of one.
        if (!IsStopped()) ScoreBlock(rows_.Block(texts_), writer, progress);
    }
    report_.interrupted = IsStopped() && !writer.IsClosed();
}

void ScoringSession::ScoreBlock(const ColumnBlock& block, CsvWriter& writer,
                                const Progress& progress)
{
    if (curves_) {
        scorer_.VisitCurves(block, [&](size_t row, const CaseStatus& status, const auto& curve) {
            CurveShaper::WriteCurve(writer, RowNumber(row), curve);
            return EndRow(row, status, writer, progress);
        });
    } else if (fields_ != nullptr) {
        scorer_.VisitCases(block, [&](size_t row, const CaseStatus& status, const auto& record,
                                      const ScoreResult* result) {
            shaper_.WriteRow(writer, Fields(row),
                             result == nullptr ? fields_->EvaluateDefaults()
                                               : fields_->Evaluate(record, *result),
                             status);
            return EndRow(row, status, writer, progress);
        });
    } else {
        scorer_.Score(block, results_);
        for (size_t row = 0; row < block.rows; ++row) {
            shaper_.WriteRow(writer, Fields(row), results_, row);
            if (!EndRow(row, results_.StatusOf(row), writer, progress)) break;
        }
    }
}

bool ScoringSession::EndRow(size_t row, const CaseStatus& status, const CsvWriter& writer,
                            const Progress& progress)
{
    if (status.IsOK()) {
        ++report_.scored;
    } else {
        Note(row, status);
    }
    if (writer.IsClosed()) return false;
    if (progress && RowNumber(row) % kProgressRows == 0) progress(reader_.BytesRead());
    return !IsStopped();
}

std::span<const std::string_view> ScoringSession::Fields(size_t row) const
{
    const size_t columns = reader_.Header().size();
    return texts_.subspan(row * columns, columns);
}

int64_t ScoringSession::RowNumber(size_t row) const
{
    const size_t rows = texts_.size() / reader_.Header().size();
    return reader_.RowNumber() - static_cast<int64_t>(rows - row) + 1;
}

void ScoringSession::Note(size_t row, const CaseStatus& status)
{
    NotScored& cases = report_.notScored[status.code];
    if (++cases.count > 1) return;
    cases.row = RowNumber(row);
    cases.field = status.FieldName();
    cases.text = status.text;
}

}  // namespace MCVelscore_850
