#ifndef VELSCORE_MODELS_OGZLRMODEL_H
#define VELSCORE_MODELS_OGZLRMODEL_H

#include "models/cumulativelinkmodel.h"

namespace MCVelscore_850 {

/// The ordinal model of the generalized linear family (multinomial distribution, cumulative link):
/// a cumulative-link model whose linear predictor is subtracted from the thresholds. Probabilities
/// within 1e-14 count as equal. An offset variable is gathered and validated like a predictor.
class OGZLRModel final : public CumulativeLinkModel {
public:
    enum DistType { DIST_MULTINOMIAL = 0 };

    OGZLRModel();
    ~OGZLRModel() override;

    void Display(std::ostream& out) const override;
    void Describe(ModelDescription& description) const override;

    void SetDistType(DistType type) { distType = type; }
    DistType GetDistType() const { return distType; }

private:
    double OffsetOfCase(const CaseWalk& walk, const CaseState& state) const override;

    DistType distType = DIST_MULTINOMIAL;
};

}  // namespace MCVelscore_850

#endif
