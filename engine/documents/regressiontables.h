#ifndef VELSCORE_ENGINE_DOCUMENTS_REGRESSIONTABLES_H
#define VELSCORE_ENGINE_DOCUMENTS_REGRESSIONTABLES_H

#include <optional>
#include <string>
#include <vector>

#include "engine/documents/element.h"

namespace MCVelscore_850 {

/// What multiplies a coefficient: a field's number to a power, or 1 where the field has a category
/// and 0 where it hasn't.
struct TermFactor {
    std::string field;
    double exponent = 1.0;
    std::optional<std::string> category{};
    std::optional<std::string> mapMissingTo{};  ///< the number that a missing value counts as
};

/// A coefficient with the factors of its product.
struct RegressionTerm {
    Element element;
    std::string coefficient;  ///< as it is written; a finite number
    std::vector<TermFactor> factors;
};

/// A RegressionTable: the equation of one category, or of a number.
///
///     y = intercept + sum of coefficient * product of factors
struct RegressionTable {
    Element element;
    std::string category;   ///< its targetCategory; empty without one
    std::string intercept;  ///< as it is written, "0" where it is left out
    std::vector<RegressionTerm> terms;

    /// True where y is 0 for every case: no terms, and no intercept but 0.
    bool IsEmpty() const;
};

/// The tables of a RegressionModel element, in document order. Extensions are passed over.
///
/// Errors  VSException with the place: kAbsent, kNotFinite, kUnexpectedTableElement,
///         kMisspeltAttribute.
std::vector<RegressionTable> ReadRegressionTables(Element model);

}  // namespace MCVelscore_850

#endif
