#include "engine/scoring/verification.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <span>
#include <string_view>

#include "engine/documents/loadedmodel.h"
#include "engine/documents/outputfield.h"
#include "engine/messages/failure.h"
#include "engine/scoring/outputevaluator.h"
#include "engine/scoring/tablescorer.h"
#include "engine/tables/bytesource.h"
#include "engine/tables/columnblock.h"
#include "engine/tables/rowreader.h"
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

// What the model and the output fields make of a case.
class CaseValues {
public:
    explicit CaseValues(const LoadedModel& model) : target_(TargetOf(model.Model().GetTargetVar()))
    {
        if (model.Output() != nullptr) {
            output_.emplace(*model.Output(), model.Model(), model.Description());
        }
    }

    /// `result` is null for a case without a score.
    void Take(const CaseRecord& record, const ScoreResult* result)
    {
        predicted_.SetMissing();
        if (result != nullptr) {
            if (output_) cells_ = output_->Evaluate(record, *result);
            predicted_ = PredictedValue(*result, target_);
        } else if (output_) {
            cells_ = output_->EvaluateDefaults();
        }
    }
    const OutputCell& Predicted() const { return predicted_; }
    std::span<const OutputCell> OutputCells() const { return cells_; }

private:
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

VerificationReport Verify(const LoadedModel& model, const VerificationTable& table)
{
    const std::vector<Comparison> comparisons = ComparisonsOf(model, table);
    std::vector<std::string> header;
    for (const auto& field : table.fields) header.push_back(field.name);
    TableScorer scorer(model, header, "ModelVerification");
    CaseValues values(model);
    TextRows rows(header.size());

    VerificationReport report;
    std::vector<std::string_view> fields(header.size());
    for (const std::vector<std::string>& record : table.records) {
        ++report.records;
        std::copy(record.begin(), record.end(), fields.begin());
        const auto compare = [&](size_t, const CaseStatus& status, const CaseRecord& caseRecord,
                                 const ScoreResult* result) {
            values.Take(caseRecord, result);
            for (const Comparison& comparison : comparisons) {
                ++report.compared;
                const VerificationTable::Field& field = table.fields[comparison.column];
                const std::string& expected = record[comparison.column];
                const OutputCell& found = comparison.outputField
                                              ? values.OutputCells()[*comparison.outputField]
                                              : values.Predicted();
                if (Agrees(found, expected, field)) continue;
                report.differences.push_back({report.records, field.name, expected, TextOf(found),
                                              field.precision, status.code,
                                              std::string(status.FieldName()),
                                              std::optional<std::string>(status.text)});
            }
            return true;
        };
        scorer.VisitCases(rows.Block(fields), compare);
    }
    return report;
}

MadeVerification MakeVerification(const LoadedModel& model, ByteSource& cases,
                                  const VerificationOptions& options)
{
    constexpr double kPrecision = 1e-9;
    RowReader reader(cases, options.delimiter);
    TableScorer scorer(model, reader.Header(), cases.Name(),
                       {.decimal = options.decimal, .missingTexts = options.missingTexts});
    CaseValues values(model);
    TextRows rows(reader.Header().size());
    MadeVerification made;
    const ScoreDictVar* target = model.Model().GetTargetVar();
    // A residual reads the target's column; the records have the predicted value under that name.
    std::vector<size_t> inputs;
    const std::vector<std::string> names = scorer.Preparer().InputNames();
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
    ColumnBlock block;
    const auto take = [&](size_t row, const CaseStatus& status, const CaseRecord& caseRecord,
                          const ScoreResult* result) {
        if (!status.IsOK()) {
            ++made.leftOut;
            return true;
        }
        values.Take(caseRecord, result);
        if (static_cast<int64_t>(made.table.records.size()) == kMostRecords) {
            throw Failure(FailureKind::Cases, kTooManyRecords,
                          {cases.Name(), std::to_string(kMostRecords)});
        }
        std::vector<std::string> texts = scorer.Preparer().InputTexts(block, row);
        std::vector<std::string> record;
        record.reserve(inputs.size() + outputs.size() + 1);
        for (const size_t i : inputs) record.push_back(std::move(texts[i]));
        if (target != nullptr) record.push_back(TextOf(values.Predicted()));
        for (const size_t i : outputs) record.push_back(TextOf(values.OutputCells()[i]));
        made.table.records.push_back(std::move(record));
        return true;
    };
    std::span<const std::string_view> fields;
    while (reader.NextRows(TableScorer::kRows, fields) > 0) {
        block = rows.Block(fields);
        scorer.VisitCases(block, take);
    }
    return made;
}

}  // namespace MCVelscore_850
