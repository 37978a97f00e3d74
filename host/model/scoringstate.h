#ifndef VELSCORE_HOST_MODEL_SCORINGSTATE_H
#define VELSCORE_HOST_MODEL_SCORINGSTATE_H

#include <vector>

#include "host/model/scoremodel.h"
#include "host/model/survivalpoint.h"
#include "host/values/numericvalue.h"

namespace MCVelscore_850 {

/// What scoring changes from case to case, and what its first case settles: one for each run of
/// cases and thread, so that a model that stands serves any number of them, each answering as a
/// freshly read model does. Made by ScoreModel::MakeState().
class VELHOST_API ScoringState {
public:
    virtual ~ScoringState();

    /// Takes over what the first case of another run settled, a run of the same model.
    virtual void SettleAs(const ScoringState& other);
    /// Lets go what the first case settled: the next one is a first case again. Throws nothing.
    virtual void Unsettle();

    ScoreModel::MVPolicy policy = ScoreModel::MV_SUBSTITUTE;
    bool predictionOnly = false;
    /// The variable that the last case failed for, its value being missing, not valid or unknown to
    /// the model; of several the last one. Null after a case that was scored, and where no single
    /// variable is to blame.
    const ScoreDictVar* failedVar = nullptr;
    /// The linear predictor of the last case that was scored, of a model with one equation; the
    /// system-missing number before and of any other model.
    double linearPredictor = NumericValue::GetSysmisValue();
    /// Asks for linearPredictorError, which costs a product with the covariances a case.
    bool wantsLinearPredictorError = false;
    /// Where it is asked for, the standard error of linearPredictor: sqrt(x' V x) over the design
    /// values x that its betas multiply, V being the covariances of the document. The
    /// system-missing number where that has none, and wherever there is no linearPredictor.
    double linearPredictorError = NumericValue::GetSysmisValue();
    /// Asks for probabilityErrors, of models whose description has them.
    bool wantsProbabilityErrors = false;
    /// Where they are asked for, the standard errors of the probabilities of the last case that was
    /// scored, in the order of the description's categories: sqrt(g' V g), g being the derivatives
    /// of a probability by the estimates and V the covariances of the document.
    std::vector<double> probabilityErrors{};
    /// Of a model that has survival curves; others answer nothing.
    SurvivalQuestions survivalAsked;
    /// Of the last case that was scored.
    SurvivalAnswers survival;
};

}  // namespace MCVelscore_850

#endif
