#ifndef VELSCORE_HOST_MODEL_MCSTATUS_H
#define VELSCORE_HOST_MODEL_MCSTATUS_H

#include "host/export.h"

namespace MCVelscore_850::MCScore {

/// The outcome of one case: OK, or a code of the message catalogue. A plain value.
class VELHOST_API MCStatus {
public:
    MCStatus() = default;
    /// A failure with this code. The second argument, false in every call, is the interface's.
    MCStatus(long code, bool) : code_(code) {}

    bool IsOK() const { return code_ == 0; }
    long GetErrorCode() const { return code_; }

    /// A number that goes with the code; index 0, the only one in use, is the predictor at fault.
    void SetDiscreteDatum(unsigned int index, long datum)
    {
        if (index == 0) datum_ = datum;
    }
    /// The number set at index 0, -1 when there is none.
    long GetDiscreteDatum() const { return datum_; }

private:
    long code_ = 0;
    long datum_ = -1;
};

/// Codes that a model answers for a case it can't score.
inline constexpr long kReferenceCategoryUnknown = 90015;
inline constexpr long kFactorOutsideContrasts = 90017;
inline constexpr long kNoMean = 90028;
inline constexpr long kCaseNotScorable = 90029;

}  // namespace MCVelscore_850::MCScore

#endif
