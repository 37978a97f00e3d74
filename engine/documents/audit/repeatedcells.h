#ifndef VELSCORE_ENGINE_DOCUMENTS_AUDIT_REPEATEDCELLS_H
#define VELSCORE_ENGINE_DOCUMENTS_AUDIT_REPEATEDCELLS_H

#include <cstdint>
#include <vector>

namespace MCVelscore_850 {

struct DocumentFacts;

/// A cell that stands for a place which an earlier one of its section has.
struct RepeatedCell {
    uint32_t first;
    uint32_t again;
    bool agrees;    ///< both say the same
    bool mirrored;  ///< of covariances: they stand in different triangles
};

/// By section, in the order of the document. A place is what the model keeps one number for: of a
/// design a parameter and a predictor; of an estimate a parameter and, where the family has an
/// equation for each, a category; of a covariance two of these in either order. Cells with unknown
/// names have none.
std::vector<RepeatedCell> RepeatedDesigns(const DocumentFacts& facts);
std::vector<RepeatedCell> RepeatedEstimates(const DocumentFacts& facts);
std::vector<RepeatedCell> RepeatedCovariances(const DocumentFacts& facts);

}  // namespace MCVelscore_850

#endif
