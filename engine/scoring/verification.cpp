#include "engine/scoring/verification.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <span>
#include <string_view>

#include "engine/documents/loadedmodel.h"
#include "engine/documents/outputfield.h"
#include "engine/messages/failure.h"
#include "engine/scoring/casescorer.h"
#include "engine/scoring/outputevaluator.h"
#include "engine/tables/bytesource.h"
#include "engine/tables/csvreader.h"
#include "host/messages/messages.h"
#include "host/messages/vsexception.h"
#include "host/model/scoremodel.h"
#include "host/model/scoreresult.h"
#include "host/values/numbertext.h"

namespace MCVelscore_850 {

namespace {

// What a column of the table is for.
struct Comparison {
    size_t column;
    std::optional<size_t> outputField;  // none: the predicted value
};

std::vector<Comparison> ComparisonsOf(const LoadedModel& model, const VerificationTable& table)
{
    std::vector<Comparison> comparisons;
    const ScoreDictVar* target = model.Model().GetTargetVar();
    for (size_t column = 0; column < table.fields.size(); ++column) {
        const std::string& name = table.fields[column].name;
        std::optional<size_t> outputField;
        if (model.Output() != nullptr) {
            const auto& fields = model.Output()->fields;
            for (size_t i = 0; i < fields.size(); ++i) {
                if (fields[i].name == name) outputField = i;
            }
        }
        if (outputField || (target != nullptr && target->GetName() == name)) {
            comparisons.push_back({column, outputField});
        } else if (model.Model().GetDictionary()->GetVar(name) == nullptr) {
            VSException refusal(gErrorFormater);
            refusal.PutErrorMessage(kVerificationField, name.c_str(), model.File().c_str());
            refusal.SetPlace(table.fields[column].place);
            throw DocumentFailure(refusal, model.File());
        }
    }
    return comparisons;
}

bool Agrees(const OutputCell& found, const std::string& expected,
            const VerificationTable::Field& field)
{
    if (expected.empty() || found.kind == OutputCell::Missing) {
        return expected.empty() && found.kind == OutputCell::Missing;
    }
    if (found.kind == OutputCell::Text) return found.text == expected;
    double number = 0.0;
    return ReadNumber(expected, number) == NumberText::Number &&
           AgreesWith(found.number, number, field);
}

// Scores records one by one, keeping what the model and the output fields made of the last one.
class RecordScorer {
public:
    RecordScorer(LoadedModel& model, CaseScorer& scorer)
        : scorer_(scorer), target_(TargetOf(model.Model().GetTargetVar()))
    {
        if (model.Output() != nullptr) {
            output_.emplace(*model.Output(), model.Model(), model.Description());
        }
    }

    CaseStatus Score(std::span<const std::string_view> fields)
    {
        const CaseStatus status = scorer_.Score(fields);
        predicted_.SetMissing();
        if (status.IsOK()) {
            if (output_) cells_ = output_->Evaluate(scorer_.Record(), scorer_.Result());
            predicted_ = PredictedValue(scorer_.Result(), target_);
        } else if (output_) {
            cells_ = output_->EvaluateDefaults();
        }
        return status;
    }
    const OutputCell& Predicted() const { return predicted_; }
    std::span<const OutputCell> OutputCells() const { return cells_; }

private:
    CaseScorer& scorer_;
    const TargetDeclaration* target_;
    std::optional<OutputEvaluator> output_;
    std::span<const OutputCell> cells_;
    OutputCell predicted_;
};

std::string TextOf(const OutputCell& cell)
{
    std::string text;
    if (cell.kind == OutputCell::Number) AppendNumber(cell.number, text);
    if (cell.kind == OutputCell::Text) text = cell.text;
    return text;
}

}  // namespace

bool AgreesWith(double found, double expected, const VerificationTable::Field& field)
{
    if (std::fabs(expected) <= field.zeroThreshold) return std::fabs(found) <= field.zeroThreshold;
    return std::fabs(found - expected) <= field.precision * std::fabs(expected);
}

VerificationReport Verify(LoadedModel& model, const VerificationTable& table)
{
    const std::vector<Comparison> comparisons = ComparisonsOf(model, table);
    std::vector<std::string> header;
    for (const auto& field : table.fields) header.push_back(field.name);
    CaseScorer cases(model, header, "ModelVerification");
    RecordScorer scorer(model, cases);

    VerificationReport report;
    std::vector<std::string_view> fields(header.size());
    for (const std::vector<std::string>& record : table.records) {
        ++report.records;
        std::copy(record.begin(), record.end(), fields.begin());
        const CaseStatus status = scorer.Score(fields);
        for (const Comparison& comparison : comparisons) {
            ++report.compared;
            const VerificationTable::Field& field = table.fields[comparison.column];
            const std::string& expected = record[comparison.column];
            const OutputCell& found = comparison.outputField
                                          ? scorer.OutputCells()[*comparison.outputField]
                                          : scorer.Predicted();
            if (Agrees(found, expected, field)) continue;
            report.differences.push_back(
                {report.records, field.name, expected, TextOf(found), field.precision, status.code,
                 std::string(status.FieldName()), std::optional<std::string>(status.text)});
        }
    }
    return report;
}

MadeVerification MakeVerification(LoadedModel& model, ByteSource& cases,
                                  const VerificationOptions& options)
{
    constexpr double kPrecision = 1e-9;
    CsvReader reader(cases, options.delimiter);
    CaseScorer rows(model, reader.Header(), cases.Name(), options.decimal, options.missingTexts);
    RecordScorer scorer(model, rows);
    MadeVerification made;
    const ScoreDictVar* target = model.Model().GetTargetVar();
    // A residual reads the target's column; the records have the predicted value under that name.
    std::vector<size_t> inputs;
    const std::vector<std::string> names = rows.Preparer().InputNames();
    for (size_t i = 0; i < names.size(); ++i) {
        if (target != nullptr && names[i] == target->GetName()) continue;
        inputs.push_back(i);
        made.table.fields.push_back({names[i]});
    }
    if (target != nullptr) made.table.fields.push_back({target->GetName(), kPrecision});
    std::vector<size_t> outputs;
    if (model.Output() != nullptr) {
        const auto& fields = model.Output()->fields;
        for (size_t i = 0; i < fields.size(); ++i) {
            if (fields[i].feature == OutputField::Feature::Residual) continue;
            outputs.push_back(i);
            made.table.fields.push_back({fields[i].name, kPrecision});
        }
    }
    std::span<const std::string_view> fields;
    while (reader.Next(fields)) {
        if (!scorer.Score(fields).IsOK()) {
            ++made.leftOut;
            continue;
        }
        if (static_cast<int64_t>(made.table.records.size()) == kMostRecords) {
            throw Failure(FailureKind::Cases, kTooManyRecords,
                          {cases.Name(), std::to_string(kMostRecords)});
        }
        std::vector<std::string> texts = rows.Preparer().InputTexts(fields);
        std::vector<std::string> record;
        record.reserve(inputs.size() + 1 + outputs.size());
        for (const size_t i : inputs) record.push_back(std::move(texts[i]));
        if (target != nullptr) record.push_back(TextOf(scorer.Predicted()));
        for (const size_t i : outputs) record.push_back(TextOf(scorer.OutputCells()[i]));
        made.table.records.push_back(std::move(record));
    }
    return made;
}

}  // namespace MCVelscore_850
