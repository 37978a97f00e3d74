#include "models/ppcmatrix.h"

#include <algorithm>

#include "models/nameindex.h"
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
    const auto r = static_cast<size_t>(IndexOf(*parameters, parameter));
    const int column = IndexOf(*predictors, predictor);
    if (r >= cells.size() || static_cast<size_t>(column) >= columns) return false;
    std::vector<Cell>& row = cells[r];
    const auto place = std::ranges::lower_bound(row, column, {}, &Cell::predictor);
    const bool isThere = place != row.end() && place->predictor == column;
    if (owned == nullptr) {
        if (isThere) row.erase(place);
    } else if (isThere) {
        place->value = std::move(owned);
    } else {
        row.insert(place, Cell{column, std::move(owned)});
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
    return GetCell(IndexOf(*parameters, parameter), IndexOf(*predictors, predictor));
}

ScoreValue* PPCMatrix::GetCell(const std::string& parameter, const std::string& predictor)
{
    return const_cast<ScoreValue*>(std::as_const(*this).GetCell(parameter, predictor));
}

}  // namespace MCVelscore_850
