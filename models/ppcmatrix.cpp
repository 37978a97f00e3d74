#include "models/ppcmatrix.h"

#include <algorithm>

#include "models/regressionmodel.h"

namespace MCVelscore_850 {

PPCMatrix::PPCMatrix(const RegressionModel* owner)
    : cells(owner->GetParameterMap().size()),
      columns(owner->GetPredictorMap().size()),
      model(owner),
      parameters(&owner->GetParameterMap()),
      predictors(&owner->GetPredictorMap())
{}

PPCMatrix::~PPCMatrix() = default;

bool PPCMatrix::SetCell(const std::string& parameter, const std::string& predictor,
                        ScoreValue* value)
{
    std::unique_ptr<ScoreValue> owned(value);
    const auto named = parameters->find(parameter);
    const auto column = predictors->find(predictor);
    if (named == parameters->end() || column == predictors->end()) return false;
    const auto r = static_cast<size_t>(named->second);
    if (r >= cells.size() || static_cast<size_t>(column->second) >= columns) return false;
    std::vector<Cell>& row = cells[r];
    const auto place = std::ranges::lower_bound(row, column->second, {}, &Cell::predictor);
    const bool isThere = place != row.end() && place->predictor == column->second;
    if (owned == nullptr) {
        if (isThere) row.erase(place);
    } else if (isThere) {
        place->value = std::move(owned);
    } else {
        row.insert(place, Cell{column->second, std::move(owned)});
    }
    return true;
}

std::span<const PPCMatrix::Cell> PPCMatrix::Row(int parameter) const
{
    const auto row = static_cast<size_t>(parameter);  // a negative index is out of range too
    if (row >= cells.size()) return {};
    return cells[row];
}

const ScoreValue* PPCMatrix::GetCell(int parameter, int predictor) const
{
    const std::span<const Cell> row = Row(parameter);
    const auto place = std::ranges::lower_bound(row, predictor, {}, &Cell::predictor);
    return place == row.end() || place->predictor != predictor ? nullptr : place->value.get();
}

const ScoreValue* PPCMatrix::GetCell(const std::string& parameter,
                                     const std::string& predictor) const
{
    const auto row = parameters->find(parameter);
    const auto column = predictors->find(predictor);
    if (row == parameters->end() || column == predictors->end()) return nullptr;
    return GetCell(row->second, column->second);
}

ScoreValue* PPCMatrix::GetCell(const std::string& parameter, const std::string& predictor)
{
    return const_cast<ScoreValue*>(std::as_const(*this).GetCell(parameter, predictor));
}

}  // namespace MCVelscore_850
