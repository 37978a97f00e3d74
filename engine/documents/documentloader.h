#ifndef VELSCORE_ENGINE_DOCUMENTS_DOCUMENTLOADER_H
#define VELSCORE_ENGINE_DOCUMENTS_DOCUMENTLOADER_H

#include <memory>
#include <string>
#include <string_view>

#include "engine/documents/documentguard.h"

namespace MCVelscore_850 {

class Element;

/// A model document, read: it owns the tree that readers walk. The tree itself is reached through
/// engine/documents/documenttree.h, so that who only holds a document needs no XML library.
///
/// Threads one thread at a time.
class Document {
public:
    struct Tree;

    Document(std::string file, std::unique_ptr<Tree> tree);
    Document(Document&& other) noexcept;
    Document& operator=(Document&& other) noexcept;
    ~Document();

    /// How messages call the document: the file's name, "standard input" or what the caller gave.
    const std::string& File() const { return file_; }
    /// The root's tag as the file has it, a prefix included.
    const std::string& RootName() const { return rootName_; }
    /// The root's version attribute as the file has it; empty when there is none.
    const std::string& VersionText() const { return versionText_; }

    /// The root of the tree, which the document owns.
    Element Root() const;
    Tree& GetTree() const { return *tree_; }

private:
    std::string file_;
    std::string rootName_;
    std::string versionText_;
    std::unique_ptr<Tree> tree_;
};

/// What is kept of a document's bytes beside its tree: nothing that isn't asked for.
struct Keeping {
    /// Unless null, becomes the SHA-256 of the bytes in hexadecimal digits.
    std::string* sha256 = nullptr;
    /// Unless null, becomes the document in UTF-8, line by line as it is.
    std::string* text = nullptr;
    /// Comments are nodes of the tree too; readers never see one.
    bool comments = false;
};

/// Reads the document of a file; `path` "-" is standard input, which is read to its end. Every
/// byte passes the guard before the tree is built. Nothing is ever fetched, from the disk or
/// elsewhere: no DTD, no entity, no schema.
///
/// Errors  Failure of kind Document: kCannotRead, kEmptyDocument, those of DocumentGuard, and
///         kNotAModelDocument for a root that is neither PMML nor "zelt-ml".
Document LoadDocument(const std::string& path, const DocumentLimits& limits = {},
                      const Keeping& keeping = {});

/// The same for bytes at hand; `file` is how messages call them.
Document LoadDocumentText(std::string_view bytes, const std::string& file,
                          const DocumentLimits& limits = {});

}  // namespace MCVelscore_850

#endif
