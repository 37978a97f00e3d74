#ifndef VELSCORE_HOST_VARIABLES_CASERECORD_H
#define VELSCORE_HOST_VARIABLES_CASERECORD_H

#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "host/values/scorevalue.h"
#include "host/variables/scorecaserecord.h"

namespace MCVelscore_850 {

/// A case in memory: named positions, each with a value or null.
///
/// Owner   Own() takes a value over; Point() borrows one that outlives the record's use of it.
class VELHOST_API CaseRecord final : public ScoreCaseRecord {
public:
    /// Positions in the order of `names`, all absent. Without `indexedAccess` the record is read
    /// by name alone.
    explicit CaseRecord(std::vector<std::string> names, bool indexedAccess = true);
    ~CaseRecord() override;

    ScoreValue* GetValue(const std::string& name) const override;
    ScoreValue* GetValue(int position) const override;
    bool HasIndexedAccess() const override { return indexedAccess_; }
    int GetVarIndex(const std::string& name) const override;
    const std::vector<ScoreValue*>* GetValues() const override { return &values_; }

    const std::vector<std::string>& Names() const { return names_; }

    /// `position` must be one of the record's; a null makes the value absent.
    void Own(int position, std::unique_ptr<ScoreValue> value);
    void Point(int position, ScoreValue* value);

private:
    std::vector<std::string> names_;
    std::unordered_map<std::string, int> positions_;
    std::vector<ScoreValue*> values_;
    std::vector<std::unique_ptr<ScoreValue>> owned_;
    bool indexedAccess_;
};

}  // namespace MCVelscore_850

#endif
