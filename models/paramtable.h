#ifndef VELSCORE_MODELS_PARAMTABLE_H
#define VELSCORE_MODELS_PARAMTABLE_H

#include <iosfwd>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace MCVelscore_850 {

class RegressionModel;

/// One estimate and its degrees of freedom, as the document gives them.
class ParamTableCell {
public:
    ParamTableCell() = default;
    ParamTableCell(double beta, int df) : beta_(beta), df_(df) {}
    double GetBeta() const { return beta_; }
    void SetBeta(double beta) { beta_ = beta; }
    int GetDf() const { return df_; }
    void SetDf(int df) { df_ = df; }

private:
    double beta_ = 0.0;
    int df_ = 0;
};

/// The betas of a model: a row per target category, a column per parameter.
///
/// Shapes  from the model's registries at construction; the table never grows, so all categories
///         and parameters are registered before it is made.
/// Owner   looks at the model's maps, which outlive it.
class ParamTable {
public:
    explicit ParamTable(const RegressionModel* model);

    /// False, and nothing is written, when a name is unknown or has no row or column.
    bool SetCell(const std::string& category, const std::string& parameter,
                 const ParamTableCell& cell);
    /// The cell inside the table, null when a name is unknown.
    const ParamTableCell* GetCell(const std::string& category, const std::string& parameter) const;
    ParamTableCell* GetCell(const std::string& category, const std::string& parameter);
    /// The cell by indexes, null out of range.
    const ParamTableCell* GetCell(int category, int parameter) const
    {
        const auto row = static_cast<size_t>(category);  // a negative index is out of range too
        const auto column = static_cast<size_t>(parameter);
        if (row >= cells.size() || column >= cells[row].size()) return nullptr;
        return &cells[row][column];
    }
    ParamTableCell* GetCell(int category, int parameter)
    {
        return const_cast<ParamTableCell*>(std::as_const(*this).GetCell(category, parameter));
    }
    /// The index of a parameter, -1 when unknown.
    int GetParameterIndex(const std::string& parameter) const;
    int GetNumOfParameters() const { return static_cast<int>(parameters->size()); }
    void Display(std::ostream& out) const;

private:
    const RegressionModel* model;
    std::vector<std::vector<ParamTableCell>> cells;
    const std::map<std::string, int>* categories;
    const std::map<std::string, int>* parameters;
};

}  // namespace MCVelscore_850

#endif
