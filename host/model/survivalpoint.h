#ifndef VELSCORE_HOST_MODEL_SURVIVALPOINT_H
#define VELSCORE_HOST_MODEL_SURVIVALPOINT_H

#include <vector>

#include "host/values/numericvalue.h"

namespace MCVelscore_850 {

/// One point of a case's survival curve. Survival and hazard are system-missing where the model's
/// baseline has no value for the time.
struct SurvivalPoint {
    double time = 0.0;
    double survival = 0.0;
    double cumHazard = 0.0;
};

/// What is asked of a model that has survival curves, beside its result.
struct SurvivalQuestions {
    bool risk = false;
    bool median = false;
    /// Survival at these times, whatever the case's own is; of a curve the times of its points,
    /// where there are any.
    std::vector<double> times{};
    /// False where nobody wants the result, which is for the case's own end time: the case needs
    /// none then, and the numbers of its result are system-missing.
    bool endTime = true;
};

/// The answers for one case, as far as they were asked for. A number that doesn't exist is
/// system-missing.
struct SurvivalAnswers {
    /// exp(lp) of the linear predictor, centred as the model centres it.
    double risk = NumericValue::GetSysmisValue();
    /// The smallest time of the stratum's baseline at which survival is 0.5 or less.
    double median = NumericValue::GetSysmisValue();
    std::vector<double> survivals{};  ///< by SurvivalQuestions::times
};

}  // namespace MCVelscore_850

#endif
