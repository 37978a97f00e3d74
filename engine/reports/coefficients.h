#ifndef VELSCORE_ENGINE_REPORTS_COEFFICIENTS_H
#define VELSCORE_ENGINE_REPORTS_COEFFICIENTS_H

#include <string>
#include <vector>

#include "engine/reports/jsontext.h"

namespace MCVelscore_850 {

struct ModelDescription;

/// One estimate and how sure it is; NaN for what there is none of.
struct CoefficientRow {
    std::string category;  ///< of the equation; empty where the model has one alone
    std::string parameter;
    std::string label;
    double estimate;
    double standardError;
    double statistic;  ///< estimate / standard error
    double pValue;     ///< that an estimate is as far from 0, were there nothing to estimate
    double lower;      ///< confidence limits
    double upper;
    double ratio;  ///< exp(estimate), of models that have such a ratio; none of constants
    double ratioLower;
    double ratioUpper;
};

/// The estimates of a model.
///
///     t or z = b / se          p = 2 P(X > |b / se|)          b -+ q se, q the quantile of level
///
/// X has Student's t distribution with the model's degrees of freedom in linear and general linear
/// models, and is standard normal in all others; the distributions are the precise ones, at 0.95
/// too. Without covariances all but the estimates and their ratios is NaN.
struct CoefficientTable {
    std::vector<CoefficientRow> rows;
    double level;
    bool isStudent;
    double degreesOfFreedom;
    bool hasCovariances;
    std::string ratio;  ///< "odds ratio", "hazard ratio", or empty

    /// What CSV and JSON call the columns, in the order of a row; without ratios where the model
    /// has none.
    std::vector<std::string> Columns() const;
    /// A row's numbers in the order of their columns.
    std::vector<double> NumbersOf(const CoefficientRow& row) const;
};

/// `level` lies between 0 and 1.
CoefficientTable CoefficientsOf(const ModelDescription& description, double level);

/// As comma-separated values, with a header.
std::string CoefficientsCsv(const CoefficientTable& table);
/// As part of a report: level, df of t, ratio and the rows. Numbers that don't exist are null.
JsonValue CoefficientsJson(const CoefficientTable& table);

}  // namespace MCVelscore_850

#endif
