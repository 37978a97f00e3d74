#ifndef VELSCORE_MODELS_PPCMATRIX_H
#define VELSCORE_MODELS_PPCMATRIX_H

#include <iosfwd>
#include <map>
#include <memory>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "host/values/scorevalue.h"

namespace MCVelscore_850 {

class RegressionModel;

/// How each parameter is built from the predictors: a row per parameter, a column per predictor.
/// A factor's cell holds the category for which the parameter is active, a covariate's its
/// exponent; an empty cell means that the parameter doesn't depend on the predictor, and a row of
/// empty cells is an intercept.
///
/// Shapes  from the model's registries at construction; only cells that hold a value take memory.
/// Owner   of the values; it looks at the model's maps, which outlive it.
class PPCMatrix {
public:
    /// A cell that holds a value.
    struct Cell {
        int predictor;
        std::unique_ptr<ScoreValue> value;
    };

    explicit PPCMatrix(const RegressionModel* model);
    ~PPCMatrix();

    /// Takes `value` over in both outcomes. False when a name is unknown. The value that the cell
    /// held is released.
    bool SetCell(const std::string& parameter, const std::string& predictor, ScoreValue* value);
    /// Null when a name is unknown or the cell is empty.
    const ScoreValue* GetCell(const std::string& parameter, const std::string& predictor) const;
    ScoreValue* GetCell(const std::string& parameter, const std::string& predictor);
    /// Null out of range or when the cell is empty.
    const ScoreValue* GetCell(int parameter, int predictor) const;
    ScoreValue* GetCell(int parameter, int predictor)
    {
        return const_cast<ScoreValue*>(std::as_const(*this).GetCell(parameter, predictor));
    }
    /// The cells of a parameter that hold a value, predictors ascending; none out of range.
    std::span<const Cell> Row(int parameter) const;
    void Display(std::ostream& out) const;

private:
    std::vector<std::vector<Cell>> cells;  ///< by parameter, each row as Row() answers it
    size_t columns;
    const RegressionModel* model;
    const std::map<std::string, int>* parameters;
    const std::map<std::string, int>* predictors;
};

}  // namespace MCVelscore_850

#endif
