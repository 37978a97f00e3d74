#include "engine/scoring/arrowexplanations.h"

#include <algorithm>
#include <limits>
#include <map>
#include <string_view>
#include <utility>

#include "engine/documents/loadedmodel.h"
#include "engine/scoring/explanationshaper.h"
#include "engine/tables/arrowschema.h"
#include "host/values/numericvalue.h"

namespace MCVelscore_850 {

namespace {

constexpr double kNone = std::numeric_limits<double>::quiet_NaN();

double NumberOrNone(double number)
{
    return NumericValue::IsSystemMissingValue(number) ? kNone : number;
}

// Texts that get numbers in the order in which they come first.
class NumberedTexts {
public:
    int32_t CodeOf(std::string_view text)
    {
        const auto [place, isNew] = codes_.emplace(text, static_cast<int32_t>(texts_.size()));
        if (isNew) texts_.push_back(text);
        return place->second;
    }
    ArrowTextBytes Make() const { return MakeArrowTexts(texts_); }

private:
    std::map<std::string_view, int32_t> codes_;
    std::vector<std::string_view> texts_;
};

}  // namespace

ArrowExplainedCases::ArrowExplainedCases(const LoadedModel& model, const ArrowSchema& schema,
                                         const ArrowOptions& options)
    : columns_(schema, options.nanIsMissing, TableScorer::kRows),
      scorer_(model, columns_.Header(), kArrowTableName, options.table)
{
    UseColumnsOf(scorer_.Preparer().Fields(), columns_);
}

int64_t ArrowExplainedCases::Begin(ArrowOwner<ArrowArray> table)
{
    table_ = std::move(table);
    columns_.Begin(*table_);
    return columns_.Rows();
}

bool ArrowExplainedCases::Visit(int64_t first, size_t rows, const Visitor& visitor)
{
    const int64_t before = rowsBefore_ + first + 1;
    bool goesOn = true;
    scorer_.VisitExplanations(
        columns_.Block(first, rows), nullptr,
        [&](size_t row, const CaseStatus& status, const CaseExplanation& explanation) {
            goesOn = visitor(before + static_cast<int64_t>(row), status, explanation);
            return goesOn;
        });
    return goesOn;
}

void ArrowExplainedCases::End()
{
    rowsBefore_ += columns_.Rows();
    table_ = {};
}

ArrowExplanations::ArrowExplanations(const LoadedModel& model, const ArrowSchema& schema,
                                     const ArrowOptions& options, ExplanationOptions explanations)
    : outline_(OutlineOf(model.Model())),
      explanations_(std::move(explanations)),
      lines_(outline_, explanations_),
      cases_(model, schema, options),
      strict_(options.strict)
{
    MakeTexts();
}

void ArrowExplanations::MakeTexts()
{
    NumberedTexts equations;
    NumberedTexts terms;
    for (const ExplanationOutline::Equation& equation : outline_.equations) {
        equationCodes_.push_back(equation.category.empty() ? -1
                                                           : equations.CodeOf(equation.category));
        std::vector<Code>& codes = termCodes_.emplace_back();
        for (const auto& term : equation.terms) codes.push_back(terms.CodeOf(term.name));
    }
    if (explanations_.top) otherTerms_ = terms.CodeOf(ExplanationLines::kOtherTerms);
    equationTexts_ = equations.Make();
    termTexts_ = terms.Make();
}

ArrowOwner<ArrowSchema> ArrowExplanations::Schema()
{
    const std::vector<std::string>& names = ExplanationShaper::Columns();
    std::vector<ArrowOwner<ArrowSchema>> columns;
    columns.push_back(MakeArrowSchema("l", names[0], false));
    columns.push_back(MakeDictionarySchema(names[1], true));
    columns.push_back(MakeDictionarySchema(names[2], true));
    columns.push_back(MakeArrowSchema("g", names[3], true));
    columns.push_back(MakeArrowSchema("g", names[4], true));
    return MakeTableSchema(std::move(columns));
}

size_t ArrowExplanations::MostLines() const
{
    return std::max<size_t>(1, ExplanationLines::MostLines(outline_, explanations_));
}

int64_t ArrowExplanations::Begin(ArrowOwner<ArrowArray> table)
{
    return cases_.Begin(std::move(table));
}

ArrowOwner<ArrowArray> ArrowExplanations::Explain(int64_t first, size_t rows)
{
    rows_.clear();
    equations_.clear();
    terms_.clear();
    values_.clear();
    contributions_.clear();
    cases_.Visit(first, rows,
                 [&](int64_t row, const CaseStatus& status, const CaseExplanation& explanation) {
                     if (strict_ && !status.IsOK()) RefuseRow(row, status);
                     AddCase(row, explanation);
                     return true;
                 });
    const auto count = static_cast<int64_t>(rows_.size());
    std::vector<ArrowOwner<ArrowArray>> columns;
    columns.push_back(MakeArrowArray(
        count, {.validity = nullptr,
                .values = CopyArrowBytes(rows_.data(), rows_.size() * sizeof(int64_t))}));
    columns.push_back(MakeArrowArray(count, ArrowCodes(equations_, equationTexts_)));
    columns.push_back(MakeArrowArray(count, ArrowCodes(terms_, termTexts_)));
    columns.push_back(MakeArrowArray(count, ArrowNumbers(values_)));
    columns.push_back(MakeArrowArray(count, ArrowNumbers(contributions_)));
    return MakeArrowTable(count, std::move(columns));
}

void ArrowExplanations::End() { cases_.End(); }

void ArrowExplanations::AddCase(int64_t row, const CaseExplanation& explanation)
{
    const size_t before = rows_.size();
    for (const CaseExplanation::Sum& sum : explanation.Sums()) {
        const ExplanationOutline::Term* terms = outline_.equations[sum.equation].terms.data();
        for (const ExplanationLine& line : lines_.Of(sum)) {
            const Code term =
                line.outlined == nullptr
                    ? otherTerms_
                    : termCodes_[sum.equation][static_cast<size_t>(line.outlined - terms)];
            AddLine(row, equationCodes_[sum.equation], term, line.value, line.contribution);
        }
    }
    if (rows_.size() == before) AddLine(row, -1, -1, kNone, kNone);
}

void ArrowExplanations::AddLine(int64_t row, Code equation, Code term, double value,
                                double contribution)
{
    rows_.push_back(row);
    equations_.push_back(equation);
    terms_.push_back(term);
    values_.push_back(NumberOrNone(value));
    contributions_.push_back(NumberOrNone(contribution));
}

}  // namespace MCVelscore_850
