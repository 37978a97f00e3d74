#include "models/blockscorer.h"

#include <algorithm>
#include <cstring>

#include "host/values/datetimetext.h"
#include "host/values/datetimevalue.h"
#include "host/values/numericvalue.h"
#include "host/values/stringvalue.h"
#include "host/variables/catencoder.h"
#include "host/variables/scoredictvar.h"
#include "models/pcovmatrix.h"

namespace MCVelscore_850 {

namespace {

constexpr size_t kRowsOfBlock = kernels::kBlockRows;
static_assert(BatchScorer::kRows == kRowsOfBlock);
static_assert(BatchScorer::kRowMultiple == kernels::kLargestWidth);

// Of a column that says which rows are.
bool IsPresent(const BatchColumn& column, size_t row)
{
    return ((column.present[row / 8] >> (row % 8)) & 1) != 0;
}

// True when the variable takes the number of a column for a good value.
bool AcceptsNumber(const ScoreDictVar& var, double number)
{
    if (var.SurelyAccepts(number)) return true;
    if (var.GetValueType() == ScoreDictVar::DATETIME) {
        const double shift = OriginShift(var.GetDateTimeType());
        const DateTimeValue value(number - shift);
        // A number that the way to its origin and back changes isn't judged here.
        return value.GetDoubleValue(var.GetDateTimeType()) == number && var.Accepts(&value);
    }
    const NumericValue value(number);
    return var.Accepts(&value);
}

}  // namespace

// Of one slot and one thread.
struct BlockScorer::Tables {
    std::vector<int32_t> codes;   // by text
    std::vector<double> numbers;  // by text
    alignas(64) int32_t codeColumn[kRowsOfBlock] = {};
    alignas(64) double numberColumn[kRowsOfBlock] = {};
};

class BlockScorer::Own final : public Scratch {
public:
    std::vector<std::unique_ptr<Tables>> slots;
    std::vector<const double*> numbers;  // by slot, as kernels take them
    std::vector<const int32_t*> codes;
    std::vector<double> work;
};

size_t BlockScorer::InputOf(const ScoreDictVar& var)
{
    const auto known = std::find(inputs_.begin(), inputs_.end(), &var);
    const auto index = static_cast<size_t>(known - inputs_.begin());
    if (known == inputs_.end()) inputs_.push_back(&var);
    return index;
}

size_t BlockScorer::AddNumber(const ScoreDictVar& var, NumberOf ofText)
{
    slots_.push_back({InputOf(var), false, nullptr, std::move(ofText)});
    return slots_.size() - 1;
}

size_t BlockScorer::AddCode(const ScoreDictVar& var, CodeOf code)
{
    slots_.push_back({InputOf(var), true, std::move(code), nullptr});
    return slots_.size() - 1;
}

bool BlockScorer::AddPredictors(const TermPlan& plan,
                                std::span<const ScoreDictVar* const> variables)
{
    for (size_t k = 0; k < variables.size(); ++k) {
        if (variables[k] == nullptr) return false;
        const ScoreDictVar& var = *variables[k];
        switch (plan.readings[k]) {
            case TermPlan::Reading::Number:
                AddNumber(var, [](const ScoreValue& text) { return text.GetDouble(); });
                break;
            case TermPlan::Reading::FactorNumber:
                // Values of another kind equal no number.
                if (var.GetValueType() != ScoreDictVar::NUMERIC) return false;
                AddNumber(var);
                break;
            case TermPlan::Reading::Code: {
                const int32_t other = plan.codeCounts[k];
                AddCode(var, [&codes = plan.codes[k], other](const ScoreValue& value) {
                    const int32_t code = codes.Find(&value);
                    return code == CategoryCodes::kNone ? other : code;
                });
                break;
            }
        }
    }
    return true;
}

bool BlockScorer::AddNumberedPredictors(const TermPlan& plan,
                                        std::span<const ScoreDictVar* const> variables)
{
    for (size_t k = 0; k < variables.size(); ++k) {
        if (variables[k] == nullptr) return false;
        const CatEncoder* encoder = variables[k]->GetCatEncoder();
        const auto position = [encoder](const ScoreValue& text) {
            return encoder == nullptr ? -1 : encoder->EncodeValue(&text);
        };
        if (plan.readings[k] == TermPlan::Reading::Code) {
            const int32_t other = plan.codeCounts[k];
            AddCode(*variables[k], [position, other](const ScoreValue& text) {
                return std::min(position(text), other);
            });
        } else {
            AddNumber(*variables[k], [position](const ScoreValue& text) -> std::optional<double> {
                const int at = position(text);
                if (at < 0) return std::nullopt;
                return at;
            });
        }
    }
    return true;
}

std::unique_ptr<BatchScorer::Scratch> BlockScorer::MakeScratch() const
{
    auto own = std::make_unique<Own>();
    for (size_t i = 0; i < slots_.size(); ++i) own->slots.push_back(std::make_unique<Tables>());
    own->numbers.resize(slots_.size());
    own->codes.resize(slots_.size());
    own->work.resize(WorkColumns() * kRowsOfBlock);
    return own;
}

void BlockScorer::BindTexts(size_t input, std::span<const std::string_view> texts,
                            Scratch& scratch) const
{
    auto& own = static_cast<Own&>(scratch);
    StringValue value("");
    for (size_t i = 0; i < slots_.size(); ++i) {
        const Slot& slot = slots_[i];
        if (slot.input != input) continue;
        Tables& tables = *own.slots[i];
        tables.codes.assign(texts.size(), kUnsure);
        tables.numbers.assign(slot.isCode ? 0 : texts.size(), 0.0);
        for (size_t t = 0; t < texts.size(); ++t) {
            value.Assign(texts[t]);
            if (!inputs_[input]->Accepts(&value)) continue;
            if (slot.isCode) {
                tables.codes[t] = slot.code(value);
            } else if (const auto number = slot.number(value)) {
                tables.codes[t] = 0;
                tables.numbers[t] = *number;
            }
        }
    }
}

void BlockScorer::Score(std::span<const BatchColumn> inputs, size_t rows,
                        const BatchResults& results, uint64_t* unsure, Scratch& scratch) const
{
    auto& own = static_cast<Own&>(scratch);
    std::fill_n(unsure, kRows / 64, 0);
    const Block block{
        {own.numbers.data(), own.codes.data(), rows}, rows, results, unsure, own.work.data()};
    for (size_t i = 0; i < inputs.size(); ++i) JudgeNumbers(i, inputs[i], rows, block);
    for (size_t i = 0; i < slots_.size(); ++i) {
        Tables& tables = *own.slots[i];
        const BatchColumn& column = inputs[slots_[i].input];
        FillSlot(slots_[i], column, rows, tables, block);
        const bool given = !slots_[i].isCode && column.numbers != nullptr;
        own.numbers[i] = given ? column.numbers : tables.numberColumn;
        own.codes[i] = tables.codeColumn;
    }
    Compute(block);
}

// Leaves the rows whose value is absent or isn't a good one.
void BlockScorer::JudgeNumbers(size_t input, const BatchColumn& column, size_t rows,
                               const Block& block) const
{
    if (column.present != nullptr) {
        for (size_t row = 0; row < rows; ++row) {
            if (!IsPresent(column, row)) block.Leave(row);
        }
    }
    if (column.numbers == nullptr) return;
    const ScoreDictVar& var = *inputs_[input];
    const ScoreDictVar::SureRange sure = var.GetSureRange();
    if (kernels_.within(column.numbers, sure.low, sure.high, sure.wholeAlone, rows)) return;
    for (size_t row = 0; row < rows; ++row) {
        if (!AcceptsNumber(var, column.numbers[row])) block.Leave(row);
    }
}

void BlockScorer::FillSlot(const Slot& slot, const BatchColumn& column, size_t rows, Tables& tables,
                           const Block& block) const
{
    if (column.numbers != nullptr) {
        if (!slot.isCode) return;
        const ScoreDictVar& var = *inputs_[slot.input];
        const bool isDate = var.GetValueType() == ScoreDictVar::DATETIME;
        const double shift = isDate ? OriginShift(var.GetDateTimeType()) : 0.0;
        for (size_t row = 0; row < rows; ++row) {
            const NumericValue number(column.numbers[row]);
            const DateTimeValue date(column.numbers[row] - shift);
            const int32_t code = isDate ? slot.code(date) : slot.code(number);
            if (code < 0) block.Leave(row);
            tables.codeColumn[row] = std::max(code, 0);
        }
        return;
    }
    const size_t texts = tables.codes.size();
    if (!kernels_.mapCodes(column.codes, tables.codes.data(), texts, kUnsure, tables.codeColumn,
                           rows)) {
        for (size_t row = 0; row < rows; ++row) {
            if (tables.codeColumn[row] >= 0) continue;
            block.Leave(row);
            tables.codeColumn[row] = 0;
        }
    }
    if (slot.isCode) return;
    for (size_t row = 0; row < rows; ++row) {
        const auto text = static_cast<uint32_t>(column.codes[row]);
        tables.numberColumn[row] = text < texts ? tables.numbers[text] : 0.0;
    }
}

bool BlockScorer::HasEveryContrast(const TermPlan& plan, size_t predictor, int32_t row)
{
    return std::all_of(plan.parts.begin(), plan.parts.end(), [&](const kernels::TermPart& part) {
        return part.kind != kernels::TermPart::Contrast ||
               static_cast<size_t>(part.predictor) != predictor || part.column[row] != kNoContrast;
    });
}

void BlockScorer::SumTerms(kernels::SumRule rule, const Block& block, const kernels::Terms& terms,
                           const double* betas, const CompactTerms& compact, double* lp,
                           double* design) const
{
    const auto sum = kernels_.sums[static_cast<int>(rule)];
    if (design != nullptr) {
        sum(block.columns, terms, betas, 0, lp, design);
    } else {
        sum(block.columns, compact.View(), compact.Betas(), 0, lp, nullptr);
    }
}

void BlockScorer::Give(const double* from, double* wanted, size_t rows)
{
    if (wanted != nullptr) memcpy(wanted, from, rows * sizeof *from);
}

BlockCovariances::BlockCovariances(const PCovMatrix* matrix, std::span<const double> betas,
                                   size_t firstRow)
{
    if (matrix == nullptr) return;
    cells_ = matrix->GetRow(0);  // null while nothing was written
    stride_ = matrix->GetRows();
    for (size_t p = 0; p < betas.size() && p + firstRow < stride_; ++p) {
        if (betas[p] != 0.0) met_.push_back(static_cast<uint32_t>(p + firstRow));
    }
}

void BlockCovariances::Errors(const kernels::BlockKernels& kernels, const double* design,
                              double* errors, size_t rows) const
{
    if (Exist()) {
        kernels.standardErrors(design, cells_, stride_, met_.data(), met_.size(), errors, rows);
    } else {
        std::fill_n(errors, rows, 0.0);
    }
}

void BlockCovariances::GiveErrors(const kernels::BlockKernels& kernels, const double* design,
                                  double* wanted, size_t rows) const
{
    if (wanted == nullptr) return;
    if (Exist()) {
        Errors(kernels, design, wanted, rows);
    } else {
        std::fill_n(wanted, rows, NumericValue::GetSysmisValue());
    }
}

CompactTerms::CompactTerms(const TermPlan& plan, std::span<const double> betas, size_t first,
                           std::span<const double> references)
{
    const auto reference = [&](size_t p) { return references.empty() ? 0.0 : references[p]; };
    for (size_t p = first; p < betas.size(); ++p) {
        if (betas[p] == 0.0) continue;
        if (reference(p) == 0.0 && ContinuesRun(plan, p)) {
            const kernels::TermPart& next = plan.parts[plan.begin[p]];
            std::vector<double>& table = tables_.back();
            if (parts_.back().kind == kernels::TermPart::Category) {  // the run begins here
                table[static_cast<size_t>(parts_.back().code)] = betas_.back();
                parts_.back().kind = kernels::TermPart::Dummies;
                parts_.back().column = table.data();
                betas_.back() = 1.0;
            }
            table[static_cast<size_t>(next.code)] = betas[p];
            continue;
        }
        parts_.insert(parts_.end(), plan.parts.begin() + plan.begin[p],
                      plan.parts.begin() + plan.begin[p + 1]);
        begin_.push_back(static_cast<uint32_t>(parts_.size()));
        betas_.push_back(betas[p]);
        references_.push_back(reference(p));
        // Room for a table of the factor's codes, should the next term continue this one.
        if (plan.begin[p + 1] - plan.begin[p] == 1) {
            const auto k = static_cast<size_t>(parts_.back().predictor);
            tables_.emplace_back(static_cast<size_t>(plan.codeCounts[k]) + 1, 0.0);
        }
    }
}

// True for a dummy of the factor whose dummies the last term holds, of another category.
bool CompactTerms::ContinuesRun(const TermPlan& plan, size_t parameter) const
{
    using kernels::TermPart;
    const size_t count = plan.begin[parameter + 1] - plan.begin[parameter];
    if (count != 1 || betas_.empty() || references_.back() != 0.0) return false;
    const TermPart& next = plan.parts[plan.begin[parameter]];
    if (next.kind != TermPart::Category || begin_.back() - begin_[begin_.size() - 2] != 1) {
        return false;
    }
    // Codes of cells begin at 0, and the table has room for all of the predictor's.
    const TermPart& last = parts_.back();
    if (last.predictor != next.predictor) return false;
    if (last.kind == TermPart::Category) return last.code != next.code;
    return last.kind == TermPart::Dummies && last.column[next.code] == 0.0;
}

}  // namespace MCVelscore_850
