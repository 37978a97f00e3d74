#ifndef VELSCORE_ENGINE_DOCUMENTS_DOCUMENTTREE_H
#define VELSCORE_ENGINE_DOCUMENTS_DOCUMENTTREE_H

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <xercesc/dom/DOM.hpp>

#include "engine/documents/documentloader.h"

namespace MCVelscore_850 {

/// Keeps the XML library initialised as long as one of these lives. Sessions may be nested and may
/// come and go in any order.
class XercesSession {
public:
    XercesSession();
    XercesSession(const XercesSession&) = delete;
    XercesSession& operator=(const XercesSession&) = delete;
    ~XercesSession();
};

struct ReleaseTree {
    void operator()(xercesc::DOMDocument* tree) const { tree->release(); }
};
using OwnedTree = std::unique_ptr<xercesc::DOMDocument, ReleaseTree>;

/// The tree of a document. The session outlives it.
struct Document::Tree {
    XercesSession session;
    OwnedTree dom;
};

/// Builds the tree of bytes that passed the guard and notes on each element its place; `places`
/// are the guard's, empty to note none. Comments become nodes where they are asked for.
///
/// Errors  Failure of kind Document: kNotWellFormed for what this parser alone refuses.
/// Order   within a XercesSession that outlives the result.
OwnedTree BuildTree(std::string_view bytes, const std::string& file,
                    const std::vector<ElementPlace>& places, bool comments = false);

}  // namespace MCVelscore_850

#endif
