#ifndef VELSCORE_ENGINE_DOCUMENTS_REGRESSIONEQUATIONS_H
#define VELSCORE_ENGINE_DOCUMENTS_REGRESSIONEQUATIONS_H

#include <cstddef>
#include <map>
#include <set>
#include <string>
#include <unordered_map>
#include <vector>

#include "engine/documents/element.h"
#include "engine/documents/regressionpredictors.h"
#include "engine/documents/regressiontables.h"

namespace MCVelscore_850 {

/// The terms of a RegressionModel's tables as parameters of the general form: a product of
/// predictors is one parameter, which the tables share.
///
/// Owner   the tables outlive it.
class RegressionEquations {
public:
    RegressionEquations(const std::vector<RegressionTable>& tables,
                        RegressionPredictors& predictors, Element source);

    /// Appends the lists of parameters and predictors, and which belong together, to the model.
    void WriteLists(Element model, const RegressionPredictors& predictors) const;
    /// Appends the betas. `categories` are those of the tables as the cells name them, each empty
    /// where there is one equation alone; with `sharedSlopes` the first table's slopes serve all.
    void WriteBetas(Element model, const std::vector<std::string>& categories,
                    bool sharedSlopes) const;

private:
    // A column of betas: a product of predictors, or the intercept.
    struct Parameter {
        std::string name;
        Element element;
        std::vector<RegressionPredictors::Cell> cells;
    };
    // A coefficient of a table, in the column of its parameter.
    struct Beta {
        size_t parameter;
        const RegressionTerm* term;
    };

    size_t ParameterOf(const std::vector<RegressionPredictors::Cell>& cells, Element element,
                       std::map<std::string, size_t>& repeats);
    void WriteSlopes(Element matrix, size_t table, const std::string& category) const;

    const std::vector<RegressionTable>& tables_;
    Element source_;
    std::vector<Parameter> parameters_;  // the first one is the intercept
    std::unordered_map<std::string, size_t> parameterOf_;
    std::set<std::string> parameterNames_;
    std::vector<std::vector<Beta>> betas_;  // by table
};

}  // namespace MCVelscore_850

#endif
