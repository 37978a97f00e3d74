#include "engine/scoring/blockroad.h"

#include <algorithm>
#include <bit>
#include <unordered_set>

#include "engine/tables/columnblock.h"
#include "host/messages/scoringlog.h"
#include "host/model/scoremodel.h"
#include "host/values/datetimevalue.h"
#include "host/values/numbertext.h"
#include "host/values/numericvalue.h"
#include "host/values/stringvalue.h"

namespace MCVelscore_850 {

namespace {

// A value as its variable's column has it; false for a missing one.
bool NumberOf(const ScoreValue& value, const ScoreDictVar& var, double& number)
{
    if (NumericValue::IsSystemMissingValue(value.GetDouble())) return false;
    number = value.Kind() == ScoreValue::DATETIME
                 ? static_cast<const DateTimeValue&>(value).GetDoubleValue(var.GetDateTimeType())
                 : value.GetDouble();
    return true;
}

}  // namespace

std::unique_ptr<BlockRoad> BlockRoad::Make(const ScoreModel& model,
                                           const std::vector<std::string>& modelReads,
                                           std::string_view notRead, CasePreparer& preparer)
{
    // A trace has its lines for each case.
    if (ScoringLog::GetInstance()->IsOn(1)) return nullptr;
    std::unique_ptr<BatchScorer> scorer = model.MakeBatchScorer();
    if (scorer == nullptr) return nullptr;
    std::unique_ptr<BlockRoad> road(new BlockRoad(std::move(scorer), preparer));
    return road->FindInputs(modelReads, notRead) ? std::move(road) : nullptr;
}

BlockRoad::BlockRoad(std::unique_ptr<BatchScorer> scorer, CasePreparer& preparer)
    : scorer_(std::move(scorer)), scratch_(scorer_->MakeScratch()), preparer_(preparer)
{}

BlockRoad::~BlockRoad() = default;

bool BlockRoad::FindInputs(const std::vector<std::string>& modelReads, std::string_view notRead)
{
    const std::span<CaseField> fields = preparer_.Fields();
    for (const ScoreDictVar* var : scorer_->Inputs()) {
        const std::string& name = var->GetName();
        Input& input = inputs_.emplace_back();
        input.var = var;
        input.position = preparer_.Record().GetVarIndex(name);
        if (input.IsRead() != (name != notRead)) return false;
        // In the record the fields come first.
        const auto position = static_cast<size_t>(input.position);
        if (input.IsRead() && position < fields.size()) input.field = &fields[position];
        if (input.IsText()) {
            input.codes.assign(BatchScorer::kRows, -1);
        } else {
            input.numbers.assign(BatchScorer::kRows, 0.0);
        }
    }
    columns_.resize(inputs_.size());
    std::unordered_set<std::string_view> names;
    for (const Input& input : inputs_) names.insert(input.var->GetName());
    fromCases_ = preparer_.HasDerived();
    for (const CaseField& field : fields) fromCases_ = fromCases_ || !names.contains(field.Name());
    for (const std::string& name : modelReads) {
        const ScoreDictVar* var = preparer_.FindVar(name);
        if (var == nullptr || names.contains(name)) continue;
        judged_.push_back({var, preparer_.Record().GetVarIndex(name)});
    }
    return true;
}

void BlockRoad::Score(const ColumnBlock& block, const BatchResults& results, RowBits& unsure)
{
    for (size_t i = 0; i < inputs_.size(); ++i) {
        columns_[i] = {};
        if (inputs_[i].IsText()) {
            columns_[i].codes = inputs_[i].codes.data();
        } else {
            columns_[i].numbers = inputs_[i].numbers.data();
        }
    }
    const auto noted = static_cast<std::ptrdiff_t>(preparer_.Unlisted().size());
    if (fromCases_) {
        FillFromCases(block, unsure);
    } else {
        FillFromTable(block, unsure);
    }
    BindNewTexts();
    RowBits left{};
    scorer_->Score(columns_, block.rows, results, left.data(), *scratch_);
    for (size_t i = 0; i < unsure.size(); ++i) unsure[i] |= left[i];
    // What an unsure row holds is noted when it goes alone.
    std::vector<UnlistedValue>& values = preparer_.Unlisted();
    values.erase(
        std::remove_if(values.begin() + noted, values.end(),
                       [&](const UnlistedValue& value) { return HasRow(unsure, value.row); }),
        values.end());
}

void BlockRoad::FillFromTable(const ColumnBlock& block, RowBits& unsure)
{
    for (size_t i = 0; i < inputs_.size(); ++i) {
        Input& input = inputs_[i];
        if (!input.IsRead()) continue;
        const TableColumn& column = block.columns[input.field->Column()];
        if (input.IsText()) {
            FillCodes(input, block, unsure);
        } else if (column.numbers != nullptr && input.field->TakesNumbersAsTheyAre() &&
                   block.rows % BatchScorer::kRowMultiple == 0) {
            columns_[i] = {.numbers = column.numbers, .present = column.present};
        } else {
            FillNumbers(input, block, unsure);
        }
    }
}

void BlockRoad::FillNumbers(Input& input, const ColumnBlock& block, RowBits& unsure)
{
    CaseField& field = *input.field;
    const TableColumn& column = block.columns[field.Column()];
    const bool mayBeSure = field.ValueKind() == CaseField::Kind::Number;
    const bool isText = column.numbers == nullptr;
    const auto read = [&](size_t row) {
        double& number = input.numbers[row];
        if (ReadNumber(input, block, row, number)) return;
        number = 0.0;
        AddRow(unsure, row);
    };
    if (mayBeSure && isText) {
        RowBits unread{};
        field.ReadSurely(column, block.rows, input.numbers.data(), unread);
        for (size_t word = 0; word < unread.size(); ++word) {
            for (uint64_t left = unread[word]; left != 0; left &= left - 1) {
                read(word * 64 + static_cast<size_t>(std::countr_zero(left)));
            }
        }
        return;
    }
    for (size_t row = 0; row < block.rows; ++row) {
        if (mayBeSure && column.IsPresent(row) && field.IsSure(column.numbers[row])) {
            input.numbers[row] = column.numbers[row];
        } else {
            read(row);
        }
    }
}

bool BlockRoad::ReadNumber(const Input& input, const ColumnBlock& block, size_t row, double& number)
{
    CaseField& field = *input.field;
    bool unlisted = false;
    if (field.Set(block.columns[field.Column()], row, unlisted) != 0) return false;
    if (!NumberOf(field.Value(), *input.var, number)) return false;
    if (unlisted) preparer_.NoteUnlisted(field, block, row);
    return true;
}

void BlockRoad::FillCodes(Input& input, const ColumnBlock& block, RowBits& unsure)
{
    for (size_t row = 0; row < block.rows; ++row) {
        int32_t& code = input.codes[row];
        code = -1;
        if (!ReadCode(input, block, row, code)) AddRow(unsure, row);
    }
}

bool BlockRoad::ReadCode(Input& input, const ColumnBlock& block, size_t row, int32_t& code)
{
    CaseField& field = *input.field;
    const TableColumn& column = block.columns[field.Column()];
    std::string_view text;
    if (column.numbers == nullptr) {
        text = column.Text(row);
    } else if (column.IsPresent(row)) {
        numberText_.clear();
        AppendNumber(column.numbers[row], numberText_);
        text = numberText_;
    }
    const auto found = input.meanings.find(text);
    const Meaning* meaning = found == input.meanings.end() ? nullptr : &found->second;
    if (meaning == nullptr) {
        bool unlisted = false;
        const bool read = field.Set(column, row, unlisted) == 0;
        meaning = Learn(input, text, read ? &field.Value() : nullptr, unlisted);
    }
    if (meaning == nullptr || meaning->unsure) return false;
    if (meaning->unlisted) preparer_.NoteUnlisted(field, block, row);
    code = meaning->code;
    return true;
}

const BlockRoad::Meaning* BlockRoad::Learn(Input& input, std::string_view text,
                                           const ScoreValue* value, bool unlisted)
{
    if (input.meanings.size() == kMostTexts || input.textBytes + text.size() > kMostTextBytes) {
        return nullptr;
    }
    input.textBytes += text.size();
    Meaning& meaning = input.meanings[std::string(text)];
    if (value == nullptr || value->Kind() != ScoreValue::STRING) return &meaning;
    const auto& read = static_cast<const StringValue&>(*value);
    if (read.IsMissingText()) return &meaning;
    meaning.unsure = false;
    meaning.unlisted = unlisted;
    meaning.code = static_cast<int32_t>(input.texts.size());
    input.texts.push_back(input.values.emplace_back(read.Text()));
    return &meaning;
}

void BlockRoad::FillFromCases(const ColumnBlock& block, RowBits& unsure)
{
    for (size_t row = 0; row < block.rows; ++row) {
        if (!HasRow(unsure, row) && preparer_.PrepareSurely(block, row) && ReadCase(row)) continue;
        AddRow(unsure, row);
    }
}

bool BlockRoad::ReadCase(size_t row)
{
    const CaseRecord& record = preparer_.Record();
    for (const Judged& judged : judged_) {
        if (!judged.var->Accepts(record.GetValue(judged.position))) return false;
    }
    for (Input& input : inputs_) {
        if (!input.IsRead()) continue;
        const ScoreValue* value = record.GetValue(input.position);
        if (value == nullptr || (value->Kind() == ScoreValue::STRING) != input.IsText()) {
            return false;
        }
        if (!input.IsText()) {
            if (!NumberOf(*value, *input.var, input.numbers[row])) return false;
            continue;
        }
        const auto& read = static_cast<const StringValue&>(*value);
        if (read.IsMissingText()) return false;
        const std::string& text = read.Text();
        const auto found = input.meanings.find(text);
        const Meaning* meaning =
            found == input.meanings.end() ? Learn(input, text, value, false) : &found->second;
        if (meaning == nullptr || meaning->unsure) return false;
        input.codes[row] = meaning->code;
    }
    return true;
}

void BlockRoad::BindNewTexts()
{
    for (size_t i = 0; i < inputs_.size(); ++i) {
        Input& input = inputs_[i];
        if (input.boundTexts == input.texts.size()) continue;
        scorer_->BindTexts(i, input.texts, *scratch_);
        input.boundTexts = input.texts.size();
    }
}

}  // namespace MCVelscore_850
