#ifndef VELSCORE_ENGINE_DOCUMENTS_MININGTREATMENT_H
#define VELSCORE_ENGINE_DOCUMENTS_MININGTREATMENT_H

#include <string>

namespace MCVelscore_850 {

/// What a document's mining schema says of one field, as written; empty where it says nothing.
/// Models replace missing values of the continuous fields that they read themselves, and leave the
/// rest to the host.
struct MiningFieldTreatment {
    std::string name{};
    std::string invalidValueTreatment{};
    std::string invalidValueReplacement{};
    std::string missingValueTreatment{};
    std::string missingValueReplacement{};
};

}  // namespace MCVelscore_850

#endif
