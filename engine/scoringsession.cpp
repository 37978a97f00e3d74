#include "engine/scoringsession.h"

#include "engine/curveshaper.h"
#include "host/scoremodel.h"
#include "host/scoreresult.h"

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
    : model_(model),
      reader_(source, options.dialect.delimiter),
      preparer_(model.Model(),
                options.curves ? CurveShaper::Needs(model.Description()) : model.Description(),
                model.Treatments(), reader_.Header(), source.Name(),
                CaseOptions{options.dialect.decimal, model.Substitutes(), options.missingTexts,
                            model.Output() == nullptr ? std::vector<std::string>()
                                                      : model.Output()->inputs}),
      fields_(model.Output() == nullptr
                  ? nullptr
                  : std::make_unique<OutputEvaluator>(*model.Output(), model.Model())),
      shaper_(
          OutputShaper::ResultTypeOf(model.Model().GetModelType(), model.Description()),
          model.Description(), reader_.Header(), source.Name(), options.output,
          DocumentOutput{TargetOf(model.Model().GetTargetVar()), fields_.get(), model.Output()}),
      stop_(stop),
      curves_(options.curves)
{}

ScoringSession::~ScoringSession() = default;

void ScoringSession::Run(CsvWriter& writer, const Progress& progress)
{
    const auto settle = [&] {
        report_.unlisted = preparer_.Unlisted();
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
    const CaseStatus prepared = preparer_.Prepare(fields);
    if (!prepared.IsOK()) {
        Note(prepared.code, *prepared.field, prepared.text);
        WriteNotScored(writer, fields, prepared.code, *prepared.field);
        return;
    }
    const MCScore::MCStatus status = ScoreCase(writer, fields);
    if (status.IsOK()) {
        ++report_.scored;
    } else {
        const std::string_view field = shaper_.FieldOf(status);
        Note(status.GetErrorCode(), field, {});
        WriteNotScored(writer, fields, status.GetErrorCode(), field);
    }
}

MCScore::MCStatus ScoringSession::ScoreCase(CsvWriter& writer,
                                            std::span<const std::string_view> fields)
{
    MCScore::MCStatus status;
    if (curves_) {
        status = model_.Model().GetCurve(&preparer_.Record(), true, curve_);
        if (status.IsOK()) CurveShaper::WriteCurve(writer, reader_.RowNumber(), curve_);
        return status;
    }
    // The model may replace the result by one of its own making.
    ScoreResult* result = result_.release();
    try {
        status = model_.Model().GetScore(&preparer_.Record(), result, true);
    } catch (...) {
        result_.reset(result);
        throw;
    }
    result_.reset(result);
    if (result_ == nullptr && status.IsOK()) {  // a plug-in's slip: nothing to show
        status = MCScore::MCStatus(MCScore::kCaseNotScorable, false);
    }
    if (status.IsOK()) shaper_.WriteScored(writer, fields, preparer_.Record(), *result_);
    return status;
}

void ScoringSession::WriteNotScored(CsvWriter& writer, std::span<const std::string_view> fields,
                                    long code, std::string_view field)
{
    if (curves_) {
        CurveShaper::WriteNoCurve(writer, reader_.RowNumber());
    } else {
        shaper_.WriteNotScored(writer, fields, code, field);
    }
}

void ScoringSession::Note(long code, std::string_view field, std::string_view text)
{
    NotScored& cases = report_.notScored[code];
    if (++cases.count > 1) return;
    cases.row = reader_.RowNumber();
    cases.field = field;
    cases.text = text;
}

}  // namespace MCVelscore_850
