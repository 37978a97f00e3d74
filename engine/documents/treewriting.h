#ifndef VELSCORE_ENGINE_DOCUMENTS_TREEWRITING_H
#define VELSCORE_ENGINE_DOCUMENTS_TREEWRITING_H

#include <string>

#include "engine/documents/documenttree.h"

namespace MCVelscore_850 {

/// A new tree of one element in this namespace.
///
/// Order   within a XercesSession that outlives the result.
OwnedTree NewTree(const std::string& nameSpace, const std::string& root);

/// The tree as a document: UTF-8, an element a line, indented. Its texts are of a document too.
std::string TreeText(const xercesc::DOMDocument& tree);

}  // namespace MCVelscore_850

#endif
