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

// The bytes in UTF-8. What the tree's parser could read can be read again.
std::string TextOf(const Document& document, std::string_view bytes)
{
    const XMLCh* encoding = document.GetTree().dom->getInputEncoding();
    if (encoding == nullptr ||
        xercesc::XMLString::compareIString(encoding, xercesc::XMLUni::fgUTF8EncodingString) == 0) {
        return std::string(bytes);
    }
    const xercesc::TranscodeFromStr text(reinterpret_cast<const XMLByte*>(bytes.data()),
                                         bytes.size(), Utf8FromXml(encoding).c_str());
    return Utf8FromXml(text.str());
}

// What comes after the guard: the tree, a look at its root, and what is kept of the bytes.
Document BuildUnguarded(std::string_view bytes, const std::string& file,
                        const std::vector<ElementPlace>& places, const Keeping& keeping)
{
    if (keeping.sha256 != nullptr) *keeping.sha256 = Sha256Of(bytes);
    auto tree = std::make_unique<Document::Tree>();
    tree->dom = BuildTree(bytes, file, places, keeping.comments);
    Document document(file, std::move(tree));
    const std::string_view root = LocalNameOf(document.RootName());
    if (root != PMMLModelTags::XML_ELE_PMML && root != kLegacyRoot) {
        throw Failure(FailureKind::Document, kNotAModelDocument, {file, document.RootName()});
    }
    if (keeping.text != nullptr) *keeping.text = TextOf(document, bytes);
    return document;
}

Document Build(std::string_view bytes, const std::string& file,
               const std::vector<ElementPlace>& places, const Keeping& keeping)
{
    return WithinMemory([&] { return BuildUnguarded(bytes, file, places, keeping); });
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
    return Build(bytes, input.Name(), guard.Places(), keeping);
}

Document LoadDocumentText(std::string_view bytes, const std::string& file,
                          const DocumentLimits& limits, const Keeping& keeping)
{
    if (bytes.empty()) throw Failure(FailureKind::Document, kEmptyDocument, {file});
    DocumentGuard guard(file, limits);
    guard.Feed(bytes);
    guard.Finish();
    return Build(bytes, file, guard.Places(), keeping);
}

}  // namespace MCVelscore_850
