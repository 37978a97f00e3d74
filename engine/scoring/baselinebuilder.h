#ifndef VELSCORE_ENGINE_SCORING_BASELINEBUILDER_H
#define VELSCORE_ENGINE_SCORING_BASELINEBUILDER_H

#include <cstdint>
#include <memory>

#include "engine/scoring/explanationlines.h"
#include "engine/scoring/resultblock.h"

namespace MCVelscore_850 {

/// Makes a baseline out of the cases of tables, one after the other: one of them, or the mean of
/// all that have a score.
///
/// Order   Take() until it answers false or there are no more cases, then Make() once.
/// Threads one.
class BaselineBuilder {
public:
    /// `row` counts from 1; 0 is the mean.
    explicit BaselineBuilder(int64_t row);

    /// False once no further case is wanted.
    bool Take(int64_t row, const CaseStatus& status, const CaseExplanation& explanation);
    /// The status of the row that is wanted; 0 where there was none.
    long Status() const { return status_; }
    /// Null where no case that is wanted has a score.
    std::shared_ptr<const ExplanationBaseline> Make();

private:
    int64_t row_;
    long status_ = 0;
    std::shared_ptr<ExplanationBaseline> baseline_;
};

}  // namespace MCVelscore_850

#endif
