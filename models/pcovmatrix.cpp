#include "models/pcovmatrix.h"

#include "host/variables/catencoder.h"
#include "host/variables/scoredictvar.h"
#include "models/nameindex.h"
#include "models/regressionmodel.h"

namespace MCVelscore_850 {

namespace {

PCovMatrix::Form FormOf(int modelType)
{
    switch (modelType) {
        case ScoreModel::TYPE_ORDINAL: return PCovMatrix::ORDINAL;
        case ScoreModel::TYPE_MLR: return PCovMatrix::MULTINOMIAL;
        default: return PCovMatrix::PLAIN;
    }
}

}  // namespace

PCovMatrix::PCovMatrix(const RegressionModel* owner)
    : model(owner),
      parameters(&owner->GetParameterMap()),
      form(FormOf(owner->GetModelType())),
      numParameters(owner->GetParameterMap().size()),
      numCategories(form == PLAIN ? 2 : static_cast<int>(owner->GetCategoryMap().size()))
{
    const auto categories = static_cast<size_t>(numCategories);
    dimension = numParameters;
    if (form == MULTINOMIAL) dimension = numParameters * categories;
    if (form == ORDINAL) {
        dimension = numParameters + categories < 2 ? 0 : numParameters + categories - 2;
    }
}

int PCovMatrix::ParameterIndex(const std::string& name) const { return IndexOf(*parameters, name); }

int PCovMatrix::CategoryPosition(const std::string& category) const
{
    const ScoreDictVar* target = model->GetTargetVar();
    const CatEncoder* encoder = target == nullptr ? nullptr : target->GetCatEncoder();
    return encoder == nullptr ? -1 : encoder->EncodeString(category);
}

bool PCovMatrix::Write(int row, int column, double value)
{
    const auto r = static_cast<size_t>(row);
    const auto c = static_cast<size_t>(column);
    if (r >= dimension || c >= dimension) return false;
    if (cells.empty()) cells.assign(dimension * dimension, 0.0);
    cells[r * dimension + c] = value;
    cells[c * dimension + r] = value;
    return true;
}

bool PCovMatrix::SetCell(const std::string& parameterA, const std::string& parameterB, double value)
{
    if (form == MULTINOMIAL) return false;
    const int a = ParameterIndex(parameterA);
    const int b = ParameterIndex(parameterB);
    if (a < 0 || b < 0) return false;
    const int shift = form == ORDINAL ? numCategories - 2 : 0;
    return Write(a + shift, b + shift, value);
}

bool PCovMatrix::SetCell(const std::string& parameterA, const std::string& parameterB,
                         const std::string& category, bool firstIsParameter, double value)
{
    if (form != ORDINAL) return false;
    const int a = ParameterIndex(parameterA);
    const int b = ParameterIndex(parameterB);
    const int t = CategoryPosition(category);
    if (a < 0 || b < 0 || t < 0) return false;
    return firstIsParameter ? Write(a + numCategories - 2, t, value)
                            : Write(t, b + numCategories - 2, value);
}

bool PCovMatrix::SetCell(const std::string& parameterA, const std::string& parameterB,
                         const std::string& categoryA, const std::string& categoryB, double value)
{
    if (form == PLAIN) return false;
    const int a = ParameterIndex(parameterA);
    const int b = ParameterIndex(parameterB);
    const int s = CategoryPosition(categoryA);
    const int t = CategoryPosition(categoryB);
    if (a < 0 || b < 0 || s < 0 || t < 0) return false;
    if (form == ORDINAL) return a == 0 && b == 0 && Write(s, t, value);
    const int columns = static_cast<int>(numParameters);
    return Write(s * columns + a, t * columns + b, value);
}

double PCovMatrix::GetCell(const std::string& parameterA, const std::string& parameterB) const
{
    if (form != PLAIN) return 0.0;
    return GetCell(ParameterIndex(parameterA), ParameterIndex(parameterB));
}

std::vector<std::vector<double>> PCovMatrix::GetCells() const
{
    std::vector<std::vector<double>> rows;
    for (size_t r = 0; r < GetRows(); ++r) rows.emplace_back(GetRow(r), GetRow(r) + dimension);
    return rows;
}

}  // namespace MCVelscore_850
