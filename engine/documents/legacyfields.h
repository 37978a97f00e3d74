#ifndef VELSCORE_ENGINE_DOCUMENTS_LEGACYFIELDS_H
#define VELSCORE_ENGINE_DOCUMENTS_LEGACYFIELDS_H

#include <string>
#include <vector>

#include "engine/documents/element.h"

namespace MCVelscore_850 {

class ScoreDictVar;

/// What a model uses a variable for. A MeanTarget is never read; of a CategoryTarget the
/// categories count.
enum class FieldUse { None, MeanTarget, CategoryTarget, Factor, Covariate };

/// A variable of a document in the older form.
struct LegacyVariable {
    Element element;
    /// As the reader left it, with the categories that only cells name.
    const ScoreDictVar* var;
    FieldUse use = FieldUse::None;
    /// What the cells of the pp-matrix say of it, in their order.
    std::vector<std::string> cellValues;
};

/// The number that a text spells in a document; the reader has taken it as one already.
double NumberOf(const std::string& text);

/// Appends the variable as a DataField that accepts just the values that the variable accepts, its
/// categories in the same order. A missing range becomes the intervals around it: its values are
/// then invalid instead of missing, which no model tells apart.
///
/// Errors  VSException (kMissingRangeOfList) for a missing range that intervals can't say.
void AddDataField(Element dictionary, const LegacyVariable& variable);

}  // namespace MCVelscore_850

#endif
