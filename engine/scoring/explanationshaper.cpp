#include "engine/scoring/explanationshaper.h"

#include <utility>

#include "engine/scoring/resultnumber.h"
#include "engine/tables/rowtext.h"
#include "host/model/scoremodel.h"

namespace MCVelscore_850 {

ExplanationOutline OutlineOf(const ScoreModel& model)
{
    ExplanationOutline outline;
    model.OutlineExplanations(outline);
    return outline;
}

ExplanationShaper::ExplanationShaper(const ScoreModel& model, ExplanationOptions options)
    : outline_(OutlineOf(model)), lines_(outline_, std::move(options))
{}

const std::vector<std::string>& ExplanationShaper::Columns()
{
    static const std::vector<std::string> kColumns{"row", "equation", "term", "value",
                                                   "contribution"};
    return kColumns;
}

void ExplanationShaper::WriteCase(RowText& rows, int64_t row, const CaseExplanation& explanation)
{
    bool wrote = false;
    for (const CaseExplanation::Sum& sum : explanation.Sums()) {
        const std::string& equation = outline_.equations[sum.equation].category;
        for (const ExplanationLine& line : lines_.Of(sum)) {
            rows.AddWhole(row);
            rows.AddText(equation);
            rows.AddText(line.term);
            WriteResultNumber(rows, line.value);
            WriteResultNumber(rows, line.contribution);
            rows.EndRow();
            wrote = true;
        }
    }
    if (!wrote) WriteNoCase(rows, row);
}

void ExplanationShaper::WriteNoCase(RowText& rows, int64_t row)
{
    rows.AddWhole(row);
    for (size_t i = 1; i < Columns().size(); ++i) rows.AddEmpty();
    rows.EndRow();
}

}  // namespace MCVelscore_850
