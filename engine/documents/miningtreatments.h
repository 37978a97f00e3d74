#ifndef VELSCORE_ENGINE_DOCUMENTS_MININGTREATMENTS_H
#define VELSCORE_ENGINE_DOCUMENTS_MININGTREATMENTS_H

#include <vector>

#include "engine/documents/miningtreatment.h"

namespace MCVelscore_850 {

class Document;

/// What the mining schema of the document's model says of each field, in document order; nothing
/// for a document without a schema, such as the older form. Refuses nothing: that is the reader's.
std::vector<MiningFieldTreatment> ReadMiningTreatments(const Document& document);

}  // namespace MCVelscore_850

#endif
