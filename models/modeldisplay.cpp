// The plain text that models and their tables print of themselves. Words and layout are fixed,
// so that two builds can be compared; every line ends with a flush.

#include <ostream>

#include "host/variables/scoredictvar.h"
#include "models/regressionmodel.h"

namespace MCVelscore_850 {

using std::endl;

void RegressionModel::Display(std::ostream& out) const
{
    out << endl << "Begin display of RegressionModel." << endl;
    out << "The target: " << (targetVar == nullptr ? "" : targetVar->GetName()) << endl;
    out << "df = " << df << endl;
    DisplayMap("Target categories", categoryMap, out);
    DisplayMap("Parameters", parameterMap, out);
    DisplayMap("Predictors", predictorMap, out);
    if (paramTable) {
        paramTable->Display(out);
    } else {
        out << "ParamTable not present" << endl;
    }
    if (pcovMatrix && pcovMatrix->GetCells().empty()) {  // nothing was written: zeros
        const size_t n = pcovMatrix->GetDimension();
        DisplayMatrix("PCovMatrix", Matrix(n, std::vector<double>(n)), out);
    } else if (pcovMatrix) {
        DisplayMatrix("PCovMatrix", pcovMatrix->GetCells(), out);
    } else {
        out << "PCovMatrix not present" << endl;
    }
    if (ppcMatrix) {
        ppcMatrix->Display(out);
    } else {
        out << "PPCMatrix not present" << endl;
    }
    out << "End display of RegressionModel." << endl;
}

void RegressionModel::DisplayMap(const std::string& name, const NameMap& map,
                                 std::ostream& out) const
{
    out << name << " :  size = " << map.size() << endl;
    for (const auto& [key, index] : map) out << "\t" << key << "\t" << index << endl;
    out << endl;
}

void RegressionModel::DisplayMatrix(const std::string& name, const Matrix& matrix,
                                    std::ostream& out) const
{
    out << name << " :  size = " << matrix.size() << " by "
        << (matrix.empty() ? 0 : matrix[0].size()) << endl;
    for (const auto& row : matrix) {
        for (const double cell : row) out << "\t" << cell;
        out << endl;
    }
    out << endl;
}

void ParamTable::Display(std::ostream& out) const
{
    out << "Begin display of ParamTable object." << endl;
    out << "Number of categories = " << categories->size()
        << ", number of parameters = " << parameters->size() << endl;
    for (const auto& row : cells) {
        for (const ParamTableCell& cell : row) {
            out << "\tBeta=" << cell.GetBeta() << " df=" << cell.GetDf();
        }
        out << endl;
    }
    out << endl << "End display of ParamTable object." << endl;
}

void PPCMatrix::Display(std::ostream& out) const
{
    out << "Begin display of PPCMatrix object." << endl;
    out << "Number of parameters = " << parameters->size()
        << ", number of predictors = " << predictors->size() << endl;
    for (size_t parameter = 0; parameter < cells.size(); ++parameter) {
        for (size_t predictor = 0; predictor < columns; ++predictor) {
            const ScoreValue* cell =
                GetCell(static_cast<int>(parameter), static_cast<int>(predictor));
            out << "\t";
            if (cell != nullptr) {
                out << cell->GetString();
            } else {
                out << " Null\t";
            }
        }
        out << endl;
    }
    out << endl << "End display of PPCMatrix object." << endl;
}

}  // namespace MCVelscore_850
