#ifndef VELSCORE_HOST_VARIABLES_TRANSFORMATIONDICTIONARY_H
#define VELSCORE_HOST_VARIABLES_TRANSFORMATIONDICTIONARY_H

#include <memory>

#include "host/expressions/expressionscratch.h"
#include "host/variables/caserecord.h"
#include "host/variables/scoredictionary.h"

namespace MCVelscore_850 {

/// The derived variables of a document; each is a TransformVar.
class VELHOST_API TransformationDictionary final : public BaseDictionary {
public:
    TransformationDictionary();
    ~TransformationDictionary() override;

    /// Prepares the record of derived values; called once, when all variables are there.
    void SetUpDerivedCaseRecord();
    /// The derived values for the case, by name alone. The record belongs to this dictionary and
    /// stands until the next call.
    const ScoreCaseRecord* GetValuesForDerivedVars(const ScoreCaseRecord* record,
                                                   const ScoreDictionary* dictionary) const;

    /// A record of derived values, and what computing them writes.
    struct Derivation {
        ExpressionScratch scratch;
        std::unique_ptr<CaseRecord> record;
    };
    /// The same in the caller's own place, for callers side by side.
    const ScoreCaseRecord* GetValuesForDerivedVars(const ScoreCaseRecord* record,
                                                   const ScoreDictionary* dictionary,
                                                   Derivation& derivation) const;

private:
    std::unique_ptr<CaseRecord> NewRecord() const;

    std::unique_ptr<Derivation> own_;  ///< null before SetUpDerivedCaseRecord()
};

}  // namespace MCVelscore_850

#endif
