#ifndef VELSCORE_ENGINE_DOCUMENTS_TREEWRITING_H
#define VELSCORE_ENGINE_DOCUMENTS_TREEWRITING_H

#include <string>

#include "engine/documents/documenttree.h"

namespace MCVelscore_850 {

/// A new tree of one element in this namespace.
///
/// Order   within a XercesSession that outlives the result.
OwnedTree NewTree(const std::string& nameSpace, const std::string& root);

enum class TreeForm {
    Indented,  ///< an element a line
    AsItIs     ///< with the blanks that the tree holds and no others
};

/// The tree as a document in UTF-8.
std::string TreeText(const xercesc::DOMDocument& tree, TreeForm form = TreeForm::Indented);

}  // namespace MCVelscore_850

#endif
