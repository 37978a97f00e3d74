#ifndef VELSCORE_ENGINE_DOCUMENTS_DOCUMENTTREE_H
#define VELSCORE_ENGINE_DOCUMENTS_DOCUMENTTREE_H

#include <cstddef>
#include <memory>
#include <new>
#include <string>
#include <string_view>
#include <vector>

#include <xercesc/dom/DOM.hpp>
#include <xercesc/framework/MemoryManager.hpp>
#include <xercesc/util/OutOfMemoryException.hpp>

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

/// Runs a function that works with trees. Where the XML library has no memory left it throws what
/// is no std::exception; here that becomes std::bad_alloc.
template <class Function>
auto WithinMemory(Function function)
{
    try {
        return function();
    } catch (const xercesc::OutOfMemoryException&) {
        throw std::bad_alloc();
    }
}

/// Memory of the XML library's for one tree. What the library lost track of, as its parser does
/// where memory runs out while it is made, is freed with the rest.
class TreeMemory final : public xercesc::MemoryManager {
public:
    TreeMemory();
    ~TreeMemory() override;

    /// From now on there is memory for a small piece at a time, if none is left elsewhere.
    void LendSpare() { lendsSpare_ = true; }

    xercesc::MemoryManager* getExceptionMemoryManager() override { return this; }
    void* allocate(XMLSize_t size) override;
    void deallocate(void* memory) override;

private:
    // In front of each piece that is in use.
    struct alignas(std::max_align_t) Piece {
        Piece* before;
        Piece* after;
    };
    Piece pieces_{&pieces_, &pieces_};  ///< a ring, of which this is the one that isn't in use
    Piece* const spare_;
    bool lendsSpare_ = false;
    bool isSpareLent_ = false;
};

/// Lists of a tree's elements lie outside its own memory, so it is released; that takes memory, to
/// tell each node, for which there is a spare piece.
struct ReleaseTree {
    void operator()(xercesc::DOMDocument* tree) const
    {
        if (memory != nullptr) memory->LendSpare();
        try {
            tree->release();
        } catch (const xercesc::OutOfMemoryException&) {
        }
    }
    std::shared_ptr<TreeMemory> memory{};  ///< that the tree lies in, where it is its own
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
