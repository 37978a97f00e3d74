#ifndef VELSCORE_MODELS_ORMODEL_H
#define VELSCORE_MODELS_ORMODEL_H

#include "models/cumulativelinkmodel.h"

namespace MCVelscore_850 {

/// Ordinal regression: a cumulative-link model whose linear predictor is added to the thresholds.
/// Of equal probabilities the lowest category wins. An offset variable is read from the record by
/// its position alone, without validation; one that is absent adds nothing.
class ORModel final : public CumulativeLinkModel {
public:
    ORModel();
    ~ORModel() override;

    void Display(std::ostream& out) const override;
    void Describe(ModelDescription& description) const override;

private:
    double OffsetOfCase(const CaseWalk& walk, const CaseState& state) const override;
};

}  // namespace MCVelscore_850

#endif
