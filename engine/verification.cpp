#include "engine/verification.h"

#include <cmath>
#include <memory>
#include <optional>
#include <string_view>

#include "engine/casepreparer.h"
#include "engine/failure.h"
#include "engine/loadedmodel.h"
#include "engine/outputevaluator.h"
#include "engine/outputfield.h"
#include "host/messages.h"
#include "host/numbertext.h"
#include "host/scoremodel.h"
#include "host/scoreresult.h"

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
            throw Failure(FailureKind::Document, kVerificationField, {name, model.File()});
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
    CaseOptions options;
    if (model.Output() != nullptr) options.alsoRead = model.Output()->inputs;
    CasePreparer preparer(model.Model(), model.Description(), model.Treatments(), header,
                          "ModelVerification", options);
    std::optional<OutputEvaluator> output;
    if (model.Output() != nullptr) output.emplace(*model.Output(), model.Model());
    const TargetDeclaration* target = TargetOf(model.Model().GetTargetVar());

    VerificationReport report;
    ScoreResult* result = nullptr;
    const std::unique_ptr<ScoreResult*, void (*)(ScoreResult**)> releases(
        &result, [](ScoreResult** last) { delete *last; });
    std::vector<std::string_view> fields(header.size());
    for (const std::vector<std::string>& record : table.records) {
        ++report.records;
        for (size_t i = 0; i < fields.size(); ++i) fields[i] = record[i];
        long status = preparer.Prepare(fields).code;
        if (status == 0) {
            status = model.Model().GetScore(&preparer.Record(), result, true).GetErrorCode();
        }
        std::span<const OutputCell> cells;
        OutputCell predicted;
        if (status == 0) {
            if (output) cells = output->Evaluate(preparer.Record(), *result);
            predicted = PredictedValue(*result, target);
        } else if (output) {
            cells = output->EvaluateDefaults();
        }
        for (const Comparison& comparison : comparisons) {
            ++report.compared;
            const VerificationTable::Field& field = table.fields[comparison.column];
            const std::string& expected = record[comparison.column];
            const OutputCell& found =
                comparison.outputField ? cells[*comparison.outputField] : predicted;
            if (Agrees(found, expected, field)) continue;
            report.differences.push_back(
                {report.records, field.name, expected, TextOf(found), field.precision, status});
        }
    }
    return report;
}

}  // namespace MCVelscore_850
