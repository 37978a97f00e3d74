#ifndef VELSCORE_ENGINE_DOCUMENTS_OUTPUTSECTION_H
#define VELSCORE_ENGINE_DOCUMENTS_OUTPUTSECTION_H

#include <memory>

#include "engine/documents/outputfield.h"

namespace MCVelscore_850 {

class Document;
class ScoreModel;

/// The Output section of the document from which the model was read; null when it has none.
///
/// Errors  VSException: kOutputFeature for a feature that these models don't have, and what the
///         expressions of derived fields refuse.
/// Owner   the section stands on its own; it copies what it needs of the model's dictionaries.
std::unique_ptr<OutputSection> ReadOutputSection(const Document& document, const ScoreModel& model);

}  // namespace MCVelscore_850

#endif
