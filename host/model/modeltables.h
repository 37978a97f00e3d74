#ifndef VELSCORE_HOST_MODEL_MODELTABLES_H
#define VELSCORE_HOST_MODEL_MODELTABLES_H

#include <vector>

namespace MCVelscore_850 {

/// The long tables of a model, which its description leaves out: filled by ScoreModel::Tabulate.
struct ModelTables {
    /// From time to cumulative hazard, ascending.
    struct Baseline {
        std::vector<double> times;
        std::vector<double> hazards;
    };

    /// Square, in the order of the model's parameters; empty without covariances.
    std::vector<std::vector<double>> covariances;
    std::vector<Baseline> baselines;  ///< by stratum of the description
};

}  // namespace MCVelscore_850

#endif
