#include "engine/documents/regressionequations.h"

#include <algorithm>

#include <fmt/format.h>

#include "engine/documents/treefields.h"
#include "host/documents/pmmlmodeltags.h"

namespace MCVelscore_850 {

namespace {

using Tags = PMMLModelTags;

const std::string kIntercept = "(Intercept)";

constexpr size_t kMostCells = 100'000;  // betas of 0 among them

Element WriteBeta(Element matrix, const std::string& parameter, const std::string& beta,
                  Element source, const std::string& category)
{
    const Element cell = AppendFor(matrix, Tags::XML_ELE_PCELL, source);
    if (!category.empty()) cell.SetText(Tags::XML_ATT_PC_TARGET_CAT, category);
    cell.SetText(Tags::XML_ATT_PC_PARAMNAME, parameter);
    cell.SetText(Tags::XML_ATT_PC_BETA, beta);
    return cell;
}

}  // namespace

RegressionEquations::RegressionEquations(const std::vector<RegressionTable>& tables,
                                         RegressionPredictors& predictors, Element source)
    : tables_(tables),
      source_(source),
      parameterNames_{kIntercept, "(Constant)"}  // the reader moves the latter
{
    parameters_.push_back({kIntercept, source_, {}});
    for (const RegressionTable& table : tables_) {
        std::map<std::string, size_t> repeats;
        std::vector<Beta> betas;
        for (const RegressionTerm& term : table.terms) {
            const auto cells = predictors.CellsOf(term);
            if (cells) betas.push_back({ParameterOf(*cells, term.element, repeats), &term});
        }
        betas_.push_back(std::move(betas));
    }
}

// The parameter of a product. Tables share it; a table that has it again, which adds, takes
// another.
size_t RegressionEquations::ParameterOf(const std::vector<RegressionPredictors::Cell>& cells,
                                        Element element, std::map<std::string, size_t>& repeats)
{
    std::vector<std::string> factors;
    factors.reserve(cells.size());
    for (const auto& cell : cells) factors.push_back(cell.predictor + "\n" + cell.value);
    std::sort(factors.begin(), factors.end());
    std::string key = fmt::format("{}", fmt::join(factors, "\n"));
    key += fmt::format("\n{}", repeats[key]++);
    const auto known = parameterOf_.find(key);
    if (known != parameterOf_.end()) return known->second;

    std::string name;
    for (const auto& cell : cells) {
        name += (name.empty() ? "" : " * ") + cell.predictor;
        if (cell.isFactor) {
            name += fmt::format("[{}]", cell.value);
        } else if (cell.value != "1") {
            name += "^" + cell.value;
        }
    }
    while (!parameterNames_.insert(name).second) name += "'";
    parameters_.push_back({name, element, cells});
    parameterOf_.emplace(key, parameters_.size() - 1);
    return parameters_.size() - 1;
}

void RegressionEquations::WriteLists(Element model, const RegressionPredictors& predictors) const
{
    const Element list = AppendFor(model, Tags::XML_ELE_PARAM_LIST, source_);
    for (const Parameter& parameter : parameters_) {
        AppendFor(list, Tags::XML_ELE_PARAM, parameter.element)
            .SetText(Tags::XML_ATT_PARAM_NAME, parameter.name);
    }
    const auto write = [&](const std::string& tag, const auto& names) {
        if (names.empty()) return;
        const Element predictorList = AppendFor(model, tag, source_);
        for (const RegressionPredictors::Predictor& predictor : names) {
            AppendFor(predictorList, Tags::XML_ELE_PREDICTOR, predictor.element)
                .SetText(Tags::XML_ATT_PRED_NAME, predictor.name);
        }
    };
    write(Tags::XML_ELE_FAC_LIST, predictors.Factors());
    write(Tags::XML_ELE_COV_LIST, predictors.Covariates());
    const Element matrix = AppendFor(model, Tags::XML_ELE_PP_MATRIX, source_);
    for (const Parameter& parameter : parameters_) {
        for (const auto& [predictor, value, isFactor] : parameter.cells) {
            const Element cell = AppendFor(matrix, Tags::XML_ELE_PP_CELL, parameter.element);
            cell.SetText(Tags::XML_ATT_PPC_VALUE, value);
            cell.SetText(Tags::XML_ATT_PPC_PREDNAME, predictor);
            cell.SetText(Tags::XML_ATT_PPC_PARAMNAME, parameter.name);
        }
    }
}

void RegressionEquations::WriteBetas(Element model, const std::vector<std::string>& categories,
                                     bool sharedSlopes) const
{
    const Element matrix = AppendFor(model, Tags::XML_ELE_PARAM_MATRIX, source_);
    for (size_t i = 0; i < tables_.size(); ++i) {
        WriteBeta(matrix, parameters_.front().name, tables_[i].intercept, tables_[i].element,
                  categories[i]);
    }
    if (sharedSlopes) {
        WriteSlopes(matrix, 0, "");  // one beta serves all categories
        return;
    }
    for (size_t i = 0; i < tables_.size(); ++i) WriteSlopes(matrix, i, categories[i]);
}

void RegressionEquations::WriteSlopes(Element matrix, size_t table,
                                      const std::string& category) const
{
    std::vector<bool> isWritten(parameters_.size(), false);
    isWritten.front() = true;
    for (const Beta& beta : betas_[table]) {
        WriteBeta(matrix, parameters_[beta.parameter].name, beta.term->coefficient,
                  beta.term->element, category);
        isWritten[beta.parameter] = true;
    }
    // Terms of other tables have no part here, which is said as long as it doesn't take more than
    // the tables themselves.
    if (parameters_.size() > kMostCells / tables_.size()) return;
    for (size_t p = 0; p < parameters_.size(); ++p) {
        if (isWritten[p]) continue;
        WriteBeta(matrix, parameters_[p].name, "0", tables_[table].element, category)
            .SetText(Tags::XML_ATT_PC_DF, "0");
    }
}

}  // namespace MCVelscore_850
