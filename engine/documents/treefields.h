#ifndef VELSCORE_ENGINE_DOCUMENTS_TREEFIELDS_H
#define VELSCORE_ENGINE_DOCUMENTS_TREEFIELDS_H

#include <set>
#include <string>
#include <string_view>

#include "engine/documents/element.h"
#include "engine/documents/modelelement.h"

namespace MCVelscore_850 {

/// The DataFields of a document's dictionary, in order.
ElementRange DataFields(Element root);
/// The DataFields, then the DerivedFields of both transformation sections.
Elements DataAndDerivedFields(Element root);
/// The fields of the model's mining schema, in order; those within extensions not among them.
ElementRange MiningFields(Element root);
/// The Predictor elements of a FactorList or CovariateList, in order.
ElementRange Predictors(Element root, std::string_view list);
/// The names of elements, each once.
std::set<std::string> NamesOf(ElementRange elements);
/// The DataField of the model's target: the one of the mining schema, else the one that the model
/// names; null without one.
Element TargetDataField(Element root);
/// The Value elements of a field that declare a valid value; none for a null field.
Elements ValidValues(Element field);
/// A key that two texts share when they are the same category of the field: the text itself, or its
/// number in a field of numbers.
std::string CategoryKey(Element field, const std::string& text);
std::string CategoryKey(const std::string& dataType, const std::string& text);
/// True for the data types whose values are numbers.
bool IsNumericType(std::string_view dataType);
/// A new last child of `parent`, which messages place where `source` stands.
Element AppendFor(Element parent, std::string_view tag, Element source);
/// Adds the dictionary's own extension by which a field takes values that it doesn't list.
void AcceptUnlisted(Element field);
/// True where the field has that extension.
bool AcceptsUnlisted(Element field);

}  // namespace MCVelscore_850

#endif
