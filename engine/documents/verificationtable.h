#ifndef VELSCORE_ENGINE_DOCUMENTS_VERIFICATIONTABLE_H
#define VELSCORE_ENGINE_DOCUMENTS_VERIFICATIONTABLE_H

#include <string>
#include <vector>

#include "host/messages/vsexception.h"

namespace MCVelscore_850 {

/// The records of a document's ModelVerification section: inputs, and what the model that wrote the
/// document made of them.
struct VerificationTable {
    struct Field {
        std::string name;
        /// How much a number may differ, as a share of the expected one.
        double precision = 1e-6;
        /// Numbers up to this size count as 0.
        double zeroThreshold = 1e-16;
        /// Where a document declares it.
        DocumentPlace place{};
    };
    std::vector<Field> fields;
    /// By record and field; an empty text is a missing value.
    std::vector<std::vector<std::string>> records;
};

}  // namespace MCVelscore_850

#endif
