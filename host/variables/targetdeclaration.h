#ifndef VELSCORE_HOST_VARIABLES_TARGETDECLARATION_H
#define VELSCORE_HOST_VARIABLES_TARGETDECLARATION_H

#include <limits>
#include <string>
#include <utility>
#include <vector>

#include "host/export.h"

namespace MCVelscore_850 {

/// What a document's Target element says of the predictions of its field.
///
/// A number that a model predicts becomes, in this order,
///
///     y = max(minimum, min(maximum, y));  y = y * rescaleFactor + rescaleConstant;
///     y = round, ceiling or floor of y
///
/// Source  the Targets element of the PMML standard, 3.0 to 4.4.
struct VELHOST_API TargetDeclaration {
    enum class Cast { None, Round, Ceiling, Floor };

    double minimum = -std::numeric_limits<double>::infinity();
    double maximum = std::numeric_limits<double>::infinity();
    double rescaleFactor = 1.0;
    double rescaleConstant = 0.0;
    Cast cast = Cast::None;

    /// The number predicted where the model predicts none.
    bool hasDefault = false;
    double defaultValue = 0.0;
    /// The categories with their prior probabilities; the first of the largest is predicted where
    /// the model predicts none.
    std::vector<std::pair<std::string, double>> priors;
    /// How people read a category.
    std::vector<std::pair<std::string, std::string>> displayValues;

    /// The number that stands for a predicted one. A missing number stays missing.
    double Apply(double predicted) const;
    /// The category of the largest prior probability; null without one.
    const std::string* DefaultCategory() const;
};

}  // namespace MCVelscore_850

#endif
