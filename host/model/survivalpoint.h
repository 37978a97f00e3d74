#ifndef VELSCORE_HOST_MODEL_SURVIVALPOINT_H
#define VELSCORE_HOST_MODEL_SURVIVALPOINT_H

namespace MCVelscore_850 {

/// One point of a case's survival curve. Survival and hazard are system-missing where the model's
/// baseline has no value for the time.
struct SurvivalPoint {
    double time = 0.0;
    double survival = 0.0;
    double cumHazard = 0.0;
};

}  // namespace MCVelscore_850

#endif
