#include "engine/documents/documentloader.h"

#include <utility>
#include <vector>

#include <xercesc/util/TransService.hpp>
#include <xercesc/util/XMLString.hpp>
#include <xercesc/util/XMLUni.hpp>

#include "engine/documents/documenttree.h"
#include "engine/documents/element.h"
#include "engine/documents/names.h"
#include "engine/messages/digest.h"
#include "engine/messages/failure.h"
#include "engine/tables/bytesource.h"
#include "host/documents/pmmlmodeltags.h"
#include "host/documents/veltranscoder.h"
#include "host/messages/messages.h"

namespace MCVelscore_850 {

namespace {

// As much as a tag may have: the guard reads one that isn't whole again with the next block.
constexpr size_t kReadBytes = size_t{1} << 20;
// The root of the older form.
constexpr std::string_view kLegacyRoot = "zelt-ml";

// What comes after the guard: the tree, and a look at its root.
Document Build(std::string_view bytes, const std::string& file,
               const std::vector<ElementPlace>& places, bool comments = false)
{
    auto tree = std::make_unique<Document::Tree>();
    tree->dom = BuildTree(bytes, file, places, comments);
    Document document(file, std::move(tree));
    const std::string_view root = LocalNameOf(document.RootName());
    if (root != PMMLModelTags::XML_ELE_PMML && root != kLegacyRoot) {
        throw Failure(FailureKind::Document, kNotAModelDocument, {file, document.RootName()});
    }
    return document;
}

// The bytes in UTF-8. What the tree's parser could read can be read again.
std::string TextOf(const Document& document, std::string bytes)
{
    const XMLCh* encoding = document.GetTree().dom->getInputEncoding();
    if (encoding == nullptr ||
        xercesc::XMLString::compareIString(encoding, xercesc::XMLUni::fgUTF8EncodingString) == 0) {
        return bytes;
    }
    const xercesc::TranscodeFromStr text(reinterpret_cast<const XMLByte*>(bytes.data()),
                                         bytes.size(), Utf8FromXml(encoding).c_str());
    return Utf8FromXml(text.str());
}

}  // namespace

Document::Document(std::string file, std::unique_ptr<Tree> tree)
    : file_(std::move(file)), tree_(std::move(tree))
{
    rootName_ = Root().Tag();
    versionText_ = Root().Text(PMMLModelTags::XML_ATT_VERSION);
}

Document::Document(Document&&) noexcept = default;
Document& Document::operator=(Document&&) noexcept = default;
Document::~Document() = default;

Element Document::Root() const { return Element(tree_->dom->getDocumentElement()); }

Document LoadDocument(const std::string& path, const DocumentLimits& limits, const Keeping& keeping)
{
    InputFile input(path, nullptr, FailureKind::Document);
    if (input.Size() > limits.documentBytes) RefuseDocumentSize(input.Name(), limits.documentBytes);

    // The guard sees each block before the next one is read, so that a document that it refuses
    // never lies in memory whole.
    DocumentGuard guard(input.Name(), limits);
    std::string bytes;
    std::vector<char> block(kReadBytes);
    while (const size_t count = input.Read(block.data(), block.size())) {
        guard.Feed({block.data(), count});
        bytes.append(block.data(), count);
    }
    if (bytes.empty()) throw Failure(FailureKind::Document, kEmptyDocument, {input.Name()});
    guard.Finish();
    if (keeping.sha256 != nullptr) *keeping.sha256 = Sha256Of(bytes);
    Document document = Build(bytes, input.Name(), guard.Places(), keeping.comments);
    if (keeping.text != nullptr) *keeping.text = TextOf(document, std::move(bytes));
    return document;
}

Document LoadDocumentText(std::string_view bytes, const std::string& file,
                          const DocumentLimits& limits)
{
    if (bytes.empty()) throw Failure(FailureKind::Document, kEmptyDocument, {file});
    DocumentGuard guard(file, limits);
    guard.Feed(bytes);
    guard.Finish();
    return Build(bytes, file, guard.Places());
}

}  // namespace MCVelscore_850
