#ifndef VELSCORE_ENGINE_DOCUMENTS_MODELELEMENT_H
#define VELSCORE_ENGINE_DOCUMENTS_MODELELEMENT_H

#include <optional>
#include <string>
#include <string_view>

#include "engine/documents/element.h"
#include "host/model/modelfamilies.h"

namespace MCVelscore_850 {

/// The one name by which readers know the constant; they move its parameter behind the others.
inline constexpr std::string_view kConstantParameter = "(Constant)";

/// True for the root of a PMML document, with or without a prefix.
bool IsPmmlRoot(Element root);
/// The document's version as a number; 0 when it is none.
double VersionOf(Element root);
/// The model that the reader reads; null when the document has none.
Element ModelElement(Element root);
/// The name by which the reader chooses among families: algorithmName, else modelName.
std::string SelectorOf(Element model);
/// The family that the document's model asks for, before what its distribution and link decide;
/// nothing for an unknown type.
std::optional<FamilyCode> FamilyOfModel(Element root, Element model);
/// True where that family reads contrast matrices.
bool TakesContrasts(Element root);

}  // namespace MCVelscore_850

#endif
