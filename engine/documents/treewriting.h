#ifndef VELSCORE_ENGINE_DOCUMENTS_TREEWRITING_H
#define VELSCORE_ENGINE_DOCUMENTS_TREEWRITING_H

#include <string>

#include "engine/documents/documenttree.h"
#include "engine/documents/element.h"

namespace MCVelscore_850 {

/// A new tree of one element in this namespace.
///
/// Order   within a XercesSession that outlives the result.
OwnedTree NewTree(const std::string& nameSpace, const std::string& root);

enum class TreeForm {
    Indented,  ///< an element a line
    AsItIs     ///< with the blanks that the tree holds and no others
};

/// Takes the blanks between elements out of a tree that was read, so that TreeText() indents it
/// anew.
void DropIndentation(Element element);

/// The tree as a document in UTF-8.
std::string TreeText(const xercesc::DOMDocument& tree, TreeForm form = TreeForm::Indented);

}  // namespace MCVelscore_850

#endif
