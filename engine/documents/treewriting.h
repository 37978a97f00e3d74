#ifndef VELSCORE_ENGINE_DOCUMENTS_TREEWRITING_H
#define VELSCORE_ENGINE_DOCUMENTS_TREEWRITING_H

#include <string>

#include "engine/documents/documenttree.h"

namespace MCVelscore_850 {

/// A new tree of one element in this namespace.
///
/// Order   within a XercesSession that outlives the result.
OwnedTree NewTree(const std::string& nameSpace, const std::string& root);

/// Appends an element in its parent's namespace.
xercesc::DOMElement* AddElement(xercesc::DOMElement* parent, const std::string& tag);

/// Takes the blanks between elements out of a tree that was read, so that TreeText() indents it
/// anew.
void DropIndentation(xercesc::DOMElement* element);

/// The tree as a document: UTF-8, an element a line, indented. Its texts are of a document too.
std::string TreeText(const xercesc::DOMDocument& tree);

}  // namespace MCVelscore_850

#endif
