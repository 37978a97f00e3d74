#include "models/ppcmatrix.h"

#include "models/regressionmodel.h"

namespace MCVelscore_850 {

PPCMatrix::PPCMatrix(const RegressionModel* owner)
    : cells(owner->GetParameterMap().size()),
      model(owner),
      parameters(&owner->GetParameterMap()),
      predictors(&owner->GetPredictorMap())
{
    for (auto& row : cells) row.resize(predictors->size());
}

PPCMatrix::~PPCMatrix() = default;

bool PPCMatrix::SetCell(const std::string& parameter, const std::string& predictor,
                        ScoreValue* value)
{
    std::unique_ptr<ScoreValue> owned(value);
    const auto row = parameters->find(parameter);
    const auto column = predictors->find(predictor);
    if (row == parameters->end() || column == predictors->end()) return false;
    const auto r = static_cast<size_t>(row->second);
    const auto c = static_cast<size_t>(column->second);
    if (r >= cells.size() || c >= cells[r].size()) return false;
    cells[r][c] = std::move(owned);
    return true;
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
