#ifndef VELSCORE_CAPI_OPTIONS_H
#define VELSCORE_CAPI_OPTIONS_H

#include "capi/include/velscore.h"
#include "capi/model.h"
#include "engine/scoring/arrowscorer.h"
#include "engine/scoring/explanationlines.h"
#include "engine/scoring/tablescan.h"

namespace MCVelscore_850::capi {

/// What is asked of scores, understood. The structure's texts aren't needed any more.
struct Request {
    Settings settings{};
    ArrowOptions scoring{};
    ExplanationOptions explanations{};  ///< without a baseline
};

/// Throws Failure of kind Usage: kStructSize, kNullArgument, kOptionValue for what can't be or
/// doesn't go together, kNoLevel and kPolicyIgnored for what the model has no use for.
Request RequestOf(const velscore_model& model, const velscore_score_options* options);
/// The same for curves; throws kNoCurves for a model that has none.
Request CurveRequestOf(const velscore_model& model, const velscore_score_options* options);
/// The same for explanations; the baseline is GivenBaseline's.
Request ExplainRequestOf(const velscore_model& model, const velscore_score_options* options);

struct ScanRequest {
    Settings settings{};
    ScanOptions scan{};
};
ScanRequest ScanRequestOf(const velscore_model& model, const velscore_csv_options* options);

}  // namespace MCVelscore_850::capi

#endif
