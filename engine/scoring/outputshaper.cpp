#include "engine/scoring/outputshaper.h"

#include <algorithm>
#include <stdexcept>
#include <unordered_map>
#include <unordered_set>

#include "engine/messages/failure.h"
#include "engine/messages/suggestions.h"
#include "engine/scoring/resultnumber.h"
#include "engine/tables/csvwriter.h"
#include "host/messages/messages.h"
#include "host/model/scoremodel.h"
#include "host/model/scoreresult.h"
#include "host/values/stringvalue.h"
#include "models/coxregresult.h"
#include "models/lrresult.h"

namespace MCVelscore_850 {

namespace {

constexpr size_t kNoPercent = static_cast<size_t>(-1);

void WriteValue(CsvWriter& writer, const ScoreValue* value)
{
    if (value == nullptr) {
        writer.AddEmpty();
    } else if (value->GetValueType() == ScoreValue::STRING) {
        writer.AddText(static_cast<const StringValue*>(value)->Text());
    } else {
        WriteResultNumber(writer, value->GetDouble());
    }
}

void WriteCell(CsvWriter& writer, const OutputCell& cell)
{
    switch (cell.kind) {
        case OutputCell::Missing: writer.AddEmpty(); break;
        case OutputCell::Number: writer.AddNumber(cell.number); break;
        case OutputCell::Text: writer.AddText(cell.text); break;
    }
}

std::vector<std::string> FieldNames(const OutputSection& section)
{
    std::vector<std::string> names;
    for (const OutputField& field : section.fields) names.push_back(field.name);
    return names;
}

std::vector<std::string> ResultColumns(int resultType, const std::vector<std::string>& categories,
                                       bool predictionOnly)
{
    std::vector<std::string> columns{"prediction"};
    switch (resultType) {
        case ScoreResult::LR_RESULT:
            if (!predictionOnly) columns.insert(columns.end(), {"std_dev", "ci_lower", "ci_upper"});
            break;
        case ScoreResult::MLR_RESULT:
            for (const std::string& category : categories) {
                if (!predictionOnly) columns.push_back("probability(" + category + ")");
            }
            break;
        case ScoreResult::COXREG_RESULT:
            if (!predictionOnly) columns.push_back("cum_hazard");
            break;
        default: break;
    }
    return columns;
}

}  // namespace

OutputShaper::OutputShaper(const ModelDescription& description, std::span<const std::string> header,
                           const std::string& tableName, const OutputOptions& options,
                           const DocumentOutput& document)
    : resultType_(description.resultType),
      predictionOnly_(options.predictionOnly),
      document_(document),
      errorAndLimits_(description)
{
    if (resultType_ == ScoreResult::MLR_RESULT) categories_ = description.targetCategories;
    std::vector<std::string> results =
        document.fields == nullptr ? ResultColumns(resultType_, categories_, predictionOnly_)
                                   : FieldNames(*document.section);
    resultColumns_ = results.size();
    results.insert(results.end(), {"status", "status_field"});

    std::vector<std::string> keep = options.keep;
    if (options.keepAll) keep.assign(header.begin(), header.end());
    std::unordered_map<std::string_view, size_t> positions;
    std::unordered_set<std::string_view> twice;
    for (size_t i = 0; i < header.size(); ++i) {
        if (!positions.emplace(header[i], i).second) twice.insert(header[i]);
    }
    const std::unordered_set<std::string_view> wanted(keep.begin(), keep.end());
    std::unordered_set<std::string> given(results.begin(), results.end());
    for (const std::string& name : keep) {
        const auto found = positions.find(name);
        if (found == positions.end()) {
            throw Failure(FailureKind::Usage, kUnknownKeptColumn, {name, tableName},
                          SuggestWord(name, header));
        }
        if (twice.contains(name)) {
            throw Failure(FailureKind::Cases, kDuplicateColumn, {tableName, name});
        }
        kept_.push_back(found->second);
        std::string column = name;
        while (given.contains(column) || (column != name && wanted.contains(column))) {
            column.insert(0, "input.");
        }
        given.insert(column);
        columns_.push_back(std::move(column));
    }
    columns_.insert(columns_.end(), results.begin(), results.end());
}

void OutputShaper::WriteHeader(CsvWriter& writer) const
{
    for (const std::string& column : columns_) writer.AddText(column);
    writer.EndRow();
}

void OutputShaper::WriteScored(CsvWriter& writer, std::span<const std::string_view> fields,
                               const ScoreCaseRecord& record, const ScoreResult& result)
{
    if (result.GetScoreResultType() != resultType_) {
        throw std::logic_error("the model's result isn't of the kind that its description tells");
    }
    WriteKept(writer, fields);
    if (document_.fields != nullptr) {
        for (const OutputCell& cell : document_.fields->Evaluate(record, result)) {
            WriteCell(writer, cell);
        }
    } else {
        WriteOwnColumns(writer, result);
    }
    writer.AddText("0");
    writer.AddEmpty();
    writer.EndRow();
}

void OutputShaper::WriteOwnColumns(CsvWriter& writer, const ScoreResult& result)
{
    if (document_.target != nullptr && resultType_ == ScoreResult::LR_RESULT) {
        WriteCell(writer, PredictedValue(result, document_.target));
    } else {
        WriteValue(writer, result.GetPrediction());
    }
    if (!predictionOnly_) {
        switch (resultType_) {
            case ScoreResult::LR_RESULT: {
                const auto& linear = static_cast<const LRResult&>(result);
                WriteResultNumber(writer, errorAndLimits_.StdDev(linear));
                WriteResultNumber(writer, errorAndLimits_.Lower(linear));
                WriteResultNumber(writer, errorAndLimits_.Upper(linear));
                break;
            }
            case ScoreResult::MLR_RESULT:
                WritePercents(writer, static_cast<const ScoreClsResult&>(result));
                break;
            case ScoreResult::COXREG_RESULT:
                WriteResultNumber(writer,
                                  static_cast<const CoxRegResult&>(result).GetCumHazardValue());
                break;
            default: break;
        }
    }
}

void OutputShaper::WriteNotScored(CsvWriter& writer, std::span<const std::string_view> fields,
                                  long code, std::string_view field) const
{
    WriteKept(writer, fields);
    if (document_.fields != nullptr) {
        for (const OutputCell& cell : document_.fields->EvaluateDefaults()) {
            WriteCell(writer, cell);
        }
    } else {
        for (size_t i = 0; i < resultColumns_; ++i) writer.AddEmpty();
    }
    writer.AddText(std::to_string(code));
    writer.AddText(field);
    writer.EndRow();
}

void OutputShaper::WriteKept(CsvWriter& writer, std::span<const std::string_view> fields) const
{
    for (const size_t position : kept_) writer.AddText(fields[position]);
}

// Results keep the order of their entries from case to case, so where the categories stand is
// looked up again only when the entry at a place isn't the category.
void OutputShaper::WritePercents(CsvWriter& writer, const ScoreClsResult& result)
{
    const ScoreClsResult::ValuePercents& percents = result.GetAllValuePercent();
    const auto isCategory = [](const ScoreValue& value, const std::string& category) {
        return value.Kind() == ScoreValue::STRING
                   ? static_cast<const StringValue&>(value).Text() == category
                   : value.GetString() == category;
    };
    bool inPlace = percentOfCategory_.size() == categories_.size();
    for (size_t i = 0; inPlace && i < categories_.size(); ++i) {
        const size_t place = percentOfCategory_[i];
        inPlace = place < percents.size() && isCategory(*percents[place].first, categories_[i]);
    }
    if (!inPlace) {
        std::unordered_map<std::string, size_t> places;
        for (size_t i = 0; i < percents.size(); ++i) {
            places.emplace(percents[i].first->GetString(), i);
        }
        percentOfCategory_.assign(categories_.size(), kNoPercent);
        for (size_t i = 0; i < categories_.size(); ++i) {
            const auto found = places.find(categories_[i]);
            if (found != places.end()) percentOfCategory_[i] = found->second;
        }
    }
    for (const size_t place : percentOfCategory_) {
        if (place == kNoPercent) {
            writer.AddEmpty();
        } else {
            WriteResultNumber(writer, percents[place].second);
        }
    }
}

}  // namespace MCVelscore_850
