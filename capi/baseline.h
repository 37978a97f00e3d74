#ifndef VELSCORE_CAPI_BASELINE_H
#define VELSCORE_CAPI_BASELINE_H

#include <memory>

#include "capi/model.h"
#include "capi/options.h"
#include "engine/scoring/explanationlines.h"
#include "engine/tables/arrowdata.h"

namespace MCVelscore_850::capi {

/// The tables that options give for a baseline, taken over, and which of their cases it is. It
/// throws nothing before Read(), so that the stream is released whatever else fails.
class GivenBaseline {
public:
    /// Of options as the caller has them: null, or of an older header.
    explicit GivenBaseline(const velscore_score_options* options) noexcept;

    /// The baseline; null where none is asked for. Throws Failure: what GivenStream and
    /// ArrowExplainedCases refuse, kOptionValue for a row that there isn't, or that has no score.
    std::shared_ptr<const ExplanationBaseline> Read(const velscore_model& model,
                                                    const Request& request);

private:
    bool isAsked_ = false;
    int64_t row_ = 0;
    ArrowOwner<ArrowArrayStream> tables_;
};

}  // namespace MCVelscore_850::capi

#endif
