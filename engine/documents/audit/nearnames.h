#ifndef VELSCORE_ENGINE_DOCUMENTS_AUDIT_NEARNAMES_H
#define VELSCORE_ENGINE_DOCUMENTS_AUDIT_NEARNAMES_H

#include <cstddef>
#include <string>
#include <vector>

#include "engine/documents/audit/finding.h"

namespace MCVelscore_850 {

/// A name as a message shows it.
std::string Quoted(const std::string& name);

/// Tells names that aren't in a list: with the near one, and some of those that are, the near one
/// first. What Findings wouldn't keep anyway is told without, since looking for it takes time.
class NearNames {
public:
    explicit NearNames(RuleReport& report) : report_(report) {}

    /// `detail` lacks what is near and expected.
    void Tell(Detail detail, const std::vector<std::string>& known);

private:
    RuleReport& report_;
    size_t told_ = 0;
};

}  // namespace MCVelscore_850

#endif
