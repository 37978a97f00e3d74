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

ScoringSession::ScoringSession(LoadedModel& model, ByteSource& source,
                               const ScoringOptions& options, const StopFlag* stop)
    : reader_(source, options.dialect.delimiter),
      scorer_(model, reader_.Header(), source.Name(), options.dialect.decimal, options.missingTexts,
              options.curves ? CaseScorer::Answer::Curve : CaseScorer::Answer::Score),
      fields_(model.Output() == nullptr ? nullptr
                                        : std::make_unique<OutputEvaluator>(
                                              *model.Output(), model.Model(), model.Description())),
      shaper_(
          model.Description(), reader_.Header(), source.Name(), options.output,
          DocumentOutput{TargetOf(model.Model().GetTargetVar()), fields_.get(), model.Output()}),
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
        ScoreRows(writer, progress);
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

void ScoringSession::ScoreRows(CsvWriter& writer, const Progress& progress)
{
    std::span<const std::string_view> fields;
    for (;;) {
        try {
            if (!reader_.Next(fields)) break;
        } catch (const Failure&) {
            if (!IsStopped()) throw;  // an interrupted read can end inside a quote
            break;
        }
        // After a stop the last row may be half of one.
        if (IsStopped()) break;
        ScoreRow(writer, fields);
        if (writer.IsClosed()) return;
        if (progress && reader_.RowNumber() % kProgressRows == 0) progress(reader_.BytesRead());
    }
    report_.interrupted = IsStopped();
}

void ScoringSession::ScoreRow(CsvWriter& writer, std::span<const std::string_view> fields)
{
    const CaseStatus status = curves_ ? scorer_.DrawCurve(fields) : scorer_.Score(fields);
    if (!status.IsOK()) {
        Note(status);
        WriteNotScored(writer, fields, status);
        return;
    }
    if (curves_) {
        CurveShaper::WriteCurve(writer, reader_.RowNumber(), scorer_.Curve());
    } else {
        shaper_.WriteScored(writer, fields, scorer_.Record(), scorer_.Result());
    }
    ++report_.scored;
}

void ScoringSession::WriteNotScored(CsvWriter& writer, std::span<const std::string_view> fields,
                                    const CaseStatus& status)
{
    if (curves_) {
        CurveShaper::WriteNoCurve(writer, reader_.RowNumber());
    } else {
        shaper_.WriteNotScored(writer, fields, status.code, status.FieldName());
    }
}

void ScoringSession::Note(const CaseStatus& status)
{
    NotScored& cases = report_.notScored[status.code];
    if (++cases.count > 1) return;
    cases.row = reader_.RowNumber();
    cases.field = status.FieldName();
    cases.text = status.text;
}

}  // namespace MCVelscore_850
