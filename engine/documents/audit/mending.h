#ifndef VELSCORE_ENGINE_DOCUMENTS_AUDIT_MENDING_H
#define VELSCORE_ENGINE_DOCUMENTS_AUDIT_MENDING_H

#include <string>
#include <vector>

#include "engine/documents/audit/finding.h"

namespace MCVelscore_850 {

/// One thing that was put right.
struct Mended {
    const Rule* rule = nullptr;
    /// The element's, as it was before.
    DocumentPlace place;
    /// In words, as "valeu is now value".
    std::string what;
};

/// Puts right in the tree what can be. A mend is left out where it would hide something: an
/// attribute doesn't get the name of another one that is there too. Elements go last, and what lies
/// within one of them is left alone.
std::vector<Mended> ApplyMends(std::vector<OpenMend> mends);

}  // namespace MCVelscore_850

#endif
