#ifndef VELSCORE_HOST_VARIABLES_TRANSFORMATIONDICTIONARY_H
#define VELSCORE_HOST_VARIABLES_TRANSFORMATIONDICTIONARY_H

#include <memory>

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

private:
    std::unique_ptr<CaseRecord> derived_;
};

}  // namespace MCVelscore_850

#endif
