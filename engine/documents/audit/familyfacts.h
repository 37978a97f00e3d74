#ifndef VELSCORE_ENGINE_DOCUMENTS_AUDIT_FAMILYFACTS_H
#define VELSCORE_ENGINE_DOCUMENTS_AUDIT_FAMILYFACTS_H

namespace MCVelscore_850 {

struct DocumentFacts;

// The parts of a document's facts that only some families have, read as the reader finds them. The
// model, its family and its parameters are there already.

void GatherOptions(DocumentFacts& facts);
/// Baselines and base points.
void GatherBaselines(DocumentFacts& facts);

}  // namespace MCVelscore_850

#endif
