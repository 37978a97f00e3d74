#ifndef VELSCORE_ENGINE_DOCUMENTS_REGRESSIONFORMS_H
#define VELSCORE_ENGINE_DOCUMENTS_REGRESSIONFORMS_H

#include <string>
#include <string_view>
#include <vector>

#include "engine/documents/element.h"
#include "engine/documents/regressiontables.h"

namespace MCVelscore_850 {

/// What the tables of a RegressionModel are the equations of.
enum class RegressionShape { Number, TwoCategories, Categories, OrderedCategories };

/// Which tables count. Where not all do, one category has what the others leave.
enum class CountedTables {
    All,
    First,          ///< of two
    AllButOne,      ///< the last table, or the category without one
    AllButHighest,  ///< the last category, each by its own equation
    SharedSlopes    ///< the same, by equations that differ in the intercept alone
};

/// The general form's way to say it.
struct RegressionWay {
    const std::string& modelType;
    const std::string& algorithm;
    bool takesFactors = false;  ///< its families count a missing category as none of the factor's
    bool namesDistribution = false;   ///< a generalized linear model
    bool namesNormalization = false;  ///< how probabilities come about is told by options

    /// True where the algorithm's name alone tells the family, from a version on.
    bool NeedsSelector() const { return namesDistribution || namesNormalization; }
};

/// How the tables of one shape with one normalization are written in the general form.
struct RegressionForm {
    RegressionShape shape;
    CountedTables counts;
    std::string_view normalization;
    const RegressionWay& way;
    std::string_view link;  ///< empty where the family has none
    const char* family;

    /// True where the order of the target's categories says which tables count.
    bool IsByCategory() const
    {
        return counts == CountedTables::AllButHighest || counts == CountedTables::SharedSlopes;
    }
};

/// The normalizationMethod of a RegressionModel, "none" where it says nothing.
///
/// Errors  VSException with the place: kUnknownNormalization.
std::string NormalizationOf(Element model);

/// The form of a RegressionModel. `categories` are those of the target, in its order; `tables` bear
/// them as the target spells them.
///
/// Errors  VSException with the place: kNormalizationNotTaken.
const RegressionForm& FormOf(Element model, RegressionShape shape,
                             const std::vector<RegressionTable>& tables,
                             const std::vector<std::string>& categories);

}  // namespace MCVelscore_850

#endif
