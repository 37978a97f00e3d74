#ifndef VELSCORE_MODELS_PCOVMATRIX_H
#define VELSCORE_MODELS_PCOVMATRIX_H

#include <map>
#include <string>
#include <vector>

namespace MCVelscore_850 {

class RegressionModel;

/// The covariances of the parameter estimates: a full square matrix, both triangles written.
///
/// With P parameters and C target categories it has one of three forms, by the model's type:
///
///     plain        P rows                 parameter p is row p
///     ordinal      P + C - 2 rows         threshold of category t is row t, t <= C - 2;
///                                         location parameter p >= 1 is row p + C - 2
///     multinomial  P C rows               parameter p of category c is row c P + p
///
/// A category's position is its place in the target variable's encoder; without an encoder every
/// category is unknown.
///
/// The cells take memory once one of them is written; until then all are 0.
///
/// Order   made after all parameters, and in the last two forms all categories, are registered.
class PCovMatrix {
public:
    enum Form { PLAIN = 0, ORDINAL = 1, MULTINOMIAL = 2 };

    explicit PCovMatrix(const RegressionModel* model);

    // All forms answer true when a cell was written; on false nothing is.

    /// Two parameters; plain and ordinal. In the ordinal form parameter 0 lands on the last
    /// threshold's row: nothing guards against it.
    bool SetCell(const std::string& parameterA, const std::string& parameterB, double value);
    /// A location parameter and the threshold of `category`; ordinal only. Both names have to be
    /// known although one of them is used.
    bool SetCell(const std::string& parameterA, const std::string& parameterB,
                 const std::string& category, bool firstIsParameter, double value);
    /// Two thresholds in the ordinal form, where both parameters have to be the intercept; any two
    /// parameters of two categories in the multinomial form.
    bool SetCell(const std::string& parameterA, const std::string& parameterB,
                 const std::string& categoryA, const std::string& categoryB, double value);
    /// The same: a literal would otherwise be taken for the bool of the form above.
    bool SetCell(const std::string& parameterA, const std::string& parameterB,
                 const std::string& categoryA, const char* categoryB, double value)
    {
        return SetCell(parameterA, parameterB, categoryA, std::string(categoryB), value);
    }

    /// True when some cell was written, were it a zero: a document's zeros are covariances too.
    bool IsWritten() const { return !cells.empty(); }
    /// The cell, 0.0 unless both are in 0 .. P - 1, in every form: no scorer reads beyond.
    double GetCell(int row, int column) const
    {
        const auto r = static_cast<size_t>(row);  // a negative index is out of range too
        const auto c = static_cast<size_t>(column);
        return r < numParameters && c < numParameters && !cells.empty() ? cells[r * dimension + c]
                                                                        : 0.0;
    }
    /// By names; 0.0 outside the plain form and for an unknown name.
    double GetCell(const std::string& parameterA, const std::string& parameterB) const;
    /// The whole matrix, without any row while nothing was written.
    std::vector<std::vector<double>> GetCells() const;
    /// A row of the matrix, which the next one follows; null while nothing was written.
    const double* GetRow(size_t row) const
    {
        return cells.empty() ? nullptr : cells.data() + row * dimension;
    }
    /// The rows that memory holds: none while nothing was written.
    size_t GetRows() const { return cells.empty() ? 0 : dimension; }
    /// The number of rows and of columns, written or not.
    size_t GetDimension() const { return dimension; }

private:
    int ParameterIndex(const std::string& name) const;
    int CategoryPosition(const std::string& category) const;
    bool Write(int row, int column, double value);

    const RegressionModel* model;
    std::vector<double> cells;  ///< row after row
    const std::map<std::string, int>* parameters;
    Form form;
    size_t dimension;
    size_t numParameters;
    int numCategories;
};

}  // namespace MCVelscore_850

#endif
